#include <ormel/Translator.h>

namespace ormel {

namespace {

using Values = std::vector<int>;
using ValueMap = std::map<Parameter, Values>;

constexpr int kStereoChannels = 2;
constexpr int kQuadChannels = 4;
constexpr int kMaxDialogEnhancerAmount = 12;

Values sizeOf(const Values& values) {
    return {static_cast<int>(values.size())};
}

/** The parameters that hold a list per channel, in the order in which the effect takes them. */
struct ChannelParams {
    Parameter left;
    Parameter right;
    Parameter leftSurround;
    Parameter rightSurround;
};

/** Asked before any list is read, since reading leaves empty lists in the source. */
bool hasChannelLists(int channels) {
    return channels == kStereoChannels || channels == kQuadChannels;
}

/** An entry of @p first, @p head and as many channels' lists as there are channels. */
void addByChannel(SetParamCommand& cmd, KivParameter param, int channels, int first,
                  const Values& head, ValueMap& from, const ChannelParams& lists) {
    if (channels == kQuadChannels) {
        cmd.add(param, first,
                {&head, &from[lists.left], &from[lists.right], &from[lists.leftSurround],
                 &from[lists.rightSurround]});
    } else if (channels == kStereoChannels) {
        cmd.add(param, first, {&head, &from[lists.left], &from[lists.right]});
    }
}

void addBands(SetParamCommand& cmd, KivParameter param, const Values& frequencies,
              const Values& levels) {
    cmd.add(param, static_cast<int>(frequencies.size()), {&frequencies, &levels});
}

}  // namespace

SimpleTranslator::SimpleTranslator(KivParameter dst, Parameter src) : mDst(dst), mSrc(src) {}

const std::vector<Parameter>& SimpleTranslator::getSrcParams() {
    if (mSrcParams.empty()) {
        mSrcParams.push_back(mSrc);
    }
    return mSrcParams;
}

const std::vector<Parameter>& SpecialTranslator::getSrcParams() {
    if (mSrcParams.empty()) {
        mSrcParams.assign(mFirst, mFirst + mCount);
    }
    return mSrcParams;
}

void SimpleTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                    Endpoint /* endpoint */, bool /* mono */) {
    cmd.add(mDst, {&values.getValues()[mSrc]});
}

void GeqTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                 Endpoint /* endpoint */, bool /* mono */) {
    auto& from = values.getValues();
    addBands(cmd, GEBS, from[GEQ_FREQUENCY], from[GEQ_GAIN]);
}

void IeqTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                 Endpoint /* endpoint */, bool /* mono */) {
    auto& from = values.getValues();
    addBands(cmd, IEBS, from[IEQ_FREQUENCY], from[IEQ_TARGET]);
}

void ComplexEqualizerTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                              Endpoint /* endpoint */, bool /* mono */) {
    auto& from = values.getValues();
    const int enable = firstOr0(from[COMPLEX_EQUALIZER_ENABLE]);
    const int channels = firstOr0(from[OUTPUT_CHANNELS]);
    if (enable == 1 && hasChannelLists(channels)) {
        addByChannel(
                cmd, CEQT, channels, channels, sizeOf(from[COMPLEX_EQUALIZER_TUNING_LEFT]), from,
                {COMPLEX_EQUALIZER_TUNING_LEFT, COMPLEX_EQUALIZER_TUNING_RIGHT,
                 COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND, COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND});
    }
}

void VirtualBassEnableTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                               Endpoint /* endpoint */, bool /* mono */) {
    auto& from = values.getValues();
    if (firstOr0(from[VIRTUAL_BASS_ENABLE]) != 0) {
        cmd.add(VBM, from[VIRTUAL_BASS_MODE]);
    } else {
        cmd.add(VBM, 0);
    }
    cmd.add(VBON, from[VIRTUAL_BASS_TYPE]);
}

void VirtualBassTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                         Endpoint /* endpoint */, bool /* mono */) {
    auto& from = values.getValues();
    cmd.add(VBSF, {&from[VIRTUAL_BASS_SRC_FREQ_LOW], &from[VIRTUAL_BASS_SRC_FREQ_HIGH]});
    cmd.add(VBMF, {&from[VIRTUAL_BASS_MIX_FREQ_LOW], &from[VIRTUAL_BASS_MIX_FREQ_HIGH]});
}

void BassMbdrcTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                       Endpoint /* endpoint */, bool /* mono */) {
    auto& from = values.getValues();
    if (firstOr0(from[BASS_MBDRC_ENABLE]) != 0) {
        cmd.add(BMDT, from[BASS_MBDRC_TUNING]);
    }
}

void DeAmountTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                      Endpoint /* endpoint */, bool /* mono */) {
    Values amount = values.getValues()[DIALOG_ENHANCER_AMOUNT];
    if (firstOr0(amount) > kMaxDialogEnhancerAmount) {
        amount.front() = kMaxDialogEnhancerAmount;
    }
    cmd.add(DEA, amount);
}

void AudioOptimizerTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                            Endpoint /* endpoint */, bool /* mono */) {
    auto& from = values.getValues();
    const Values& frequencies = from[AUDIO_OPTIMIZER_FREQUENCY];
    const int channels = firstOr0(from[OUTPUT_CHANNELS]);
    // Unlike the other entries by channel, this one counts its bands before its channels.
    Values head = {channels};
    head.insert(head.end(), frequencies.begin(), frequencies.end());
    addByChannel(cmd, AOBS, channels, static_cast<int>(frequencies.size()), head, from,
                 {AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_R, AUDIO_OPTIMIZER_GAIN_LS,
                  AUDIO_OPTIMIZER_GAIN_RS});
}

void AudioRegulatorTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                            Endpoint /* endpoint */, bool /* mono */) {
    auto& from = values.getValues();
    const Values& outputChannels = from[OUTPUT_CHANNELS];
    Values& stressAmount = from[REGULATOR_STRESS_AMOUNT];
    const int channels = firstOr0(outputChannels);
    if (channels <= kStereoChannels) {
        stressAmount.resize(kStereoChannels);
    }
    cmd.add(ARSA, {&outputChannels, &stressAmount});

    const Values& frequencies = from[REGULATOR_FREQUENCY];
    cmd.add(ARBS, static_cast<int>(frequencies.size()),
            {&frequencies, &from[REGULATOR_THRESHOLD_LOW], &from[REGULATOR_THRESHOLD_HIGH],
             &from[REGULATOR_ISOLATED_BAND]});

    const bool suppress = firstOr0(from[REGULATOR_SIBILANCE_SUPPRESS_ENABLE]) == 1;
    if (suppress && hasChannelLists(channels)) {
        addByChannel(cmd, RSSA, channels, channels,
                     sizeOf(from[REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT]), from,
                     {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT,
                      REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT,
                      REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND,
                      REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND});
    }
}

void OutputModeTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                        Endpoint endpoint, bool mono) {
    if (values.getValidParams().count(VIRTUALIZER_ENABLE) == 0) {
        return;
    }
    auto& from = values.getValues();
    Values& enable = from[VIRTUALIZER_ENABLE];
    Values& orientation = from[ORIENTATION];
    const Values endpointNumber = {endpoint};
    if (endpoint != ENDPOINT_SPEAKER) {
        cmd.add(DOM, {&enable, &endpointNumber, &orientation});
        return;
    }
    if (mono) {
        enable = {0};
        orientation = {1};
    }
    cmd.add(DOM, {&enable, &endpointNumber, &orientation, &from[OUTPUT_MIX_MATRIX]});
}

void CustomDRCTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                       Endpoint /* endpoint */, bool /* mono */) {
    cmd.add(DRCM, values.getValues()[CUSTOM_DRC_METADATA]);
}

}  // namespace ormel
