// Translating tuning parameters into effect parameters.
#include <ormel/DeviceData.h>
#include <ormel/Translator.h>

#include <sstream>

#include "support/Documents.h"

namespace ormel::test {
namespace {

using ValueMap = std::map<Parameter, Values>;

// Parses "name=value,value name= ..." into lists.
ValueMap valuesOf(const std::string& text) {
    ValueMap map;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const auto* const found = std::find(kParameterNames, std::end(kParameterNames), name);
        EXPECT_NE(found, std::end(kParameterNames)) << name;
        std::replace(word.begin(), word.end(), ',', ' ');
        std::istringstream numbers(word.substr(equals + 1));
        map[static_cast<Parameter>(found - kParameterNames)] = {std::istream_iterator<int>(numbers),
                                                                {}};
    }
    return map;
}

// A command's entries as "code value value; code ...".
std::string textOf(const SetParamCommand& command) {
    std::istringstream lines(listText(command.mParams));
    std::string text;
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        text += (text.empty() ? "" : "; ") + line.substr(line.find(':') + 1);
    }
    return text;
}

// clang-format off
// The translators in the order in which they run: their sources, and the entries that they write if
// those are empty.
const struct {
    std::vector<Parameter> sources;
    const char* written;
} kTranslators[] = {
    {{GRAPHIC_EQUALIZER_ENABLE}, "geon"},
    {{GEQ_FREQUENCY, GEQ_GAIN}, "gebs 0"},
    {{IEQ_ENABLE}, "ieon"},
    {{IEQ_AMOUNT}, "iea"},
    {{IEQ_ID}, "ieid"},
    {{IEQ_FREQUENCY, IEQ_TARGET}, "iebs 0"},
    {{MI_DIALOG_ENHANCER_STEERING_ENABLE}, "mdee"},
    {{MI_DV_LEVELER_STEERING_ENABLE}, "mdle"},
    {{MI_IEQ_STEERING_ENABLE}, "miee"},
    {{MI_SURROUND_COMPRESSOR_STEERING_ENABLE}, "msce"},
    {{MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE}, "mave"},
    {{MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE}, "mvbe"},
    {{AUDIO_OPTIMIZER_ENABLE}, "aoon"},
    {{AUDIO_OPTIMIZER_FREQUENCY, AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_LS, AUDIO_OPTIMIZER_GAIN_R, AUDIO_OPTIMIZER_GAIN_RS}, ""},
    {{BASS_ENHANCER_ENABLE}, "beon"},
    {{BASS_ENHANCER_BOOST}, "beb"},
    {{BASS_ENHANCER_CUTOFF_FREQUENCY}, "becf"},
    {{BASS_ENHANCER_WIDTH}, "bew"},
    {{CALIBRATION_BOOST}, "plb"},
    {{DIALOG_ENHANCER_AMOUNT}, "dea"},
    {{DIALOG_ENHANCER_ENABLE}, "deon"},
    {{DIALOG_ENHANCER_DUCKING}, "ded"},
    {{REGULATOR_STRESS_AMOUNT, REGULATOR_FREQUENCY, REGULATOR_ISOLATED_BAND, REGULATOR_THRESHOLD_HIGH, REGULATOR_THRESHOLD_LOW,
      REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT, REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND,
      REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT, REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND}, "arsa 0 0; arbs 0"},
    {{REGULATOR_DISTORTION_SLOPE}, "ards"},
    {{REGULATOR_ENABLE}, "aron"},
    {{REGULATOR_SPEAKER_DIST_ENABLE}, "arde"},
    {{REGULATOR_OVERDRIVE}, "arod"},
    {{REGULATOR_TIMBRE_PRESERVATION}, "artp"},
    {{REGULATOR_SIBILANCE_SUPPRESS_ENABLE}, "rsse"},
    {{SURROUND_DECODER_ENABLE}, "ngon"},
    {{SURROUND_BOOST}, "dsb"},
    {{VIRTUAL_BASS_ENABLE, VIRTUAL_BASS_TYPE}, "vbm 0; vbon"},
    {{VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH, VIRTUAL_BASS_MIX_FREQ_LOW, VIRTUAL_BASS_MIX_FREQ_HIGH}, "vbsf; vbmf"},
    {{VIRTUAL_BASS_OVERALL_GAIN}, "vbog"},
    {{VIRTUAL_BASS_SLOPE_GAIN}, "vbsg"},
    {{VIRTUAL_BASS_SUBGAINS}, "vbhg"},
    {{VIRTUAL_BASS_BLEND_LINEAR_GAIN}, "vbbg"},
    {{VIRTUAL_BASS_COMPRESSOR_TUNING}, "vbct"},
    {{VIRTUAL_BASS_HARMGAINS}, "vbhm"},
    {{VIRTUAL_BASS_HYBGAINS}, "vbhb"},
    {{VIRTUAL_BASS_MIX_FREQUENCY}, "vbmx"},
    {{VIRTUAL_BASS_ROLLOFF_GAIN}, "vbrg"},
    {{VOLMAX_BOOST}, "vmb"},
    {{VOLUME_LEVELER_AMOUNT}, "dvla"},
    {{VOLUME_LEVELER_COMPRESSOR_ENABLE}, "dvlc"},
    {{VOLUME_LEVELER_ENABLE}, "dvle"},
    {{VOLUME_LEVELER_IN_TARGET}, "dvli"},
    {{VOLUME_LEVELER_OUT_TARGET}, "dvlo"},
    {{VOLUME_MODELER_ENABLE}, "dvme"},
    {{VOLUME_MODELER_CALIBRATION}, "dvmc"},
    {{VIRTUALIZER_ENABLE, OUTPUT_MIX_MATRIX, ORIENTATION}, "dom 2"},
    {{HEIGHT_FILTER_MODE}, "dhfm"},
    {{VIRTUALIZER_FRONT_SPEAKER_ANGLE}, "dfsa"},
    {{VIRTUALIZER_SURROUND_SPEAKER_ANGLE}, "dsa"},
    {{VIRTUALIZER_HEIGHT_SPEAKER_ANGLE}, "dhsa"},
    {{VIRTUALIZER_REAR_SURROUND_SPEAKER_ANGLE}, "drsa"},
    {{VIRTUALIZER_REAR_HEIGHT_SPEAKER_ANGLE}, "drha"},
    {{VIRTUALIZER_START_BAND}, "svsb"},
    {{HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE}, "vssd"},
    {{COMPLEX_EQUALIZER_ENABLE}, "ceon"},
    {{COMPLEX_EQUALIZER_TUNING_LEFT, COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND, COMPLEX_EQUALIZER_TUNING_RIGHT,
      COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND}, ""},
    {{PEAK_VALUE}, "dplp"},
    {{CUSTOM_DRC_METADATA}, "drcm"},
    {{HEARING_PROTECTION_ENABLE}, "hpon"},
    {{HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN}, "hptw"},
    {{HEARING_PROTECTION_RMS_ATTENUATION_TARGET}, "hpat"},
    {{HEARING_PROTECTION_ATTENUATION_ATTACK_TIME}, "hpaa"},
    {{HEARING_PROTECTION_ATTENUATION_RELEASE_TIME}, "hpar"},
    {{BASS_MBDRC_ENABLE}, "bmde"},
    {{BASS_MBDRC_TUNING}, ""},
    {{REVERB_SUPPRESSION_AMOUNT}, "rvsa"},
    {{REVERB_SUPPRESSION_ENABLE}, "rvse"},
    {{HEADPHONE_VIRTUALIZER_MODE}, "hvm"},
    {{ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG}, "hvrc"},
    {{ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE}, "hlra"},
    {{SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT}, "sdfa"},
    {{SPEAKER_VIRTUALIZER_MODE}, "svm"},
    {{ADVANCED_SPEAKER_VIRTUALIZER_START_BIN}, "avsb"},
    {{ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG}, "svrc"},
};
// clang-format on

