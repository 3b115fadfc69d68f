// The readers of parameter elements, and their registry.
#include <ormel/GeqPreset.h>
#include <ormel/TuningFileParser.h>

#include <algorithm>

#include "support/LogCapture.h"

namespace ormel::test {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

// Reads the first element with the setter of its name. What stands before it is a blank.
GeqPreset readElement(const std::string& elements) {
    GeqPreset values(0);
    TagIterator iterator;
    EXPECT_EQ(iterator.init("<r> " + elements + "</r>", true), 0);
    iterator.next();
    const std::string name = iterator.getNodeName();
    TuningFileParser::sSetterCollection->getValueSetter(name)->set(values, iterator);
    EXPECT_EQ(iterator.getNodeName(), name);
    return values;
}

TEST(ValueSetter, StoresWhatItsElementSays) {
    const std::pair<const char*, const char*> cases[] = {
            {"<peak-value value='true'/>", "peak_value=1,\n"},
            {"<peak-value value='false'/>", "peak_value=0,\n"},
            {"<peak-value value='True'/>", "peak_value=0,\n"},
            {"<peak-value value='yes'/>", "peak_value=0,\n"},
            {"<peak-value x='9' value=' -7dB'/>", "peak_value=-7,\n"},
            {"<peak-value x='9'/>", "peak_value=0,\n"},
            {"<?peak-value value='9'?>", "peak_value=0,\n"},
            {"<bass-mbdrc-tuning rows='1, 2,3 4' value='9'/>", "bass_mbdrc_tuning=1,2,3,4,\n"},
            {"<bass-mbdrc-tuning/>", "bass_mbdrc_tuning=\n"},
            {"<?bass-mbdrc-tuning rows='1'?>", "bass_mbdrc_tuning=\n"},
            {"<drc-metadata x='1,-2'/>", "custom_drc_metadata=1,-2,\n"},
            {"<drc-metadata x=''/>", "custom_drc_metadata=0,\n"},
            {"<drc-metadata/>", "custom_drc_metadata=0,\n"},
            {"<virtual-bass-subgains c='-32' b='x' a='-144 1'/>",
             "virtual_bass_subgains=-32,0,-144,\n"},
            {"<virtual-bass-subgains/>", "virtual_bass_subgains=\n"},
            {"<output-mode> <m> <r x='1,2' y='9'/><!----><r/> <s x='3 4'/></m> <m> <r "
             "x='5'/></m></output-mode>",
             "output_mix_matrix=1,2,3,4,\n"},
            {"<output-mode> <m><r x='1'/><r x='2'/></m></output-mode>", "output_mix_matrix=2,\n"},
            {"<output-mode> <m/> <r x='1'/></output-mode>", "output_mix_matrix=\n"},
            {"<output-mode x='1'/> <m> <r x='1'/></m>", "output_mix_matrix=\n"},
            {"<virtual-bass-mix-freqs frequency_high='150'/>",
             "virtual_bass_mix_freq_high=150,\nvirtual_bass_mix_freq_low=0,\n"},
            {"<virtual-bass-src-freqs frequency_high='160' frequency_low='35'/>",
             "virtual_bass_src_freq_high=160,\nvirtual_bass_src_freq_low=35,\n"},
            {"<?virtual-bass-src-freqs?>", ""},
            {"<audio-optimizer-bands> <band frequency='100' gain_left='1' gain_right='2' "
             "gain_left_surround='3' gain_right_surround='4'/> <x frequency='200' gain_left='-5'/>"
             "</audio-optimizer-bands>",
             "audio_optimizer_frequency=100,200,\naudio_optimizer_gain_l=1,-5,\n"
             "audio_optimizer_gain_ls=3,0,\naudio_optimizer_gain_r=2,0,\naudio_optimizer_gain_rs=4,"
             "0,\n"},
            {"<regulator-tuning> <b frequency='1' threshold_low='-2' threshold_high='3' "
             "isolated_band='true'/><b isolated_band='1'/><b frequency='4' isolated_band='True'/>"
             "</regulator-tuning>",
             "regulator_frequency=1,0,4,\nregulator_isolated_band=1,0,0,\n"
             "regulator_threshold_high=3,0,0,\nregulator_threshold_low=-2,0,0,\n"},
            // Without children, the element itself and what follows it are taken for the bands.
            {"<regulator-tuning frequency='7'/> <b frequency='8'/>",
             "regulator_frequency=7,8,\nregulator_isolated_band=0,0,\n"
             "regulator_threshold_high=0,0,\nregulator_threshold_low=0,0,\n"},
            {"<geq> <d> <g> <band frequency='1' gain='-2'/> <x frequency='3' "
             "gain='4'/></g></d></geq>",
             "geq_frequency=1,3,\ngeq_gain=-2,4,\n"},
            {"<geq> <g> <band frequency='1' gain='2'/></g></geq>",
             "geq_frequency=1,\ngeq_gain=2,\n"},
            {"<geq> <d> <g> <b frequency='1'/> <b frequency='2' gain='3'/></g></d></geq>",
             "geq_frequency=1,2,\ngeq_gain=\n"}};
    LogCapture log;
    for (const auto& [element, dump] : cases) {
        EXPECT_EQ(readElement(element).valuesToString(), dump) << element;
    }
    EXPECT_THAT(log.take(), ElementsAre());
}

TEST(ValueSetter, EndsIeqBandsAtTheFirstOtherElement) {
    const LogLine ended = info("ValueSetter", "No attribute band_ieq was found!");
    const std::tuple<std::string, const char*, std::vector<LogLine>> cases[] = {
            {"<band_ieq frequency='1' target='-2'/> <band_ieq frequency='3' target='4'/> <stop/> "
             "<band_ieq frequency='5' target='6'/><stop/>",
             "ieq_frequency=1,3,\nieq_target=-2,4,\n",
             {ended}},
            {"<band_ieq frequency='1' target='2'/><!----><band_ieq frequency='3'/><?stop?>"
             "<band_ieq frequency='5' target='6'/>",
             "ieq_frequency=1,3,5,\nieq_target=2,\n",
             {}},
            {"<band frequency='1' target='2'/>", "ieq_frequency=\nieq_target=\n", {ended}}};
    LogCapture log;
    for (const auto& [bands, dump, messages] : cases) {
        const auto values =
                readElement("<ieq> <data> <ieq-bands> " + bands + "</ieq-bands></data></ieq>");
        EXPECT_EQ(values.valuesToString(), dump) << bands;
        EXPECT_EQ(log.take(), messages) << bands;
    }
    EXPECT_EQ(readElement("<ieq/>").valuesToString(), "ieq_frequency=\nieq_target=\n");
    EXPECT_THAT(log.take(), ElementsAre(ended));
}

TEST(SetterCollection, KnowsASetterForEveryParameterOfADocument) {
    SetterCollection collection;
    std::map<std::vector<int>, std::pair<int, int>> singles;
    std::map<std::string, std::string> renamed;
    std::multiset<int> fed;
    for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
        const std::string name = setter->getNodeName();
        EXPECT_EQ(collection.getValueSetter(name), setter) << name;
        const GeqPreset stored = readElement("<" + name + " value='1,2' b='3'/>");
        for (const auto& [param, values] : stored.getValues()) {
            fed.insert(param);
        }
        const auto& [param, values] = *stored.getValues().begin();
        if (stored.getValues().size() > 1) {
            continue;
        }
        // Their kinds, told by what they make of the element, with count and sum of parameters.
        auto& [count, sum] = singles[values];
        ++count;
        sum += param;
        std::string expected = parameterName(param);
        std::replace(expected.begin(), expected.end(), '_', '-');
        if (name != expected) {
            renamed[name] = expected;
        }
    }
    EXPECT_EQ(SetterCollection::kAllValueSetters.size(), 91U);
    EXPECT_EQ(fed.size(), 102U);
    EXPECT_EQ(std::set<int>(fed.begin(), fed.end()).size(), 102U);
    EXPECT_EQ(fed.count(IEQ_ID) + fed.count(ORIENTATION) + fed.count(OUTPUT_CHANNELS) +
                      fed.count(VIRTUAL_BASS_TYPE),
              0U);
    using Values = std::vector<int>;
    EXPECT_THAT(singles, UnorderedElementsAre(
                                 Pair(Values{1}, Pair(66, 3681)), Pair(Values{1, 2}, Pair(17, 750)),
                                 Pair(Values{1, 3}, Pair(1, int{VIRTUAL_BASS_SUBGAINS})),
                                 Pair(Values{}, Pair(1, int{OUTPUT_MIX_MATRIX}))));
    EXPECT_THAT(renamed, ElementsAre(Pair("drc-metadata", "custom-drc-metadata"),
                                     Pair("output-mode", "output-mix-matrix"),
                                     Pair("virtual-bass-process-enable", "virtual-bass-enable")));
}

TEST(SetterCollection, RemembersUnknownNamesAndKeepsTableOrder) {
    SetterCollection collection;
    for (const char* const name : {"Ieq", "", "peak_value", "Ieq"}) {
        EXPECT_EQ(collection.getValueSetter(name), nullptr) << name;
    }
    EXPECT_EQ((*SetterCollection::kAllValueSetters.begin())->getNodeName(), "calibration-boost");
    EXPECT_EQ((*SetterCollection::kAllValueSetters.rbegin())->getNodeName(), "geq");
}

}  // namespace
}  // namespace ormel::test
