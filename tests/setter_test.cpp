// The readers of parameter elements, and their registry.
#include <ormel/GeqPreset.h>
#include <ormel/TuningFileParser.h>

#include <algorithm>

#include "support/LogCapture.h"

namespace ormel::test {
namespace {

// What the first element's setter makes of it. A blank stands before it, as before any element.
std::map<Parameter, std::vector<int>> read(const std::string& elements, std::string* dump) {
    GeqPreset values(0);
    TagIterator iterator;
    EXPECT_EQ(iterator.init("<r> " + elements + "</r>", true), 0);
    iterator.next();
    const std::string name = iterator.getNodeName();
    TuningFileParser::sSetterCollection->getValueSetter(name)->set(values, iterator);
    EXPECT_EQ(iterator.getNodeName(), name);
    *dump = values.valuesToString();
    std::replace(dump->begin(), dump->end(), '\n', ' ');
    return values.getValues();
}

TEST(ValueSetter, StoresWhatItsElementSays) {
    const std::pair<const char*, const char*> cases[] = {
            {"<peak-value value='true'/>", "peak_value=1, "},
            {"<peak-value value='True'/>", "peak_value=0, "},
            {"<peak-value x='9' value=' -7dB'/>", "peak_value=-7, "},
            {"<peak-value x='9'/>", "peak_value=0, "},
            {"<?peak-value value='9'?>", "peak_value=0, "},
            {"<bass-mbdrc-tuning rows='1, 2,3 4' value='9'/>", "bass_mbdrc_tuning=1,2,3,4, "},
            {"<bass-mbdrc-tuning/>", "bass_mbdrc_tuning= "},
            {"<drc-metadata x='1,-2'/>", "custom_drc_metadata=1,-2, "},
            {"<drc-metadata/>", "custom_drc_metadata=0, "},
            {"<virtual-bass-subgains c='-3' b='x' a='4 1'/>", "virtual_bass_subgains=-3,0,4, "},
            {"<output-mode> <m> <r x='1,2' y='9'/><!----><r/> <s x='3 4'/></m> <m> <r x='5'/></m>"
             "</output-mode>",
             "output_mix_matrix=1,2,3,4, "},
            {"<output-mode> <m><r x='1'/><r x='2'/></m></output-mode>", "output_mix_matrix=2, "},
            {"<output-mode> <m/> <r x='1'/></output-mode>", "output_mix_matrix= "},
            {"<output-mode x='1'/> <m> <r x='1'/></m>", "output_mix_matrix= "},
            {"<virtual-bass-mix-freqs frequency_high='150'/>",
             "virtual_bass_mix_freq_high=150, virtual_bass_mix_freq_low=0, "},
            {"<virtual-bass-src-freqs frequency_high='160' frequency_low='35'/>",
             "virtual_bass_src_freq_high=160, virtual_bass_src_freq_low=35, "},
            {"<?virtual-bass-src-freqs?>", ""},
            {"<audio-optimizer-bands> <a frequency='100' gain_left='1' gain_right='2' "
             "gain_left_surround='3' gain_right_surround='4'/><b gain_left='-5'/>"
             "</audio-optimizer-bands>",
             "audio_optimizer_frequency=100,0, audio_optimizer_gain_l=1,-5, "
             "audio_optimizer_gain_ls=3,0, audio_optimizer_gain_r=2,0, "
             "audio_optimizer_gain_rs=4,0, "},
            // Without children, the element itself and what follows it are taken for the bands.
            {"<regulator-tuning frequency='7' isolated_band='True'/> <b isolated_band='1'/>"
             "<b frequency='1' threshold_low='-2' threshold_high='3' isolated_band='true'/>",
             "regulator_frequency=7,0,1, regulator_isolated_band=0,0,1, "
             "regulator_threshold_high=0,0,3, regulator_threshold_low=0,0,-2, "},
            {"<geq> <d> <g> <b frequency='1' gain='-2'/> <x frequency='3' gain='4'/></g></d></geq>",
             "geq_frequency=1,3, geq_gain=-2,4, "},
            {"<ieq> <d> <b> <band_ieq frequency='1' target='2'/><!----><band_ieq frequency='3'/>"
             "<?stop?><band_ieq frequency='5' target='6'/></b></d></ieq>",
             "ieq_frequency=1,3,5, ieq_target=2, "}};
    LogCapture log;
    std::string dump;
    for (const auto& [element, expected] : cases) {
        read(element, &dump);
        EXPECT_EQ(dump, expected) << element;
    }
    EXPECT_TRUE(log.take().empty());
    read("<ieq> <d> <b> <band_ieq frequency='1' target='2'/> <stop/> <band_ieq frequency='3' "
         "target='4'/> <stop/></b></d></ieq>",
         &dump);
    EXPECT_EQ(dump, "ieq_frequency=1, ieq_target=2, ");
    EXPECT_THAT(log.take(),
                ::testing::ElementsAre(info("ValueSetter", "No attribute band_ieq was found!")));
}

/** A walker that finds nothing, or more than it was asked for. */
class OddWalker : public TagIterator {
  public:
    void parseNodeWithName(const std::vector<std::string>&,
                           std::vector<std::string>& out) override {
        out.insert(out.end(), texts.begin(), texts.end());
    }