TEST(Registry, HasTheTranslatorsInOrder) {
    const TranslatorCollection& registry = *ParameterTranslator::sTranslatorCollection;
    std::vector<Translator*> translators;
    for (Translator* const translator : TranslatorCollection::kAllTranslators) {
        if (translator->getSrcParams().front() < kFirstParameterCount) {
            translators.push_back(translator);
        }
    }
    ASSERT_EQ(translators.size(), std::size(kTranslators));
    for (size_t i = 0; i < translators.size(); ++i) {
        const auto& [sources, written] = kTranslators[i];
        SCOPED_TRACE(parameterName(sources.front()));
        EXPECT_EQ(translators[i]->getSrcParams(), sources);
        for (const Parameter param : sources) {
            EXPECT_EQ(registry.getTranslator(param), translators[i]) << parameterName(param);
        }
        ProfileEndpoint source(1, ENDPOINT_SPEAKER, 0);
        SetParamCommand command(0);
        translators[i]->kivTranslate(command, source, ENDPOINT_OTHER, true);
        EXPECT_EQ(textOf(command), written);
    }
}

TEST(Registry, HasNoTranslatorForOtherParameters) {
    const TranslatorCollection& registry = *ParameterTranslator::sTranslatorCollection;
    for (const auto param :
         {BASS_EXTRACTION_CUTOFF_FREQUENCY, BASS_EXTRACTION_ENABLE, OUTPUT_CHANNELS,
          VIRTUAL_BASS_MODE, Parameter{-1}, static_cast<Parameter>(kParameterCount)}) {
        EXPECT_EQ(registry.getTranslator(param), nullptr) << parameterName(param);
    }
}

