// Runs both list readers on the same bytes: all fields and results must be equal.
#include <kivparamstorage/EffectParamParser.h>
#include <ormel/KivEffect.h>
#include <ormel/KivParameter.h>
#include <ormel/SetParamCommand.h>
#include <ormel/SpatializerParamParser.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "Fuzz.h"

namespace ormel::fuzz {

namespace {

/** Negative counts can make a short list take 2^31 steps. This many are enough. */
constexpr int32_t kMaxEntries = 64;

void requireEqual(const SpatializerParamParser& ours, const EffectParamParser& theirs) {
    require(ours.mOffset == theirs.mOffset && ours.mProfileId == theirs.mProfileId &&
            ours.mParamCount == theirs.mParamCount && ours.mParamIndex == theirs.mParamIndex &&
            ours.mDeviceId == theirs.mDeviceId && ours.mParamCode == theirs.mParamCode &&
            ours.mValueCount == theirs.mValueCount && ours.mValues == theirs.mValues);
}

/** A copy of the bytes as words, so that sanitizers detect reads beyond them. */
std::vector<int32_t> toWords(const std::string& bytes) {
    std::vector<int32_t> words(bytes.size() / 4 + (bytes.size() % 4 == 0 ? 0 : 1));
    if (!words.empty()) {
        std::memcpy(words.data(), bytes.data(), bytes.size());
    }
    if (words.size() > 1) {
        words[1] = std::min(words[1], kMaxEntries);
    }
    return words;
}

void readList(std::vector<int32_t>& words, int size, IEffectOrm& effect) {
    SpatializerParamParser ours(words.data(), size);
    EffectParamParser theirs(words.data(), size);
    require(ours.validate() == theirs.validate());
    requireEqual(ours, theirs);
    require(ours.begin() == theirs.begin());
    for (bool found = true; found;) {
        found = ours.next();
        require(found == theirs.next());
        requireEqual(ours, theirs);
        if (found) {
            effect.setEffectParam(ours.mDeviceId, ours.mParamCode, ours.mValues, ours.mValueCount);
        }
    }
}

/** The code of a name must be its lower-case letters read as a number, if it is short enough. */
void requireCode(const std::string& name) {
    int32_t code = 0;
    for (size_t i = 0; name.size() <= 4 && i < name.size(); ++i) {
        const char letter =
                name[i] >= 'A' && name[i] <= 'Z' ? static_cast<char>(name[i] + 32) : name[i];
        std::memcpy(reinterpret_cast<char*>(&code) + i, &letter, 1);
    }
    require(kivCodeOfName(name) == code);
}

/** Sends the bytes to the shared store: unchanged, and then as entries that a command adds. */
void sendToStore(const std::vector<int32_t>& words, size_t size) {
    constexpr size_t kMaxAdded = 8;
    KivEffect shared(0, android::String16());
    require(shared.hasControl() && shared.setEnabled(true) == 0);
    shared.sendSharedStore(words.data(), static_cast<unsigned>(size));
    std::vector<int32_t> list = words;
    require(shared.receive(0, list) == 0 && list == words);

    SetParamCommand command(DEVICE_OUT_DEFAULT);
    const size_t added = std::min(words.size(), kMaxAdded);
    for (size_t i = 0; i < added; ++i) {
        command.setDeviceId(words[i]);
        command.add(static_cast<KivParameter>(words[i]), words[i]);
        command.add(VOL, words);
    }
    require(command.execute(shared) == (added == 0 ? 0 : -EINVAL));
}

}  // namespace

}  // namespace ormel::fuzz

extern "C" int LLVMFuzzerInitialize(int* /* argc */, char*** /* argv */) {
    ormel::fuzz::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace ormel::fuzz;
    Input input(data, size);
    const uint8_t settings = input.byte();
    const std::string bytes = input.rest();
    std::vector<int32_t> words = toWords(bytes);
    requireCode(bytes.substr(0, settings % 8));
    TouchingEffect effect;
    readList(words, static_cast<int>(bytes.size()) - settings % 4, effect);
    // Rarely, because the shared store keeps everything that it gets.
    if (settings >= 0xfc) {
        sendToStore(words, bytes.size());
    }
    return 0;
}
