// Which translator reacts to which tuning parameters.
#include <ormel/Translator.h>

#include <array>
#include <iterator>
#include <new>
#include <type_traits>

#include "model/NeverDestroyed.h"
#include "model/ObjectBlock.h"

namespace ormel {

namespace {

using TranslatorClasses =
        ObjectClasses<SimpleTranslator, GeqTranslator, IeqTranslator, ComplexEqualizerTranslator,
                      VirtualBassEnableTranslator, VirtualBassTranslator, BassMbdrcTranslator,
                      DeAmountTranslator, AudioOptimizerTranslator, AudioRegulatorTranslator,
                      OutputModeTranslator, CustomDRCTranslator>;

template <typename Class>
constexpr uint8_t kKind = TranslatorClasses::kKind<Class>;

struct TranslatorRow {
    constexpr TranslatorRow(uint8_t rowKind, Parameter source = {}, KivParameter destination = {})
        : kind(rowKind),
          src(static_cast<uint8_t>(source)),
          dst(static_cast<uint8_t>(destination)) {}

    template <typename Class>
    Class* make(void* place) const {
        if constexpr (std::is_same_v<Class, SimpleTranslator>) {
            return new (place) SimpleTranslator(KivParameter{dst}, Parameter{src});
        } else {
            return new (place) Class();
        }
    }