struct TranslationCase {
    Parameter changed;
    std::string source;   // the lists that the source has
    std::string written;  // the entries
    std::string left;     // changes to the source; reading an absent list adds an empty one
};

void expectTranslations(const std::vector<TranslationCase>& cases,
                        Endpoint endpoint = ENDPOINT_SPEAKER, bool mono = false) {
    for (const auto& [changed, lists, written, left] : cases) {
        SCOPED_TRACE(std::string(parameterName(changed)) + " of " + lists);
        ProfileEndpoint source(8L, 1, ENDPOINT_OTHER, 0);
        source.getValues() = valuesOf(lists);
        ValueMap expected = valuesOf(left);
        expected.insert(source.getValues().begin(), source.getValues().end());
        ParameterTranslator translator;
        translator.setSource(&source, endpoint, mono);
        translator.onParameterChanged(changed);
        SetParamCommand command(0);
        translator.translatePending(command);
        EXPECT_EQ(textOf(command), written);
        EXPECT_EQ(source.getValues(), expected);
        EXPECT_FALSE(source.isDirty());
    }
}

// clang-format off
TEST(Translation, CopiesSingleParameters) {
    expectTranslations({
        {PEAK_VALUE,             "peak_value=7,-8",              "dplp 7 -8", ""},
        {PEAK_VALUE,             "",                             "dplp",      "peak_value="},
        {CUSTOM_DRC_METADATA,    "custom_drc_metadata=1,2",      "drcm 1 2",  ""},
        {DIALOG_ENHANCER_AMOUNT, "dialog_enhancer_amount=12,13", "dea 12 13", ""},
        {DIALOG_ENHANCER_AMOUNT, "dialog_enhancer_amount=13,40", "dea 12 40", ""},  // At most 12.
        {DIALOG_ENHANCER_AMOUNT, "dialog_enhancer_amount=-3",    "dea -3",    ""},
        {DIALOG_ENHANCER_AMOUNT, "",                             "dea",       "dialog_enhancer_amount="},
    });
}

TEST(Translation, StartsEqualizersWithTheirBandCount) {
    expectTranslations({
        {GEQ_GAIN,   "geq_frequency=32,64 geq_gain=10,-20",     "gebs 2 32 64 10 -20",   ""},
        {GEQ_GAIN,   "geq_frequency=32,64 geq_gain=1,2,3",      "gebs 2 32 64 1 2 3",    ""},
        {GEQ_GAIN,   "geq_gain=5",                              "gebs 0 5",              "geq_frequency="},
        {IEQ_TARGET, "ieq_frequency=47,141,234 ieq_target=7,8", "iebs 3 47 141 234 7 8", ""},
        {IEQ_TARGET, "",                                        "iebs 0",                "ieq_frequency= ieq_target="},
    });
}

