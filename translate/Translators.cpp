#include <ormel/EntryLayout.h>
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

/** Call before reading any list: reading adds empty lists to the source. */
bool hasChannelLists(int channels) {
    return channels == kStereoChannels || channels == kQuadChannels;
}

template <KivParameter kDestination>
constexpr const EntryLayout& kLayout = *findEntryLayout(kDestination);

/** Adds an entry of @p first, @p head, and one list per channel. */
void addByChannel(SetParamCommand& cmd, const EntryLayout& layout, int channels, int first,
                  const Values& head, ValueMap& from) {
    const ParameterList& lists = layout.channelLists;
    if (channels == kQuadChannels) {
        cmd.add(layout.destination, first,
                {&head, &from[lists[0]], &from[lists[1]], &from[lists[2]], &from[lists[3]]});
    } else if (channels == kStereoChannels) {
        cmd.add(layout.destination, first, {&head, &from[lists[0]], &from[lists[1]]});
    }
}

/** The same with the numbers of channels and bands first, if the layout's switch is on. */
void addIfEnabled(SetParamCommand& cmd, const EntryLayout& layout, int channels, ValueMap& from) {
    if (firstOr0(from[layout.enable[0]]) == 1 && hasChannelLists(channels)) {
        addByChannel(cmd, layout, channels, channels, sizeOf(from[layout.channelLists[0]]), from);
    }
}

/** Adds an entry of the number of bands, then two or four lists of bands. */
void addBands(SetParamCommand& cmd, const EntryLayout& layout, ValueMap& from) {
    const ParameterList& lists = layout.lists;
    const Values& first = from[lists[0]];
    const auto count = static_cast<int>(first.size());
    if (lists.size() == 2) {
        cmd.add(layout.destination, count, {&first, &from[lists[1]]});
    } else {
        cmd.add(layout.destination, count,
                {&first, &from[lists[1]], &from[lists[2]], &from[lists[3]]});
    }
}

void addPair(SetParamCommand& cmd, const EntryLayout& layout, ValueMap& from) {
    cmd.add(layout.destination, {&from[layout.lists[0]], &from[layout.lists[1]]});
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
    addBands(cmd, kLayout<GEBS>, values.getValues());
}

void IeqTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                 Endpoint /* endpoint */, bool /* mono */) {
    addBands(cmd, kLayout<IEBS>, values.getValues());
}

void ComplexEqualizerTranslator::kivTranslate(SetParamCommand& cmd, ParameterValues& values,
                                              Endpoint /* endpoint */, bool /* mono */) {
    auto& from = values.getValues();
    addIfEnabled(cmd, kLayout<CEQT>, firstOr0(from[OUTPUT_CHANNELS]), from);
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
    addPair(cmd, kLayout<VBSF>, from);
    addPair(cmd, kLayout<VBMF>, from);
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
    const EntryLayout& layout = kLayout<AOBS>;
    const Values& frequencies = from[layout.lists[0]];
    const int channels = firstOr0(from[OUTPUT_CHANNELS]);
    // Unlike the other entries by channel, this one has the band count before the channel count.
    Values head = {channels};
    head.insert(head.end(), frequencies.begin(), frequencies.end());
    addByChannel(cmd, layout, channels, static_cast<int>(frequencies.size()), head, from);
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
    addBands(cmd, kLayout<ARBS>, from);
    addIfEnabled(cmd, kLayout<RSSA>, channels, from);
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
