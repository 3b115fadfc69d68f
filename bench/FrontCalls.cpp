#include "FrontCalls.h"

#include <kivparamstorage/KivParamStore.h>
#include <ormel/KivParameter.h>
#include <ormel/SpatializerParamArray.h>
#include <ormel/SpatializerParamCache.h>

#include <memory>

namespace ormel::bench {

namespace {

constexpr OrmSpatializerProfileId kProfile = ORM_SPATIALIZER_PROFILE_MOVIE;
constexpr int32_t kCommit = -1;
constexpr size_t kCallHeaderWords = 3;

using List = std::vector<int32_t>;

/** Records the calls that a floor repeats. */
class RecordingEffect : public KeepingEffect {
  public:
    int32_t setEffectParam(int32_t device, int32_t code, const int32_t* values,
                           int32_t count) override {
        words.insert(words.end(), {device, code, count});
        words.insert(words.end(), values, values + count);
        return KeepingEffect::setEffectParam(device, code, values, count);
    }

    int32_t commitEffectParams(int32_t device) override {
        words.insert(words.end(), {device, 0, kCommit});
        return KeepingEffect::commitEffectParams(device);
    }

    List words;
};

/** Calls @p run as often as needed for one measured time. */
double secondsOfRuns(const std::function<void()>& run) {
    return secondsOf([&] {
        for (int i = 0; i < kNullEffectRuns; ++i) {
            run();
        }
    });
}

SpatializerParamArray& array() {
    return SpatializerParamArray::getInstance();
}

List builtInList(OrmSpatializerProfileId profile) {
    List list(array().getProfileParamsSize(profile) / sizeof(int32_t));
    array().getProfileParams(profile, list.data());
    return list;
}

std::vector<List> selectedTunings() {
    std::vector<List> lists;
    lists.reserve(kSupportedPorts.size());
    for (const Port port : kSupportedPorts) {
        lists.push_back(array().getXMLTuningParams(array().getSelectedTuningDevice(port)));
    }
    return lists;
}

/** The codes in a list for which the front asks the shared store. */
List questionsOn(const List& list) {
    List codes;
    for (size_t at = 2; at < list.size();
         at += kCallHeaderWords + static_cast<size_t>(list[at + 2])) {
        const int32_t code = list[at + 1];
        const bool isSpeakerDom = code == kivCode(DOM) && list[at] == DEVICE_OUT_SPEAKER;
        if (code != kivCode(VBON) && code != kivCode(GEBS) && !isSpeakerDom) {
            codes.push_back(code);
        }
    }
    return codes;
}

/** @param lists the lists that the operation reads */
FrontCall makeFrontCall(std::string name, const std::vector<List>& lists, List questions,
                        std::function<void(IEffectOrm*)> run) {
    int32_t entries = 0;
    for (const List& list : lists) {
        entries += list.at(1);
    }
    RecordingEffect effect;
    run(&effect);
    check(effect.calls > 20, "calls of a front operation");
    return {std::move(name), std::move(run), entries, std::move(questions), effect.words};
}

void checkSameCalls(const FrontCall& call) {
    KeepingEffect told;
    call.run(&told);
    KeepingEffect repeated;
    repeatCalls(call, &repeated);
    check(told.calls == repeated.calls, "number of calls");
    check(told.values() == repeated.values(), "words");
}

}  // namespace

std::vector<FrontCall> makeFrontCalls() {
    const List profile = array().getXMLProfileParams(kProfile);
    const List common = builtInList(ORM_SPATIALIZER_PROFILE_COMMON);
    const List builtIn = builtInList(kProfile);
    const std::string device = array().getSelectedTuningDevice(PORT_INTERNAL_SPEAKER);
    using Cache = SpatializerParamCache;
    return {
            makeFrontCall("setProfile", {profile}, {},
                          [](IEffectOrm* effect) { Cache().setProfile(kProfile, effect, false); }),
            makeFrontCall("setProfile, maker's own content", {profile, common, builtIn},
                          questionsOn(profile),
                          [](IEffectOrm* effect) { Cache().setProfile(kProfile, effect, true); }),
            makeFrontCall(
                    "setOrmelContentProfile", {builtIn}, {},
                    [](IEffectOrm* effect) { Cache().setOrmelContentProfile(kProfile, effect); }),
            makeFrontCall("loadTuning", selectedTunings(), {},
                          [](IEffectOrm* effect) { Cache().loadTuning(effect); }),
            makeFrontCall(
                    "loadTuningDevice", {array().getXMLTuningParams(device)}, {},
                    [device](IEffectOrm* effect) { Cache().loadTuningDevice(device, effect); }),
    };
}

void repeatCalls(const FrontCall& call, IEffectOrm* effect) {
    for (const int32_t code : call.questions) {
        benchmark::DoNotOptimize(KivParamStore::getInstance().isDeviceProcParamInProfile(code));
    }
    const List& words = call.calls;
    for (const int32_t* word = words.data(); word != words.data() + words.size();) {
        const int32_t count = word[2];
        if (count == kCommit) {
            effect->commitEffectParams(word[0]);
            word += kCallHeaderWords;
        } else {
            effect->setEffectParam(word[0], word[1], word + kCallHeaderWords, count);
            word += kCallHeaderWords + static_cast<size_t>(count);
        }
    }
}

Comparison compareOnKeepingEffect(const FrontCall& call) {
    checkSameCalls(call);
    return {call.name + ", kept",
            [&call, effect = std::make_shared<KeepingEffect>()] {
                return secondsOf([&] { call.run(effect.get()); });
            },
            [&call, effect = std::make_shared<KeepingEffect>()] {
                return secondsOf([&] { repeatCalls(call, effect.get()); });
            }};
}

Comparison compareOnNullEffect(const FrontCall& call) {
    checkSameCalls(call);
    const auto effect = std::make_shared<NullEffect>();
    return {call.name + ", bare",
            [&call, effect] { return secondsOfRuns([&] { call.run(effect.get()); }); },
            [&call, effect] { return secondsOfRuns([&] { repeatCalls(call, effect.get()); }); }};
}

}  // namespace ormel::bench
