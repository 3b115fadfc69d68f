// The element names of a tuning document's parameters, and the setter of each.
#include <ormel/ValueSetter.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "model/NeverDestroyed.h"
#include "model/ObjectBlock.h"
#include "tuning/SetterRow.h"

namespace ormel {

namespace {

using SetterClasses = ObjectClasses<SimpleValueSetter, RowDataValueSetter, DrcRowDataValueSetter,
                                    MixMatrixValueSetter, VirtualBassSubgainValueSetter,
                                    VirtualBassValueSetter, IeqValueSetter, GeqValueSetter,
                                    AudioOptimizerValueSetter, RegulatorTuningValueSetter>;

template <typename Setter>
constexpr uint8_t kKind = SetterClasses::kKind<Setter>;

// clang-format off
constexpr SetterRow kSetterRows[] = {
    {"calibration-boost",                                   kKind<SimpleValueSetter>,             {CALIBRATION_BOOST}},
    {"mi-dialog-enhancer-steering-enable",                  kKind<SimpleValueSetter>,             {MI_DIALOG_ENHANCER_STEERING_ENABLE}},
    {"dialog-enhancer-enable",                              kKind<SimpleValueSetter>,             {DIALOG_ENHANCER_ENABLE}},
    {"dialog-enhancer-amount",                              kKind<SimpleValueSetter>,             {DIALOG_ENHANCER_AMOUNT}},
    {"dialog-enhancer-ducking",                             kKind<SimpleValueSetter>,             {DIALOG_ENHANCER_DUCKING}},
    {"mi-virtualizer-binaural-steering-enable",             kKind<SimpleValueSetter>,             {MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE}},
    {"peak-value",                                          kKind<SimpleValueSetter>,             {PEAK_VALUE}},
    {"surround-decoder-enable",                             kKind<SimpleValueSetter>,             {SURROUND_DECODER_ENABLE}},
    {"surround-boost",                                      kKind<SimpleValueSetter>,             {SURROUND_BOOST}},
    {"volmax-boost",                                        kKind<SimpleValueSetter>,             {VOLMAX_BOOST}},
    {"volume-leveler-enable",                               kKind<SimpleValueSetter>,             {VOLUME_LEVELER_ENABLE}},
    {"volume-leveler-amount",                               kKind<SimpleValueSetter>,             {VOLUME_LEVELER_AMOUNT}},
    {"volume-leveler-in-target",                            kKind<SimpleValueSetter>,             {VOLUME_LEVELER_IN_TARGET}},
    {"volume-leveler-out-target",                           kKind<SimpleValueSetter>,             {VOLUME_LEVELER_OUT_TARGET}},
    {"graphic-equalizer-enable",                            kKind<SimpleValueSetter>,             {GRAPHIC_EQUALIZER_ENABLE}},
    {"virtualizer-enable",                                  kKind<SimpleValueSetter>,             {VIRTUALIZER_ENABLE}},
    {"virtualizer-start-band",                              kKind<SimpleValueSetter>,             {VIRTUALIZER_START_BAND}},
    {"bass-enhancer-enable",                                kKind<SimpleValueSetter>,             {BASS_ENHANCER_ENABLE}},
    {"virtual-bass-process-enable",                         kKind<SimpleValueSetter>,             {VIRTUAL_BASS_ENABLE}},
    {"headphone-virtualizer-steerer-source-distance",       kKind<SimpleValueSetter>,             {HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE}},
    {"hearing-protection-enable",                           kKind<SimpleValueSetter>,             {HEARING_PROTECTION_ENABLE}},
    {"hearing-protection-rms-averaging-time-win-len",       kKind<SimpleValueSetter>,             {HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN}},
    {"hearing-protection-rms-attenuation-target",           kKind<SimpleValueSetter>,             {HEARING_PROTECTION_RMS_ATTENUATION_TARGET}},
    {"hearing-protection-attenuation-attack-time",          kKind<SimpleValueSetter>,             {HEARING_PROTECTION_ATTENUATION_ATTACK_TIME}},
    {"hearing-protection-attenuation-release-time",         kKind<SimpleValueSetter>,             {HEARING_PROTECTION_ATTENUATION_RELEASE_TIME}},
    {"ieq-enable",                                          kKind<SimpleValueSetter>,             {IEQ_ENABLE}},
    {"ieq-amount",                                          kKind<SimpleValueSetter>,             {IEQ_AMOUNT}},
    {"headphone-virtualizer-mode",                          kKind<SimpleValueSetter>,             {HEADPHONE_VIRTUALIZER_MODE}},
    {"advanced-headphone-virtualizer-rendering-config",     kKind<RowDataValueSetter>,            {ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG}},
    {"mi-dv-leveler-steering-enable",                       kKind<SimpleValueSetter>,             {MI_DV_LEVELER_STEERING_ENABLE}},
    {"mi-ieq-steering-enable",                              kKind<SimpleValueSetter>,             {MI_IEQ_STEERING_ENABLE}},
    {"mi-surround-compressor-steering-enable",              kKind<SimpleValueSetter>,             {MI_SURROUND_COMPRESSOR_STEERING_ENABLE}},
    {"mi-adaptive-virtualizer-steering-enable",             kKind<SimpleValueSetter>,             {MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE}},
    {"reverb-suppression-enable",                           kKind<SimpleValueSetter>,             {REVERB_SUPPRESSION_ENABLE}},
    {"reverb-suppression-amount",                           kKind<SimpleValueSetter>,             {REVERB_SUPPRESSION_AMOUNT}},
    {"volume-modeler-enable",                               kKind<SimpleValueSetter>,             {VOLUME_MODELER_ENABLE}},
    {"surround-decoder-diffuse-relocating-to-front-amount", kKind<SimpleValueSetter>,             {SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT}},
    {"advanced-headphone-virtualizer-lr-angle",             kKind<SimpleValueSetter>,             {ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE}},
    {"drc-metadata",                                        kKind<DrcRowDataValueSetter>,         {CUSTOM_DRC_METADATA}},
    {"speaker-virtualizer-mode",                            kKind<SimpleValueSetter>,             {SPEAKER_VIRTUALIZER_MODE}},
    {"advanced-speaker-virtualizer-start-bin",              kKind<SimpleValueSetter>,             {ADVANCED_SPEAKER_VIRTUALIZER_START_BIN}},
    {"advanced-speaker-virtualizer-rendering-config",       kKind<RowDataValueSetter>,            {ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG}},
    {"bass-enhancer-boost",                                 kKind<SimpleValueSetter>,             {BASS_ENHANCER_BOOST}},
    {"bass-enhancer-cutoff-frequency",                      kKind<SimpleValueSetter>,             {BASS_ENHANCER_CUTOFF_FREQUENCY}},
    {"bass-enhancer-width",                                 kKind<SimpleValueSetter>,             {BASS_ENHANCER_WIDTH}},
    {"bass-extraction-cutoff-frequency",                    kKind<SimpleValueSetter>,             {BASS_EXTRACTION_CUTOFF_FREQUENCY}},
    {"height-filter-mode",                                  kKind<SimpleValueSetter>,             {HEIGHT_FILTER_MODE}},
    {"regulator-overdrive",                                 kKind<SimpleValueSetter>,             {REGULATOR_OVERDRIVE}},
    {"regulator-timbre-preservation",                       kKind<SimpleValueSetter>,             {REGULATOR_TIMBRE_PRESERVATION}},
    {"regulator-stress-amount",                             kKind<RowDataValueSetter>,            {REGULATOR_STRESS_AMOUNT}},
    {"regulator-distortion-slope",                          kKind<SimpleValueSetter>,             {REGULATOR_DISTORTION_SLOPE}},
    {"virtual-bass-harmgains",                              kKind<RowDataValueSetter>,            {VIRTUAL_BASS_HARMGAINS}},
    {"virtual-bass-hybgains",                               kKind<RowDataValueSetter>,            {VIRTUAL_BASS_HYBGAINS}},
    {"virtual-bass-rolloff-gain",                           kKind<SimpleValueSetter>,             {VIRTUAL_BASS_ROLLOFF_GAIN}},
    {"virtual-bass-blend-linear-gain",                      kKind<SimpleValueSetter>,             {VIRTUAL_BASS_BLEND_LINEAR_GAIN}},
    {"virtual-bass-mix-frequency",                          kKind<RowDataValueSetter>,            {VIRTUAL_BASS_MIX_FREQUENCY}},
    {"virtual-bass-compressor-tuning",                      kKind<RowDataValueSetter>,            {VIRTUAL_BASS_COMPRESSOR_TUNING}},
    {"virtual-bass-overall-gain",                           kKind<SimpleValueSetter>,             {VIRTUAL_BASS_OVERALL_GAIN}},
    {"virtual-bass-slope-gain",                             kKind<SimpleValueSetter>,             {VIRTUAL_BASS_SLOPE_GAIN}},
    {"virtual-bass-mix-freqs",                              kKind<VirtualBassValueSetter>,        {VIRTUAL_BASS_MIX_FREQ_LOW, VIRTUAL_BASS_MIX_FREQ_HIGH}},
    {"virtual-bass-src-freqs",                              kKind<VirtualBassValueSetter>,        {VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH}},
    {"virtual-bass-subgains",                               kKind<VirtualBassSubgainValueSetter>, {VIRTUAL_BASS_SUBGAINS}},
    {"virtualizer-front-speaker-angle",                     kKind<SimpleValueSetter>,             {VIRTUALIZER_FRONT_SPEAKER_ANGLE}},
    {"virtualizer-height-speaker-angle",                    kKind<SimpleValueSetter>,             {VIRTUALIZER_HEIGHT_SPEAKER_ANGLE}},
    {"virtualizer-rear-height-speaker-angle",               kKind<SimpleValueSetter>,             {VIRTUALIZER_REAR_HEIGHT_SPEAKER_ANGLE}},
    {"virtualizer-surround-speaker-angle",                  kKind<SimpleValueSetter>,             {VIRTUALIZER_SURROUND_SPEAKER_ANGLE}},
    {"virtualizer-rear-surround-speaker-angle",             kKind<SimpleValueSetter>,             {VIRTUALIZER_REAR_SURROUND_SPEAKER_ANGLE}},
    {"volume-leveler-compressor-enable",                    kKind<SimpleValueSetter>,             {VOLUME_LEVELER_COMPRESSOR_ENABLE}},
    {"volume-modeler-calibration",                          kKind<SimpleValueSetter>,             {VOLUME_MODELER_CALIBRATION}},
    {"audio-optimizer-enable",                              kKind<SimpleValueSetter>,             {AUDIO_OPTIMIZER_ENABLE}},
    {"bass-extraction-enable",                              kKind<SimpleValueSetter>,             {BASS_EXTRACTION_ENABLE}},
    {"regulator-enable",                                    kKind<SimpleValueSetter>,             {REGULATOR_ENABLE}},
    {"regulator-speaker-dist-enable",                       kKind<SimpleValueSetter>,             {REGULATOR_SPEAKER_DIST_ENABLE}},
    {"output-mode",                                         kKind<MixMatrixValueSetter>,          {OUTPUT_MIX_MATRIX}},
    {"virtual-bass-mode",                                   kKind<SimpleValueSetter>,             {VIRTUAL_BASS_MODE}},
    {"complex-equalizer-enable",                            kKind<SimpleValueSetter>,             {COMPLEX_EQUALIZER_ENABLE}},
    {"complex-equalizer-tuning-left",                       kKind<RowDataValueSetter>,            {COMPLEX_EQUALIZER_TUNING_LEFT}},
    {"complex-equalizer-tuning-right",                      kKind<RowDataValueSetter>,            {COMPLEX_EQUALIZER_TUNING_RIGHT}},
    {"complex-equalizer-tuning-left-surround",              kKind<RowDataValueSetter>,            {COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND}},
    {"complex-equalizer-tuning-right-surround",             kKind<RowDataValueSetter>,            {COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND}},
    {"regulator-sibilance-suppress-enable",                 kKind<SimpleValueSetter>,             {REGULATOR_SIBILANCE_SUPPRESS_ENABLE}},
    {"bass-mbdrc-enable",                                   kKind<SimpleValueSetter>,             {BASS_MBDRC_ENABLE}},
    {"regulator-sibilance-suppress-amounts-left",           kKind<RowDataValueSetter>,            {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT}},
    {"regulator-sibilance-suppress-amounts-right",          kKind<RowDataValueSetter>,            {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT}},
    {"regulator-sibilance-suppress-amounts-left-surround",  kKind<RowDataValueSetter>,            {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND}},
    {"regulator-sibilance-suppress-amounts-right-surround", kKind<RowDataValueSetter>,            {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND}},
    {"bass-mbdrc-tuning",                                   kKind<RowDataValueSetter>,            {BASS_MBDRC_TUNING}},
    {"audio-optimizer-bands",                               kKind<AudioOptimizerValueSetter>,     {AUDIO_OPTIMIZER_FREQUENCY, AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_R, AUDIO_OPTIMIZER_GAIN_LS, AUDIO_OPTIMIZER_GAIN_RS}},
    {"regulator-tuning",                                    kKind<RegulatorTuningValueSetter>,    {REGULATOR_FREQUENCY, REGULATOR_THRESHOLD_LOW, REGULATOR_THRESHOLD_HIGH, REGULATOR_ISOLATED_BAND}},
    {"ieq",                                                 kKind<IeqValueSetter>,                {IEQ_FREQUENCY, IEQ_TARGET}},
    {"geq",                                                 kKind<GeqValueSetter>,                {GEQ_FREQUENCY, GEQ_GAIN}},
};
// clang-format on
constexpr size_t kSetterCount = std::size(kSetterRows);

using Setters = SetterClasses::Block<ValueSetter, kSetterCount>;

constexpr std::string_view nameOfRow(uint8_t row) {
    return kSetterRows[row].nodeName();
}

/** The rows in ascending order of names. */
constexpr auto kRowsByName = [] {
    std::array<uint8_t, kSetterCount> rows{};
    for (uint8_t row = 0; row < kSetterCount; ++row) {
        size_t at = row;
        for (; at > 0 && nameOfRow(row) < nameOfRow(rows[at - 1]); --at) {
            rows[at] = rows[at - 1];
        }
        rows[at] = row;
    }
    return rows;
}();

/** Built on first use, which may be before this file's static initialisation. */
const Setters& setters() {
    static NeverDestroyed<Setters> setters(kSetterRows);
    return *setters;
}

}  // namespace

const std::set<ValueSetter*>& SetterCollection::kAllValueSetters = setters().pointers();

ValueSetter* SetterCollection::getValueSetter(std::string_view name) const {
    const auto found = std::lower_bound(
            kRowsByName.begin(), kRowsByName.end(), name,
            [](uint8_t row, std::string_view wanted) { return nameOfRow(row) < wanted; });
    const bool isKnown = found != kRowsByName.end() && nameOfRow(*found) == name;
    return isKnown ? setters().at(*found) : nullptr;
}

}  // namespace ormel
