// An effect that records its calls.
#pragma once

#include <ormel/IEffectOrm.h>
#include <ormel/KivParameter.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ormel::test {

/** "set", "get" or "commit", with the device, the parameter's name and the values. */
struct Call {
    std::string what;
    int32_t device = 0;
    std::string code;
    std::vector<int32_t> values;
};

inline Call set(int32_t device, std::string code, std::vector<int32_t> values) {
    return {"set", device, std::move(code), std::move(values)};
}

/** The letters of a parameter code. */
inline std::string lettersOf(int32_t code) {
    std::string letters;
    for (auto rest = static_cast<uint32_t>(code); rest != 0; rest >>= 8) {
        letters += static_cast<char>(rest & 0xff);
    }
    return letters;
}

/** Records all calls in order, and answers reads from @ref answers. */
class RecordingEffect : public IEffectOrm {
  public:
    int32_t setEffectParam(int32_t device, int32_t code, const int32_t* values,
                           int32_t count) override {
        calls.push_back(set(device, lettersOf(code), {values, values + std::max(count, 0)}));
        return -5;
    }

    int32_t getEffectParam(int32_t device, int32_t code, int32_t* values, int32_t* count) override {
        calls.push_back({"get", device, lettersOf(code), {*count}});
        const auto& answer = answers[lettersOf(code)];
        std::copy_n(answer.begin(), std::min(answer.size(), static_cast<size_t>(*count)), values);
        *count = static_cast<int32_t>(answer.size());
        return readStatus;
    }

    int32_t commitEffectParams(int32_t device) override {
        calls.push_back({"commit", device, "", {}});
        return commitStatus;
    }

    /** The values of a parameter that were sent for a device, in call order. */
    std::vector<std::vector<int32_t>> valuesOf(int32_t device, const std::string& code) const {
        std::vector<std::vector<int32_t>> found;
        for (const Call& call : calls) {
            if (call.what == "set" && call.device == device && call.code == code) {
                found.push_back(call.values);
            }
        }
        return found;
    }

    std::vector<Call> calls;
    std::map<std::string, std::vector<int32_t>> answers;
    int32_t readStatus = 0;
    int32_t commitStatus = 0;
};

}  // namespace ormel::test