TEST(Translation, SendsBassByItsSwitches) {
    expectTranslations({
        {VIRTUAL_BASS_TYPE,         "virtual_bass_enable=-1,0 virtual_bass_mode=3,4 virtual_bass_type=1", "vbm 3 4; vbon 1", ""},
        {VIRTUAL_BASS_TYPE,         "virtual_bass_enable=0,1 virtual_bass_mode=3 virtual_bass_type=1",    "vbm 0; vbon 1",   ""},
        {VIRTUAL_BASS_ENABLE,       "",                                          "vbm 0; vbon", "virtual_bass_enable= virtual_bass_type="},
        {BASS_MBDRC_TUNING,         "bass_mbdrc_enable=1 bass_mbdrc_tuning=5,6", "bmdt 5 6",    ""},
        {BASS_MBDRC_TUNING,         "bass_mbdrc_enable=0,1 bass_mbdrc_tuning=5", "",            ""},
        {BASS_MBDRC_TUNING,         "bass_mbdrc_tuning=5",                       "",            "bass_mbdrc_enable="},
        {VIRTUAL_BASS_MIX_FREQ_LOW, "virtual_bass_src_freq_low=35 virtual_bass_src_freq_high=160,161 "
                                    "virtual_bass_mix_freq_low=150 virtual_bass_mix_freq_high=500", "vbsf 35 160 161; vbmf 150 500", ""},
    });
}

// Left, right, then the surrounds; only for two or four channels. The equalizer starts with the
// number of channels, the optimizer with that of bands.
TEST(Translation, SendsListsByChannel) {
    const std::string equalizer =
            " complex_equalizer_tuning_left=1,2 complex_equalizer_tuning_left_surround=3,4,5"
            " complex_equalizer_tuning_right=6 complex_equalizer_tuning_right_surround=7,8";
    const std::string optimizer =
            " audio_optimizer_frequency=47,141,234 audio_optimizer_gain_l=1,2 audio_optimizer_gain_ls=3"
            " audio_optimizer_gain_r=4,5 audio_optimizer_gain_rs=6";
    expectTranslations({
        {COMPLEX_EQUALIZER_TUNING_LEFT, "complex_equalizer_enable=1,0 output_channels=2,4" + equalizer, "ceqt 2 2 1 2 6", ""},
        {COMPLEX_EQUALIZER_TUNING_LEFT, "complex_equalizer_enable=1 output_channels=4" + equalizer,     "ceqt 4 2 1 2 6 3 4 5 7 8", ""},
        {COMPLEX_EQUALIZER_TUNING_LEFT, "complex_equalizer_enable=1 output_channels=6" + equalizer,     "", ""},
        {COMPLEX_EQUALIZER_TUNING_LEFT, "complex_equalizer_enable=0,1 output_channels=2" + equalizer,   "", ""},
        {COMPLEX_EQUALIZER_TUNING_LEFT, "complex_equalizer_enable=2 output_channels=2" + equalizer,     "", ""},
        {COMPLEX_EQUALIZER_TUNING_LEFT, "output_channels=2",                                            "", "complex_equalizer_enable="},
        {COMPLEX_EQUALIZER_TUNING_LEFT, "complex_equalizer_enable=1",                                   "", "output_channels="},
        {AUDIO_OPTIMIZER_GAIN_L,        "output_channels=2,4" + optimizer, "aobs 3 2 47 141 234 1 2 4 5", ""},
        {AUDIO_OPTIMIZER_GAIN_L,        "output_channels=4" + optimizer,   "aobs 3 4 47 141 234 1 2 4 5 3 6", ""},
        {AUDIO_OPTIMIZER_GAIN_L,        "output_channels=3" + optimizer,   "", ""},
        {AUDIO_OPTIMIZER_GAIN_L,        "audio_optimizer_frequency=1",     "", "output_channels="},
    });
}