    std::vector<std::string> texts;
};

TEST(ValueSetter, BearsAWalkerThatAnswersOddly) {
    LogCapture log;
    for (const size_t count : {0U, 1U, 9U}) {
        OddWalker walker;
        walker.texts.assign(count, "1");
        EXPECT_EQ(walker.init("<r> <a> <b> <c> <d/></c></b></a></r>", true), 0);
        walker.next();
        GeqPreset values(0);
        for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
            setter->set(values, walker);
        }
        EXPECT_EQ(values.getValues()[PEAK_VALUE], std::vector<int>{count > 0});
        EXPECT_EQ(values.getValues()[REGULATOR_FREQUENCY], std::vector<int>(count > 0 ? 1 : 0, 1));
    }
}

template <typename Setter>
void expectToFeed(const std::string& element, const std::string& expected) {
    TagIterator iterator;
    EXPECT_EQ(iterator.init("<r> " + element + "</r>", true), 0);
    iterator.next();
    GeqPreset values(0);
    Setter("none", {}).set(values, iterator);
    EXPECT_EQ(values.valuesToString(), "") << element;
    Setter("one", {GEQ_GAIN}).set(values, iterator);
    EXPECT_EQ(values.valuesToString(), expected) << element;
    Setter("all and one", {GEQ_GAIN, GEQ_GAIN, GEQ_GAIN, GEQ_GAIN, GEQ_GAIN, PEAK_VALUE})
            .set(values, iterator);
    EXPECT_EQ(values.getValues().count(PEAK_VALUE), 0U) << element;
}

TEST(ValueSetter, FeedsAsManyParametersAsItHasAttributes) {
    expectToFeed<VirtualBassValueSetter>("<a frequency_low='1' frequency_high='2'/>",
                                         "geq_gain=1,\n");
    expectToFeed<IeqValueSetter>("<a> <b> <c> <band_ieq frequency='1' target='2'/></c></b></a>",
                                 "geq_gain=1,\n");
    expectToFeed<GeqValueSetter>("<a> <b> <c> <d frequency='1' gain='2'/></c></b></a>",
                                 "geq_gain=1,\n");
    expectToFeed<AudioOptimizerValueSetter>("<a> <b frequency='1' gain_left='2'/></a>",
                                            "geq_gain=1,\n");
    expectToFeed<RegulatorTuningValueSetter>("<a> <b frequency='1' threshold_low='2'/></a>",
                                             "geq_gain=1,\n");
}

/** A setter of somebody else's, who says of no operation that it changes nothing. */
class OutsideSetter : public SimpleValueSetter {
  public:
    OutsideSetter() : SimpleValueSetter("outside", PEAK_VALUE) {}
    std::string getNodeName() override { return "not " + SimpleValueSetter::getNodeName(); }
    void set(ParameterValues& values, TagIterator& iterator) override {
        SimpleValueSetter::set(values, iterator);
        values.set(GEQ_GAIN, values.getValues()[PEAK_VALUE]);
    }
};

TEST(ValueSetter, CanBeDerivedFrom) {
    TagIterator iterator;
    EXPECT_EQ(iterator.init("<r> <a value='5'/></r>", true), 0);
    iterator.next();
    GeqPreset values(0);
    OutsideSetter outside;
    ValueSetter& setter = outside;
    setter.set(values, iterator);
    EXPECT_EQ(setter.getNodeName(), "not outside");
    EXPECT_EQ(values.valuesToString(), "geq_gain=5,\npeak_value=5,\n");
}

TEST(SetterCollection, KnowsASetterForEveryParameterOfADocument) {
    SetterCollection collection;
    std::map<std::vector<int>, std::pair<int, int>> kinds;
    std::string renamed, dump;
    std::set<int> fed = {IEQ_ID, ORIENTATION, OUTPUT_CHANNELS, VIRTUAL_BASS_TYPE};
    for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
        const std::string name = setter->getNodeName();
        EXPECT_EQ(collection.getValueSetter(name), setter) << name;
        const auto stored = read("<" + name + " value='1,2' b='3'/>", &dump);
        for (const auto& [param, values] : stored) {
            EXPECT_TRUE(fed.insert(param).second) << param;
        }
        if (stored.size() > 1) {
            continue;
        }
        const auto& [param, values] = *stored.begin();
        kinds[values].first++;
        kinds[values].second += param;
        std::string dashed = parameterName(param);
        std::replace(dashed.begin(), dashed.end(), '_', '-');
        renamed += name == dashed ? "" : name + " is " + dashed + ", ";
    }
    EXPECT_EQ(SetterCollection::kAllValueSetters.size(), 91U);
    EXPECT_EQ(fed.size(), kParameterCount);
    EXPECT_EQ(renamed,
              "virtual-bass-process-enable is virtual-bass-enable, "
              "drc-metadata is custom-drc-metadata, output-mode is output-mix-matrix, ");
    // How many single numbers, rows, attributes and matrices, and the sums of their parameters.
    const decltype(kinds) expected = {
            {{1}, {66, 3681}}, {{1, 2}, {17, 750}}, {{1, 3}, {1, 89}}, {{}, {1, 52}}};
    EXPECT_EQ(kinds, expected);
    for (const char* const name : {"Ieq", "", "peak_value", "Ieq"}) {
        EXPECT_EQ(collection.getValueSetter(name), nullptr) << name;
    }
}

}  // namespace
}  // namespace ormel::test