    uint8_t kind;
    /** Only for SimpleTranslator; the other classes have their own sources and destinations. */
    uint8_t src;
    uint8_t dst;
};
static_assert(kParameterCount <= 255 && kKivParameterCount <= 256, "rows hold them in a byte");

// clang-format off
constexpr TranslatorRow kTranslatorRows[] = {
    {kKind<SimpleTranslator>,  GRAPHIC_EQUALIZER_ENABLE,                            GEON},
    {kKind<GeqTranslator>},                                                      // GEBS
    {kKind<SimpleTranslator>,  IEQ_ENABLE,                                          IEON},
    {kKind<SimpleTranslator>,  IEQ_AMOUNT,                                          IEA},
    {kKind<SimpleTranslator>,  IEQ_ID,                                              IEID},
    {kKind<IeqTranslator>},                                                      // IEBS
    {kKind<SimpleTranslator>,  MI_DIALOG_ENHANCER_STEERING_ENABLE,                  MDEE},
    {kKind<SimpleTranslator>,  MI_DV_LEVELER_STEERING_ENABLE,                       MDLE},
    {kKind<SimpleTranslator>,  MI_IEQ_STEERING_ENABLE,                              MIEE},
    {kKind<SimpleTranslator>,  MI_SURROUND_COMPRESSOR_STEERING_ENABLE,              MSCE},
    {kKind<SimpleTranslator>,  MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE,             MAVE},
    {kKind<SimpleTranslator>,  MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE,             MVBE},
    {kKind<SimpleTranslator>,  AUDIO_OPTIMIZER_ENABLE,                              AOON},
    {kKind<AudioOptimizerTranslator>},                                           // AOBS
    {kKind<SimpleTranslator>,  BASS_ENHANCER_ENABLE,                                BEON},
    {kKind<SimpleTranslator>,  BASS_ENHANCER_BOOST,                                 BEB},
    {kKind<SimpleTranslator>,  BASS_ENHANCER_CUTOFF_FREQUENCY,                      BECF},
    {kKind<SimpleTranslator>,  BASS_ENHANCER_WIDTH,                                 BEW},
    {kKind<SimpleTranslator>,  CALIBRATION_BOOST,                                   PLB},
    {kKind<DeAmountTranslator>},                                                 // DEA
    {kKind<SimpleTranslator>,  DIALOG_ENHANCER_ENABLE,                              DEON},
    {kKind<SimpleTranslator>,  DIALOG_ENHANCER_DUCKING,                             DED},
    {kKind<AudioRegulatorTranslator>},                                           // ARSA, ARBS, RSSA
    {kKind<SimpleTranslator>,  REGULATOR_DISTORTION_SLOPE,                          ARDS},
    {kKind<SimpleTranslator>,  REGULATOR_ENABLE,                                    ARON},
    {kKind<SimpleTranslator>,  REGULATOR_SPEAKER_DIST_ENABLE,                       ARDE},
    {kKind<SimpleTranslator>,  REGULATOR_OVERDRIVE,                                 AROD},
    {kKind<SimpleTranslator>,  REGULATOR_TIMBRE_PRESERVATION,                       ARTP},
    {kKind<SimpleTranslator>,  REGULATOR_SIBILANCE_SUPPRESS_ENABLE,                 RSSE},
    {kKind<SimpleTranslator>,  SURROUND_DECODER_ENABLE,                             NGON},
    {kKind<SimpleTranslator>,  SURROUND_BOOST,                                      DSB},
    {kKind<VirtualBassEnableTranslator>},                                        // VBM, VBON
    {kKind<VirtualBassTranslator>},                                              // VBSF, VBMF
    {kKind<SimpleTranslator>,  VIRTUAL_BASS_OVERALL_GAIN,                           VBOG},
    {kKind<SimpleTranslator>,  VIRTUAL_BASS_SLOPE_GAIN,                             VBSG},
    {kKind<SimpleTranslator>,  VIRTUAL_BASS_SUBGAINS,                               VBHG},
    {kKind<SimpleTranslator>,  VIRTUAL_BASS_BLEND_LINEAR_GAIN,                      VBBG},
    {kKind<SimpleTranslator>,  VIRTUAL_BASS_COMPRESSOR_TUNING,                      VBCT},
    {kKind<SimpleTranslator>,  VIRTUAL_BASS_HARMGAINS,                              VBHM},
    {kKind<SimpleTranslator>,  VIRTUAL_BASS_HYBGAINS,                               VBHB},
    {kKind<SimpleTranslator>,  VIRTUAL_BASS_MIX_FREQUENCY,                          VBMX},
    {kKind<SimpleTranslator>,  VIRTUAL_BASS_ROLLOFF_GAIN,                           VBRG},
    {kKind<SimpleTranslator>,  VOLMAX_BOOST,                                        VMB},
    {kKind<SimpleTranslator>,  VOLUME_LEVELER_AMOUNT,                               DVLA},
    {kKind<SimpleTranslator>,  VOLUME_LEVELER_COMPRESSOR_ENABLE,                    DVLC},
    {kKind<SimpleTranslator>,  VOLUME_LEVELER_ENABLE,                               DVLE},
    {kKind<SimpleTranslator>,  VOLUME_LEVELER_IN_TARGET,                            DVLI},
    {kKind<SimpleTranslator>,  VOLUME_LEVELER_OUT_TARGET,                           DVLO},
    {kKind<SimpleTranslator>,  VOLUME_MODELER_ENABLE,                               DVME},
    {kKind<SimpleTranslator>,  VOLUME_MODELER_CALIBRATION,                          DVMC},
    {kKind<OutputModeTranslator>},                                               // DOM
    {kKind<SimpleTranslator>,  HEIGHT_FILTER_MODE,                                  DHFM},
    {kKind<SimpleTranslator>,  VIRTUALIZER_FRONT_SPEAKER_ANGLE,                     DFSA},
    {kKind<SimpleTranslator>,  VIRTUALIZER_SURROUND_SPEAKER_ANGLE,                  DSA},
    {kKind<SimpleTranslator>,  VIRTUALIZER_HEIGHT_SPEAKER_ANGLE,                    DHSA},
    {kKind<SimpleTranslator>,  VIRTUALIZER_REAR_SURROUND_SPEAKER_ANGLE,             DRSA},
    {kKind<SimpleTranslator>,  VIRTUALIZER_REAR_HEIGHT_SPEAKER_ANGLE,               DRHA},
    {kKind<SimpleTranslator>,  VIRTUALIZER_START_BAND,                              SVSB},
    {kKind<SimpleTranslator>,  HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE,       VSSD},
    {kKind<SimpleTranslator>,  COMPLEX_EQUALIZER_ENABLE,                            CEON},
    {kKind<ComplexEqualizerTranslator>},                                         // CEQT
    {kKind<SimpleTranslator>,  PEAK_VALUE,                                          DPLP},
    {kKind<CustomDRCTranslator>},                                                // DRCM
    {kKind<SimpleTranslator>,  HEARING_PROTECTION_ENABLE,                           HPON},
    {kKind<SimpleTranslator>,  HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN,       HPTW},
    {kKind<SimpleTranslator>,  HEARING_PROTECTION_RMS_ATTENUATION_TARGET,           HPAT},
    {kKind<SimpleTranslator>,  HEARING_PROTECTION_ATTENUATION_ATTACK_TIME,          HPAA},
    {kKind<SimpleTranslator>,  HEARING_PROTECTION_ATTENUATION_RELEASE_TIME,         HPAR},
    {kKind<SimpleTranslator>,  BASS_MBDRC_ENABLE,                                   BMDE},
    {kKind<BassMbdrcTranslator>},                                                // BMDT
    {kKind<SimpleTranslator>,  REVERB_SUPPRESSION_AMOUNT,                           RVSA},
    {kKind<SimpleTranslator>,  REVERB_SUPPRESSION_ENABLE,                           RVSE},
    {kKind<SimpleTranslator>,  HEADPHONE_VIRTUALIZER_MODE,                          HVM},
    {kKind<SimpleTranslator>,  ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG,     HVRC},
    {kKind<SimpleTranslator>,  ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE,             HLRA},
    {kKind<SimpleTranslator>,  SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT, SDFA},
    {kKind<SimpleTranslator>,  SPEAKER_VIRTUALIZER_MODE,                            SVM},
    {kKind<SimpleTranslator>,  ADVANCED_SPEAKER_VIRTUALIZER_START_BIN,              AVSB},
    {kKind<SimpleTranslator>,  ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG,       SVRC},
};
// clang-format on
constexpr size_t kTranslatorCount = std::size(kTranslatorRows);
static_assert(kTranslatorCount <= kParameterCount, "a parameter has one translator at most");
static_assert(kTranslatorRows[78].dst == SVRC,
              "effects get the first 79 entries in this order: add rows behind them");

using Translators = TranslatorClasses::Block<Translator, kTranslatorCount>;

/** The first row of each parameter as a source; kParameterCount if there is none. */
constexpr auto kPlaces = [] {
    std::array<uint8_t, kParameterCount> places{};
    for (uint8_t& place : places) {
        place = kParameterCount;
    }
    for (uint8_t row = kTranslatorCount; row-- > 0;) {
        TranslatorClasses::forEachClass([&](auto* of) {
            using Class = std::remove_pointer_t<decltype(of)>;
            if (kTranslatorRows[row].kind != kKind<Class>) {
                return;
            }
            if constexpr (std::is_same_v<Class, SimpleTranslator>) {
                places[kTranslatorRows[row].src] = row;
            } else {
                for (const Parameter param : Class::kSrcParams) {
                    places[static_cast<size_t>(param)] = row;
                }
            }
        });
    }
    return places;
}();

/** Built on first use, which may be before this file's static initialisation. */
const Translators& translators() {
    static NeverDestroyed<Translators> translators(kTranslatorRows);
    return *translators;
}

}  // namespace

const std::set<Translator*>& TranslatorCollection::kAllTranslators = translators().pointers();

size_t TranslatorCollection::findPlace(Parameter param) const {
    const auto index = static_cast<size_t>(param);
    return index < kParameterCount ? kPlaces[index] : kParameterCount;
}

Translator* TranslatorCollection::getTranslator(Parameter param) const {
    const size_t place = findPlace(param);
    return place < kParameterCount ? &at(place) : nullptr;
}

Translator& TranslatorCollection::at(size_t place) const {
    return *translators().at(place);
}

EntryLayout TranslatorCollection::getLayout(KivParameter destination) const {
    if (const EntryLayout* const layout = findEntryLayout(destination)) {
        return *layout;
    }
    for (const TranslatorRow& row : kTranslatorRows) {
        if (row.kind == kKind<SimpleTranslator> && row.dst == destination) {
            return {destination, EntryHead::NONE, {}, {Parameter{row.src}}, {}};
        }
    }
    return {destination, EntryHead::NONE, {}, {}, {}};
}

}  // namespace ormel