// For up to two channels, the stress amounts are resized to two, in the source too.
TEST(Translation, SendsTheRegulator) {
    const std::string bands =
            " regulator_frequency=100,200 regulator_threshold_low=1,2 regulator_threshold_high=3,4 regulator_isolated_band=0,1"
            " regulator_sibilance_suppress_amounts_left=5,6 regulator_sibilance_suppress_amounts_left_surround=7"
            " regulator_sibilance_suppress_amounts_right=8,9 regulator_sibilance_suppress_amounts_right_surround=10";
    const std::string arbs = "; arbs 2 100 200 1 2 3 4 0 1";
    const std::string on = " regulator_sibilance_suppress_enable=1" + bands;
    const std::string off = " regulator_sibilance_suppress_enable=0,1" + bands;
    expectTranslations({
        {REGULATOR_STRESS_AMOUNT, "output_channels=2 regulator_stress_amount=5" + on,         "arsa 2 5 0" + arbs + "; rssa 2 2 5 6 8 9",           "regulator_stress_amount=5,0"},
        {REGULATOR_STRESS_AMOUNT, "output_channels=2 regulator_stress_amount=5,6,7" + on,     "arsa 2 5 6" + arbs + "; rssa 2 2 5 6 8 9",           "regulator_stress_amount=5,6"},
        {REGULATOR_STRESS_AMOUNT, "output_channels=4,9 regulator_stress_amount=5,6,7" + on,   "arsa 4 9 5 6 7" + arbs + "; rssa 4 2 5 6 8 9 7 10",  ""},
        {REGULATOR_STRESS_AMOUNT, "output_channels=3 regulator_stress_amount=5" + on,         "arsa 3 5" + arbs,   ""},
        {REGULATOR_STRESS_AMOUNT, "output_channels=4 regulator_stress_amount=5" + off,        "arsa 4 5" + arbs,   ""},
        {REGULATOR_STRESS_AMOUNT, "output_channels=4 regulator_sibilance_suppress_enable=2",  "arsa 4; arbs 0",    "regulator_stress_amount= regulator_frequency= regulator_threshold_low= regulator_threshold_high= regulator_isolated_band="},
        {REGULATOR_STRESS_AMOUNT, "regulator_stress_amount=5" + on,                           "arsa 5 0" + arbs,   "output_channels= regulator_stress_amount=5,0"},
    });
}

TEST(Translation, SendsTheOutputModeByEndpoint) {
    const std::string full = "virtualizer_enable=1 orientation=3 output_mix_matrix=7,8";
    expectTranslations({
        {ORIENTATION, full, "dom 1 0 3 7 8", ""},
        {ORIENTATION, "",   "dom 0",         "virtualizer_enable= orientation= output_mix_matrix="},
    });
    expectTranslations({{ORIENTATION, full, "dom 1 1 3", ""}}, ENDPOINT_HEADPHONE);
    // Mono turns a speaker's virtualizer off, in the source too.
    expectTranslations({
        {ORIENTATION, full, "dom 0 0 1 7 8", "virtualizer_enable=0 orientation=1"},
        {ORIENTATION, "",   "dom 0 0 1",     "virtualizer_enable=0 orientation=1 output_mix_matrix="},
    }, ENDPOINT_SPEAKER, true);
    expectTranslations({{ORIENTATION, full, "dom 1 2 3", ""}}, ENDPOINT_OTHER, true);
}
// clang-format on

TEST(ParameterTranslator, RunsEachPendingTranslatorOnceInTableOrder) {
    Tuning tuning("t", ENDPOINT_SPEAKER, false);
    tuning.getValues() = {{VOLMAX_BOOST, {2}}, {ORIENTATION, {3}}};
    IeqPreset preset(6, "x");
    SetParamCommand command(0);
    ParameterTranslator translator;
    translator.setSource(&preset, ENDPOINT_SPEAKER, false);
    // OUTPUT_CHANNELS and VIRTUAL_BASS_MODE have no translator. A tuning does not accept the
    // virtualizer switch, so it gives no output mode.
    for (const Parameter changed :
         {VOLMAX_BOOST, GEQ_GAIN, GEQ_FREQUENCY, GRAPHIC_EQUALIZER_ENABLE, OUTPUT_CHANNELS,
          VIRTUAL_BASS_MODE, BASS_MBDRC_ENABLE, ORIENTATION}) {
        translator.onParameterChanged(changed);
    }
    translator.setSource(&tuning, ENDPOINT_SPEAKER, true);
    translator.translatePending(command);
    translator.translatePending(command);
    EXPECT_EQ(textOf(command), "geon; gebs 0; vmb 2; bmde");
    EXPECT_EQ(tuning.getValues()[ORIENTATION], Values{3});
}

TEST(ParameterTranslator, TranslatesAllParametersOfTheSourcesClass) {
    IeqPreset preset(6, "x");
    SetParamCommand command(0);
    ParameterTranslator translator;
    translator.onParameterChanged(IEQ_ENABLE);
    translator.translatePending(command);  // No source, so pending ones are dropped.
    translator.setSource(&preset, ENDPOINT_OTHER, false);
    translator.translateAll(command);
    translator.translateAll(command);
    EXPECT_EQ(textOf(command), "ieid 6; iebs 0; ieid 6; iebs 0");
}

