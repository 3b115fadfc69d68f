// The value setters and their registry.
#include <ormel/GeqPreset.h>
#include <ormel/TuningFileParser.h>

#include <algorithm>

#include "support/Documents.h"

namespace ormel::test {
namespace {

// What the first element's setter stores. The blank is the first child, which the reader skips.
GeqPreset read(const std::string& elements) {
    GeqPreset values(0);
    TagIterator iterator;
    EXPECT_EQ(iterator.init("<r> " + elements + "</r>", true), 0);
    iterator.next();
    const std::string name = iterator.getNodeName();
    TuningFileParser::sSetterCollection->getValueSetter(name)->set(values, iterator);
    EXPECT_EQ(iterator.getNodeName(), name);
    return values;
}

// The dump of the stored values, on one line.
std::string textOf(const std::string& elements) {
    std::string text = read(elements).valuesToString();
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

TEST(ValueSetter, StoresTheValuesOfItsElement) {
    const struct {
        const char* element;
        const char* stored;
    } cases[] = {
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
            // If an element has no children, it and its following siblings are read as bands.
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
    for (const auto& [element, stored] : cases) {
        EXPECT_EQ(textOf(element), stored) << element;
    }
    EXPECT_TRUE(log.take().empty());
}

TEST(ValueSetter, StopsAtTheFirstElementOtherThanAnIeqBand) {
    LogCapture log;
    EXPECT_EQ(textOf("<ieq> <d> <b> <band_ieq frequency='1' target='2'/> <stop/> "
                     "<band_ieq frequency='3' target='4'/> <stop/></b></d></ieq>"),
              "ieq_frequency=1, ieq_target=2, ");
    EXPECT_THAT(log.take(),
                ::testing::ElementsAre(info("ValueSetter", "No attribute band_ieq was found!")));
}

/** An iterator that returns the same texts for any names. */
class FixedTexts : public TagIterator {
  public:
    void parseNodeWithName(const std::vector<std::string>&,
                           std::vector<std::string>& out) override {
        out.insert(out.end(), texts.begin(), texts.end());
    }

    std::vector<std::string> texts;
};

TEST(ValueSetter, AcceptsAnyNumberOfTextsFromAnIterator) {
    const LogCapture log;
    for (const size_t count : {0U, 1U, 9U}) {
        FixedTexts iterator;
        iterator.texts.assign(count, "1");
        EXPECT_EQ(iterator.init("<r> <a> <b> <c> <d/></c></b></a></r>", true), 0);
        iterator.next();
        GeqPreset values(0);
        for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
            setter->set(values, iterator);
        }
        EXPECT_EQ(values.getValues()[PEAK_VALUE], std::vector<int>{count > 0});
        EXPECT_EQ(values.getValues()[REGULATOR_FREQUENCY], std::vector<int>(count > 0 ? 1 : 0, 1));
    }
}

/** @param element an element whose first attribute is 1 */
template <typename Setter>
void expectStored(const std::string& element) {
    TagIterator iterator;
    EXPECT_EQ(iterator.init("<r> " + element + "</r>", true), 0);
    iterator.next();
    GeqPreset values(0);
    Setter("none", {}).set(values, iterator);
    EXPECT_EQ(values.valuesToString(), "") << element;
    Setter("one", {GEQ_GAIN}).set(values, iterator);
    EXPECT_EQ(values.valuesToString(), "geq_gain=1,\n") << element;
    Setter("all and one", {GEQ_GAIN, GEQ_GAIN, GEQ_GAIN, GEQ_GAIN, GEQ_GAIN, PEAK_VALUE})
            .set(values, iterator);
    EXPECT_EQ(values.getValues().count(PEAK_VALUE), 0U) << element;
}

TEST(ValueSetter, StoresAtMostOneParameterPerAttribute) {
    expectStored<VirtualBassValueSetter>("<a frequency_low='1' frequency_high='2'/>");
    expectStored<IeqValueSetter>("<a> <b> <c> <band_ieq frequency='1' target='2'/></c></b></a>");
    expectStored<GeqValueSetter>("<a> <b> <c> <d frequency='1' gain='2'/></c></b></a>");
    expectStored<AudioOptimizerValueSetter>("<a> <b frequency='1' gain_left='2'/></a>");
    expectStored<RegulatorTuningValueSetter>("<a> <b frequency='1' threshold_low='2'/></a>");
}

/** A setter defined by another library; its operations are not const. */
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

TEST(SetterCollection, HasOneSetterForEachParameterWithAnElement) {
    SetterCollection collection;
    std::multiset<int> stored = {IEQ_ID, ORIENTATION, OUTPUT_CHANNELS, VIRTUAL_BASS_TYPE};
    for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
        EXPECT_EQ(collection.getValueSetter(setter->getNodeName()), setter);
        for (const Parameter param : setter->getParams()) {
            stored.insert(param);
        }
    }
    for (int32_t param = 0; param < kFirstParameterCount; ++param) {
        EXPECT_EQ(stored.count(param), 1U) << parameterName(param);
    }
    for (const char* const name : {"Ieq", "", "peak_value", "Ieq"}) {
        EXPECT_EQ(collection.getValueSetter(name), nullptr) << name;
    }
}

TEST(SetterCollection, NamesAndReadsElementsByTheirParameter) {
    // Elements with one parameter: those named differently, and those with more than a number.
    std::string renamed, rows, others;
    for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
        const std::string name = setter->getNodeName();
        const auto stored = read("<" + name + " value='1,2' b='3'/>").getValues();
        if (stored.size() > 1 || stored.begin()->first >= kFirstParameterCount) {
            continue;
        }
        const auto& [param, values] = *stored.begin();
        std::string dashed = parameterName(param);
        std::replace(dashed.begin(), dashed.end(), '_', '-');
        renamed += name == dashed ? "" : name + " is " + dashed + '\n';
        if (values == std::vector<int>{1, 2}) {
            rows += name + ' ';
        } else if (values != std::vector<int>{1}) {
            others += name + ' ';
        }
    }
    EXPECT_EQ(renamed,
              "virtual-bass-process-enable is virtual-bass-enable\n"
              "drc-metadata is custom-drc-metadata\n"
              "output-mode is output-mix-matrix\n");
    EXPECT_EQ(rows,
              "advanced-headphone-virtualizer-rendering-config drc-metadata "
              "advanced-speaker-virtualizer-rendering-config regulator-stress-amount "
              "virtual-bass-harmgains virtual-bass-hybgains virtual-bass-mix-frequency "
              "virtual-bass-compressor-tuning complex-equalizer-tuning-left "
              "complex-equalizer-tuning-right complex-equalizer-tuning-left-surround "
              "complex-equalizer-tuning-right-surround regulator-sibilance-suppress-amounts-left "
              "regulator-sibilance-suppress-amounts-right "
              "regulator-sibilance-suppress-amounts-left-surround "
              "regulator-sibilance-suppress-amounts-right-surround bass-mbdrc-tuning ");
    EXPECT_EQ(others, "virtual-bass-subgains output-mode ");  // Each attribute; a matrix.
}

}  // namespace
}  // namespace ormel::test
