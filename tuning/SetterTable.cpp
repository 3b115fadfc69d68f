// The element names that a tuning document's parameters are written under, and what reads each.
#include <ormel/ValueSetter.h>

#include <algorithm>
#include <array>
#include <type_traits>
#include <utility>
#include <variant>

#include "model/ObjectBlock.h"

namespace ormel {

namespace {

using AnySetter = std::variant<SimpleValueSetter, RowDataValueSetter, DrcRowDataValueSetter,
                               MixMatrixValueSetter, VirtualBassSubgainValueSetter,
                               VirtualBassValueSetter, IeqValueSetter, GeqValueSetter,
                               AudioOptimizerValueSetter, RegulatorTuningValueSetter>;

struct SetterRow {
    const char* nodeName;
    AnySetter (*make)(const SetterRow& row);
    /** One parameter, or one per attribute name of the setter. */
    std::array<Parameter, 5> params;
};

template <typename Setter>
AnySetter make(const SetterRow& row) {
    if constexpr (std::is_constructible_v<Setter, std::string, Parameter>) {
        return Setter(row.nodeName, row.params.front());
    } else {
        const auto end = row.params.begin() + Setter::kAttrNames.size();
        return Setter(row.nodeName, std::vector<Parameter>(row.params.begin(), end));
    }
}

constexpr SetterRow kSetterRows[] = {
        {"calibration-boost", make<SimpleValueSetter>, {CALIBRATION_BOOST}},
        {"mi-dialog-enhancer-steering-enable",
         make<SimpleValueSetter>,
         {MI_DIALOG_ENHANCER_STEERING_ENABLE}},
        {"dialog-enhancer-enable", make<SimpleValueSetter>, {DIALOG_ENHANCER_ENABLE}},
        {"dialog-enhancer-amount", make<SimpleValueSetter>, {DIALOG_ENHANCER_AMOUNT}},
        {"dialog-enhancer-ducking", make<SimpleValueSetter>, {DIALOG_ENHANCER_DUCKING}},
        {"mi-virtualizer-binaural-steering-enable",
         make<SimpleValueSetter>,
         {MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE}},
        {"peak-value", make<SimpleValueSetter>, {PEAK_VALUE}},
        {"surround-decoder-enable", make<SimpleValueSetter>, {SURROUND_DECODER_ENABLE}},
        {"surround-boost", make<SimpleValueSetter>, {SURROUND_BOOST}},
        {"volmax-boost", make<SimpleValueSetter>, {VOLMAX_BOOST}},
        {"volume-leveler-enable", make<SimpleValueSetter>, {VOLUME_LEVELER_ENABLE}},
        {"volume-leveler-amount", make<SimpleValueSetter>, {VOLUME_LEVELER_AMOUNT}},
        {"volume-leveler-in-target", make<SimpleValueSetter>, {VOLUME_LEVELER_IN_TARGET}},
        {"volume-leveler-out-target", make<SimpleValueSetter>, {VOLUME_LEVELER_OUT_TARGET}},
        {"graphic-equalizer-enable", make<SimpleValueSetter>, {GRAPHIC_EQUALIZER_ENABLE}},
        {"virtualizer-enable", make<SimpleValueSetter>, {VIRTUALIZER_ENABLE}},
        {"virtualizer-start-band", make<SimpleValueSetter>, {VIRTUALIZER_START_BAND}},
        {"bass-enhancer-enable", make<SimpleValueSetter>, {BASS_ENHANCER_ENABLE}},
        {"virtual-bass-process-enable", make<SimpleValueSetter>, {VIRTUAL_BASS_ENABLE}},
        {"headphone-virtualizer-steerer-source-distance",
         make<SimpleValueSetter>,
         {HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE}},
        {"hearing-protection-enable", make<SimpleValueSetter>, {HEARING_PROTECTION_ENABLE}},
        {"hearing-protection-rms-averaging-time-win-len",
         make<SimpleValueSetter>,
         {HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN}},
        {"hearing-protection-rms-attenuation-target",
         make<SimpleValueSetter>,
         {HEARING_PROTECTION_RMS_ATTENUATION_TARGET}},
        {"hearing-protection-attenuation-attack-time",
         make<SimpleValueSetter>,
         {HEARING_PROTECTION_ATTENUATION_ATTACK_TIME}},
        {"hearing-protection-attenuation-release-time",
         make<SimpleValueSetter>,
         {HEARING_PROTECTION_ATTENUATION_RELEASE_TIME}},
        {"ieq-enable", make<SimpleValueSetter>, {IEQ_ENABLE}},
        {"ieq-amount", make<SimpleValueSetter>, {IEQ_AMOUNT}},
        {"headphone-virtualizer-mode", make<SimpleValueSetter>, {HEADPHONE_VIRTUALIZER_MODE}},
        {"advanced-headphone-virtualizer-rendering-config",
         make<RowDataValueSetter>,
         {ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG}},
        {"mi-dv-leveler-steering-enable", make<SimpleValueSetter>, {MI_DV_LEVELER_STEERING_ENABLE}},
        {"mi-ieq-steering-enable", make<SimpleValueSetter>, {MI_IEQ_STEERING_ENABLE}},
        {"mi-surround-compressor-steering-enable",
         make<SimpleValueSetter>,
         {MI_SURROUND_COMPRESSOR_STEERING_ENABLE}},
        {"mi-adaptive-virtualizer-steering-enable",
         make<SimpleValueSetter>,
         {MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE}},
        {"reverb-suppression-enable", make<SimpleValueSetter>, {REVERB_SUPPRESSION_ENABLE}},
        {"reverb-suppression-amount", make<SimpleValueSetter>, {REVERB_SUPPRESSION_AMOUNT}},
        {"volume-modeler-enable", make<SimpleValueSetter>, {VOLUME_MODELER_ENABLE}},
        {"surround-decoder-diffuse-relocating-to-front-amount",
         make<SimpleValueSetter>,
         {SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT}},
        {"advanced-headphone-virtualizer-lr-angle",
         make<SimpleValueSetter>,
         {ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE}},
        {"drc-metadata", make<DrcRowDataValueSetter>, {CUSTOM_DRC_METADATA}},
        {"speaker-virtualizer-mode", make<SimpleValueSetter>, {SPEAKER_VIRTUALIZER_MODE}},
        {"advanced-speaker-virtualizer-start-bin",
         make<SimpleValueSetter>,
         {ADVANCED_SPEAKER_VIRTUALIZER_START_BIN}},
        {"advanced-speaker-virtualizer-rendering-config",
         make<RowDataValueSetter>,
         {ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG}},
        {"bass-enhancer-boost", make<SimpleValueSetter>, {BASS_ENHANCER_BOOST}},
        {"bass-enhancer-cutoff-frequency",
         make<SimpleValueSetter>,
         {BASS_ENHANCER_CUTOFF_FREQUENCY}},
        {"bass-enhancer-width", make<SimpleValueSetter>, {BASS_ENHANCER_WIDTH}},
        {"bass-extraction-cutoff-frequency",
         make<SimpleValueSetter>,
         {BASS_EXTRACTION_CUTOFF_FREQUENCY}},
        {"height-filter-mode", make<SimpleValueSetter>, {HEIGHT_FILTER_MODE}},
        {"regulator-overdrive", make<SimpleValueSetter>, {REGULATOR_OVERDRIVE}},
        {"regulator-timbre-preservation", make<SimpleValueSetter>, {REGULATOR_TIMBRE_PRESERVATION}},
        {"regulator-stress-amount", make<RowDataValueSetter>, {REGULATOR_STRESS_AMOUNT}},
        {"regulator-distortion-slope", make<SimpleValueSetter>, {REGULATOR_DISTORTION_SLOPE}},
        {"virtual-bass-harmgains", make<RowDataValueSetter>, {VIRTUAL_BASS_HARMGAINS}},
        {"virtual-bass-hybgains", make<RowDataValueSetter>, {VIRTUAL_BASS_HYBGAINS}},
        {"virtual-bass-rolloff-gain", make<SimpleValueSetter>, {VIRTUAL_BASS_ROLLOFF_GAIN}},
        {"virtual-bass-blend-linear-gain",
         make<SimpleValueSetter>,
         {VIRTUAL_BASS_BLEND_LINEAR_GAIN}},
        {"virtual-bass-mix-frequency", make<RowDataValueSetter>, {VIRTUAL_BASS_MIX_FREQUENCY}},
        {"virtual-bass-compressor-tuning",
         make<RowDataValueSetter>,
         {VIRTUAL_BASS_COMPRESSOR_TUNING}},
        {"virtual-bass-overall-gain", make<SimpleValueSetter>, {VIRTUAL_BASS_OVERALL_GAIN}},
        {"virtual-bass-slope-gain", make<SimpleValueSetter>, {VIRTUAL_BASS_SLOPE_GAIN}},
        {"virtual-bass-mix-freqs",
         make<VirtualBassValueSetter>,
         {VIRTUAL_BASS_MIX_FREQ_LOW, VIRTUAL_BASS_MIX_FREQ_HIGH}},
        {"virtual-bass-src-freqs",
         make<VirtualBassValueSetter>,
         {VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH}},
        {"virtual-bass-subgains", make<VirtualBassSubgainValueSetter>, {VIRTUAL_BASS_SUBGAINS}},
        {"virtualizer-front-speaker-angle",
         make<SimpleValueSetter>,
         {VIRTUALIZER_FRONT_SPEAKER_ANGLE}},
        {"virtualizer-height-speaker-angle",
         make<SimpleValueSetter>,
         {VIRTUALIZER_HEIGHT_SPEAKER_ANGLE}},
        {"virtualizer-rear-height-speaker-angle",
         make<SimpleValueSetter>,
         {VIRTUALIZER_REAR_HEIGHT_SPEAKER_ANGLE}},
        {"virtualizer-surround-speaker-angle",
         make<SimpleValueSetter>,
         {VIRTUALIZER_SURROUND_SPEAKER_ANGLE}},
        {"virtualizer-rear-surround-speaker-angle",
         make<SimpleValueSetter>,
         {VIRTUALIZER_REAR_SURROUND_SPEAKER_ANGLE}},
        {"volume-leveler-compressor-enable",
         make<SimpleValueSetter>,
         {VOLUME_LEVELER_COMPRESSOR_ENABLE}},
        {"volume-modeler-calibration", make<SimpleValueSetter>, {VOLUME_MODELER_CALIBRATION}},
        {"audio-optimizer-enable", make<SimpleValueSetter>, {AUDIO_OPTIMIZER_ENABLE}},
        {"bass-extraction-enable", make<SimpleValueSetter>, {BASS_EXTRACTION_ENABLE}},
        {"regulator-enable", make<SimpleValueSetter>, {REGULATOR_ENABLE}},
        {"regulator-speaker-dist-enable", make<SimpleValueSetter>, {REGULATOR_SPEAKER_DIST_ENABLE}},
        {"output-mode", make<MixMatrixValueSetter>, {OUTPUT_MIX_MATRIX}},
        {"virtual-bass-mode", make<SimpleValueSetter>, {VIRTUAL_BASS_MODE}},
        {"complex-equalizer-enable", make<SimpleValueSetter>, {COMPLEX_EQUALIZER_ENABLE}},
        {"complex-equalizer-tuning-left",
         make<RowDataValueSetter>,
         {COMPLEX_EQUALIZER_TUNING_LEFT}},
        {"complex-equalizer-tuning-right",
         make<RowDataValueSetter>,
         {COMPLEX_EQUALIZER_TUNING_RIGHT}},
        {"complex-equalizer-tuning-left-surround",
         make<RowDataValueSetter>,
         {COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND}},
        {"complex-equalizer-tuning-right-surround",
         make<RowDataValueSetter>,
         {COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND}},
        {"regulator-sibilance-suppress-enable",
         make<SimpleValueSetter>,
         {REGULATOR_SIBILANCE_SUPPRESS_ENABLE}},
        {"bass-mbdrc-enable", make<SimpleValueSetter>, {BASS_MBDRC_ENABLE}},
        {"regulator-sibilance-suppress-amounts-left",
         make<RowDataValueSetter>,
         {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT}},
        {"regulator-sibilance-suppress-amounts-right",
         make<RowDataValueSetter>,
         {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT}},
        {"regulator-sibilance-suppress-amounts-left-surround",
         make<RowDataValueSetter>,
         {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND}},
        {"regulator-sibilance-suppress-amounts-right-surround",
         make<RowDataValueSetter>,
         {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND}},
        {"bass-mbdrc-tuning", make<RowDataValueSetter>, {BASS_MBDRC_TUNING}},
        {"audio-optimizer-bands",
         make<AudioOptimizerValueSetter>,
         {AUDIO_OPTIMIZER_FREQUENCY, AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_R,
          AUDIO_OPTIMIZER_GAIN_LS, AUDIO_OPTIMIZER_GAIN_RS}},
        {"regulator-tuning",
         make<RegulatorTuningValueSetter>,
         {REGULATOR_FREQUENCY, REGULATOR_THRESHOLD_LOW, REGULATOR_THRESHOLD_HIGH,
          REGULATOR_ISOLATED_BAND}},
        {"ieq", make<IeqValueSetter>, {IEQ_FREQUENCY, IEQ_TARGET}},
        {"geq", make<GeqValueSetter>, {GEQ_FREQUENCY, GEQ_GAIN}},
};
static_assert(std::size(kSetterRows) == 91);

const std::set<ValueSetter*>& allValueSetters() {
    static const auto& block = *new ObjectBlock<ValueSetter, AnySetter>(kSetterRows);
    return block.pointers();
}

}  // namespace

const std::set<ValueSetter*>& SetterCollection::kAllValueSetters = allValueSetters();

SetterCollection::SetterCollection() {
    for (ValueSetter* const setter : allValueSetters()) {
        std::string name = setter->getNodeName();
        mSetters.resize(std::max(mSetters.size(), name.size() + 1));
        mSetters[name.size()].emplace_back(std::move(name), setter);
    }
}

ValueSetter* SetterCollection::getValueSetter(std::string_view name) {
    if (name.size() < mSetters.size()) {
        for (const auto& [nodeName, setter] : mSetters[name.size()]) {
            // One letter settles most of them.
            if (nodeName.back() == name.back() && nodeName == name) {
                return setter;
            }
        }
    }
    mOtherNames.emplace(name);
    return nullptr;
}

}  // namespace ormel
