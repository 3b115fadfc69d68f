// Which translator reacts to which tuning parameters.
#include <ormel/Translator.h>

#include <algorithm>
#include <iterator>
#include <type_traits>
#include <variant>

#include "model/ObjectBlock.h"

namespace ormel {

namespace {

using AnyTranslator =
        std::variant<SimpleTranslator, GeqTranslator, IeqTranslator, ComplexEqualizerTranslator,
                     VirtualBassEnableTranslator, VirtualBassTranslator, BassMbdrcTranslator,
                     DeAmountTranslator, AudioOptimizerTranslator, AudioRegulatorTranslator,
                     OutputModeTranslator, CustomDRCTranslator>;

struct TranslatorRow {
    AnyTranslator (*make)(const TranslatorRow& row);
    /** Source and destination of a simple translator; the other classes have their own. */
    Parameter src = {};
    KivParameter dst = {};
};

template <typename AnyOf>
AnyTranslator make([[maybe_unused]] const TranslatorRow& row) {
    if constexpr (std::is_same_v<AnyOf, SimpleTranslator>) {
        return SimpleTranslator(row.dst, row.src);
    } else {
        return AnyOf();
    }
}

constexpr TranslatorRow kTranslatorRows[] = {
        {make<SimpleTranslator>, GRAPHIC_EQUALIZER_ENABLE, GEON},
        {make<GeqTranslator>},
        {make<SimpleTranslator>, IEQ_ENABLE, IEON},
        {make<SimpleTranslator>, IEQ_AMOUNT, IEA},
        {make<SimpleTranslator>, IEQ_ID, IEID},
        {make<IeqTranslator>},
        {make<SimpleTranslator>, MI_DIALOG_ENHANCER_STEERING_ENABLE, MDEE},
        {make<SimpleTranslator>, MI_DV_LEVELER_STEERING_ENABLE, MDLE},
        {make<SimpleTranslator>, MI_IEQ_STEERING_ENABLE, MIEE},
        {make<SimpleTranslator>, MI_SURROUND_COMPRESSOR_STEERING_ENABLE, MSCE},
        {make<SimpleTranslator>, MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE, MAVE},
        {make<SimpleTranslator>, MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE, MVBE},
        {make<SimpleTranslator>, AUDIO_OPTIMIZER_ENABLE, AOON},
        {make<AudioOptimizerTranslator>},
        {make<SimpleTranslator>, BASS_ENHANCER_ENABLE, BEON},
        {make<SimpleTranslator>, BASS_ENHANCER_BOOST, BEB},
        {make<SimpleTranslator>, BASS_ENHANCER_CUTOFF_FREQUENCY, BECF},
        {make<SimpleTranslator>, BASS_ENHANCER_WIDTH, BEW},
        {make<SimpleTranslator>, CALIBRATION_BOOST, PLB},
        {make<DeAmountTranslator>},
        {make<SimpleTranslator>, DIALOG_ENHANCER_ENABLE, DEON},
        {make<SimpleTranslator>, DIALOG_ENHANCER_DUCKING, DED},
        {make<AudioRegulatorTranslator>},
        {make<SimpleTranslator>, REGULATOR_DISTORTION_SLOPE, ARDS},
        {make<SimpleTranslator>, REGULATOR_ENABLE, ARON},
        {make<SimpleTranslator>, REGULATOR_SPEAKER_DIST_ENABLE, ARDE},
        {make<SimpleTranslator>, REGULATOR_OVERDRIVE, AROD},
        {make<SimpleTranslator>, REGULATOR_TIMBRE_PRESERVATION, ARTP},
        {make<SimpleTranslator>, REGULATOR_SIBILANCE_SUPPRESS_ENABLE, RSSE},
        {make<SimpleTranslator>, SURROUND_DECODER_ENABLE, NGON},
        {make<SimpleTranslator>, SURROUND_BOOST, DSB},
        {make<VirtualBassEnableTranslator>},
        {make<VirtualBassTranslator>},
        {make<SimpleTranslator>, VIRTUAL_BASS_OVERALL_GAIN, VBOG},
        {make<SimpleTranslator>, VIRTUAL_BASS_SLOPE_GAIN, VBSG},
        {make<SimpleTranslator>, VIRTUAL_BASS_SUBGAINS, VBHG},
        {make<SimpleTranslator>, VIRTUAL_BASS_BLEND_LINEAR_GAIN, VBBG},
        {make<SimpleTranslator>, VIRTUAL_BASS_COMPRESSOR_TUNING, VBCT},
        {make<SimpleTranslator>, VIRTUAL_BASS_HARMGAINS, VBHM},
        {make<SimpleTranslator>, VIRTUAL_BASS_HYBGAINS, VBHB},
        {make<SimpleTranslator>, VIRTUAL_BASS_MIX_FREQUENCY, VBMX},
        {make<SimpleTranslator>, VIRTUAL_BASS_ROLLOFF_GAIN, VBRG},
        {make<SimpleTranslator>, VOLMAX_BOOST, VMB},
        {make<SimpleTranslator>, VOLUME_LEVELER_AMOUNT, DVLA},
        {make<SimpleTranslator>, VOLUME_LEVELER_COMPRESSOR_ENABLE, DVLC},
        {make<SimpleTranslator>, VOLUME_LEVELER_ENABLE, DVLE},
        {make<SimpleTranslator>, VOLUME_LEVELER_IN_TARGET, DVLI},
        {make<SimpleTranslator>, VOLUME_LEVELER_OUT_TARGET, DVLO},
        {make<SimpleTranslator>, VOLUME_MODELER_ENABLE, DVME},
        {make<SimpleTranslator>, VOLUME_MODELER_CALIBRATION, DVMC},
        {make<OutputModeTranslator>},
        {make<SimpleTranslator>, HEIGHT_FILTER_MODE, DHFM},
        {make<SimpleTranslator>, VIRTUALIZER_FRONT_SPEAKER_ANGLE, DFSA},
        {make<SimpleTranslator>, VIRTUALIZER_SURROUND_SPEAKER_ANGLE, DSA},
        {make<SimpleTranslator>, VIRTUALIZER_HEIGHT_SPEAKER_ANGLE, DHSA},
        {make<SimpleTranslator>, VIRTUALIZER_REAR_SURROUND_SPEAKER_ANGLE, DRSA},
        {make<SimpleTranslator>, VIRTUALIZER_REAR_HEIGHT_SPEAKER_ANGLE, DRHA},
        {make<SimpleTranslator>, VIRTUALIZER_START_BAND, SVSB},
        {make<SimpleTranslator>, HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, VSSD},
        {make<SimpleTranslator>, COMPLEX_EQUALIZER_ENABLE, CEON},
        {make<ComplexEqualizerTranslator>},
        {make<SimpleTranslator>, PEAK_VALUE, DPLP},
        {make<CustomDRCTranslator>},
        {make<SimpleTranslator>, HEARING_PROTECTION_ENABLE, HPON},
        {make<SimpleTranslator>, HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN, HPTW},
        {make<SimpleTranslator>, HEARING_PROTECTION_RMS_ATTENUATION_TARGET, HPAT},
        {make<SimpleTranslator>, HEARING_PROTECTION_ATTENUATION_ATTACK_TIME, HPAA},
        {make<SimpleTranslator>, HEARING_PROTECTION_ATTENUATION_RELEASE_TIME, HPAR},
        {make<SimpleTranslator>, BASS_MBDRC_ENABLE, BMDE},
        {make<BassMbdrcTranslator>},
        {make<SimpleTranslator>, REVERB_SUPPRESSION_AMOUNT, RVSA},
        {make<SimpleTranslator>, REVERB_SUPPRESSION_ENABLE, RVSE},
        {make<SimpleTranslator>, HEADPHONE_VIRTUALIZER_MODE, HVM},
        {make<SimpleTranslator>, ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG, HVRC},
        {make<SimpleTranslator>, ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE, HLRA},
        {make<SimpleTranslator>, SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT, SDFA},
        {make<SimpleTranslator>, SPEAKER_VIRTUALIZER_MODE, SVM},
        {make<SimpleTranslator>, ADVANCED_SPEAKER_VIRTUALIZER_START_BIN, AVSB},
        {make<SimpleTranslator>, ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG, SVRC},
};
static_assert(std::size(kTranslatorRows) == TranslatorCollection::kTranslatorCount);

const std::set<Translator*>& allTranslators() {
    static const auto& block = *new ObjectBlock<Translator, AnyTranslator>(kTranslatorRows);
    return block.pointers();
}

}  // namespace

const std::set<Translator*>& TranslatorCollection::kAllTranslators = allTranslators();

TranslatorCollection::TranslatorCollection() {
    const std::set<Translator*>& all = allTranslators();
    std::copy(all.begin(), all.end(), mTranslators.begin());
    mPlaces.fill(kTranslatorCount);
    for (size_t place = 0; place < kTranslatorCount; ++place) {
        for (const Parameter param : mTranslators[place]->getSrcParams()) {
            size_t& first = mPlaces[static_cast<size_t>(param)];
            first = std::min(first, place);
        }
    }
}

size_t TranslatorCollection::findPlace(Parameter param) const {
    const auto index = static_cast<size_t>(param);
    return index < kParameterCount ? mPlaces[index] : kTranslatorCount;
}

Translator* TranslatorCollection::getTranslator(Parameter param) const {
    const size_t place = findPlace(param);
    return place < kTranslatorCount ? mTranslators[place] : nullptr;
}

}  // namespace ormel