// The entry that a layout describes, for lists of one value and four channels.
Values lay(const EntryLayout& layout, const ValueMap& values) {
    Values laid;
    for (const ParameterList* const lists : {&layout.lists, &layout.channelLists}) {
        for (const Parameter param : lists->toVector()) {
            laid.push_back(values.at(param).front());
        }
    }
    switch (layout.head) {
        case EntryHead::NONE:
            break;
        case EntryHead::BANDS:
            laid.insert(laid.begin(), 1);
            break;
        case EntryHead::BANDS_CHANNELS:
            laid.insert(laid.begin(), {1, 4});
            break;
        case EntryHead::CHANNELS_BANDS:
            laid.insert(laid.begin(), {4, 1});
            break;
        case EntryHead::CHANNELS:
            laid.insert(laid.begin(), 4);
            break;
    }
    if (layout.destination == DOM) {
        laid.insert(laid.begin() + 1, ENDPOINT_SPEAKER);
    }
    return laid;
}

TEST(EntryLayout, MatchesWhatTranslatorsWrite) {
    ValueMap values;
    for (int32_t param = 0; param < static_cast<int32_t>(kParameterCount); ++param) {
        values[Parameter{param}] = {1000 + param};
    }
    for (const Parameter param : {COMPLEX_EQUALIZER_ENABLE, REGULATOR_SIBILANCE_SUPPRESS_ENABLE,
                                  BASS_MBDRC_ENABLE, VIRTUAL_BASS_ENABLE}) {
        values[param] = {1};
    }
    values[OUTPUT_CHANNELS] = {4};
    values[DIALOG_ENHANCER_AMOUNT] = {12};
    SetParamCommand command(0);
    for (Translator* const translator : TranslatorCollection::kAllTranslators) {
        ProfileEndpoint source(1, ENDPOINT_SPEAKER, 0);
        source.getValues() = values;
        translator->kivTranslate(command, source, ENDPOINT_SPEAKER, false);
    }
    const std::vector<int32_t>& words = command.mParams;
    SetParamCommand expected(0);
    for (size_t at = 2; at < words.size(); at += 3 + static_cast<size_t>(words[at + 2])) {
        const auto code = std::find(std::begin(kKivParameterCodes), std::end(kKivParameterCodes),
                                    words[at + 1]);
        const KivParameter destination{static_cast<int32_t>(code - kKivParameterCodes)};
        const EntryLayout layout =
                ParameterTranslator::sTranslatorCollection->getLayout(destination);
        expected.add(destination, lay(layout, values));
    }
    EXPECT_EQ(textOf(command), textOf(expected));
    // Those that stand in the table for good; rows may come behind them.
    EXPECT_GE(command.mParamCount, 68 + 15);
    EXPECT_EQ(ParameterTranslator::sTranslatorCollection->getLayout(VOL).lists.size(), 0U);
}

/** A translator defined by another library; its operations are not const. */
class OutsideTranslator : public SimpleTranslator {
  public:
    OutsideTranslator() : SimpleTranslator(VMB, VOLMAX_BOOST) {}
    std::vector<Parameter>& getSrcParams() override { return sources; }
    void kivTranslate(SetParamCommand& cmd, ParameterValues& values, Endpoint endpoint,
                      bool mono) override {
        SimpleTranslator::kivTranslate(cmd, values, endpoint, mono);
        cmd.add(PLB, endpoint);
    }

    std::vector<Parameter> sources = {PEAK_VALUE};
};

TEST(Translator, CanBeDerivedFrom) {
    Tuning source("t", ENDPOINT_SPEAKER, false);
    SetParamCommand command(0);
    OutsideTranslator outside;
    Translator& translator = outside;
    translator.kivTranslate(command, source, ENDPOINT_OTHER, false);
    EXPECT_EQ(textOf(command), "vmb; plb 2");
    EXPECT_EQ(translator.getSrcParams(), std::vector<Parameter>{PEAK_VALUE});
    EXPECT_EQ(outside.SimpleTranslator::getSrcParams(), std::vector<Parameter>{VOLMAX_BOOST});
}

}  // namespace
}  // namespace ormel::test
