// Reads packed parameter lists, for SpatializerParamParser and any class with its fields.
#pragma once

#include <log/log.h>
#include <ormel/SetParamCommand.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ormel {

/** Works on the fields of a @p Parser, which SpatializerParamParser.h describes. */
template <typename Parser>
class PackedListReader {
  public:
    /** @param logTag tag of the messages; not copied; null for no messages */
    PackedListReader(Parser& parser, const char* logTag) : mParser(parser), mLogTag(logTag) {}

    bool begin() {
        mParser.mOffset = 0;
        mParser.mParamCount = 0;
        mParser.mParamIndex = 0;
        if (!readWord(mParser, mParser.mProfileId)) {
            error("%s() failed to extract profile id", "begin");
            return false;
        }
        if (!readWord(mParser, mParser.mParamCount)) {
            error("%s() failed to extract number of parameters", "begin");
            return false;
        }
        return true;
    }

    bool next() { return readNext(mParser); }

    bool validate() {
        if (!begin()) {
            error("%s() EFFECT_PARAM_PROFILE header is incorrect.", "validate");
            return false;
        }
        // A local copy can be kept in registers during the walk.
        Parser walker = mParser;
        while (readNext(walker)) {
        }
        mParser = walker;
        if (mParser.mParamIndex != mParser.mParamCount) {
            error("%s() Expected %d parameters, found %d parameters.", "validate",
                  mParser.mParamCount, mParser.mParamIndex);
            return false;
        }
        return true;
    }

  private:
    static constexpr uint32_t kWordSize = sizeof(int32_t);
    static constexpr uint32_t kEntryHeaderWords = SetParamCommand::kEntryHeaderWords;

    /** Whole words left in the buffer; none before its start. */
    static uint32_t wordsLeft(const Parser& at) {
        const bool inside = at.mOffset >= 0 && at.mOffset < at.mSize;
        return inside ? static_cast<uint32_t>(at.mSize - at.mOffset) / kWordSize : 0;
    }

    static int32_t wordAt(const uint8_t* bytes, size_t index) {
        int32_t word = 0;
        std::memcpy(&word, bytes + index * sizeof(word), sizeof(word));
        return word;
    }

    static bool readWord(Parser& at, int32_t& word) {
        if (wordsLeft(at) < 1) {
            return false;
        }
        word = wordAt(at.mData + at.mOffset, 0);
        at.mOffset += static_cast<int32_t>(kWordSize);
        return true;
    }

    bool readNext(Parser& at) const {
        if (at.mParamIndex >= at.mParamCount) {
            return false;
        }
        ++at.mParamIndex;
        const uint32_t words = wordsLeft(at);
        if (words < kEntryHeaderWords) {
            reportShortHeader(words, at.mParamIndex);
            if (readWord(at, at.mDeviceId)) {
                readWord(at, at.mParamCode);
            }
            return false;
        }
        const uint8_t* const header = at.mData + at.mOffset;
        const int32_t deviceId = wordAt(header, 0);
        const int32_t paramCode = wordAt(header, 1);
        const int32_t count = wordAt(header, 2);
        const int32_t valuesAt = at.mOffset + static_cast<int32_t>(kEntryHeaderWords * kWordSize);
        at.mDeviceId = deviceId;
        at.mParamCode = paramCode;
        at.mValueCount = count;
        at.mOffset = valuesAt;
        // A positive count must fit. A negative one moves the offset, which wraps at 32 bits.
        const bool fits = count <= 0 || static_cast<uint32_t>(count) <= words - kEntryHeaderWords;
        if (!fits || !at.skip(static_cast<int32_t>(static_cast<uint32_t>(count) * kWordSize))) {
            reportShortValues(count, at.mParamIndex);
            return false;
        }
        at.mValues = reinterpret_cast<int32_t*>(at.mData + valuesAt);
        return true;
    }

    // Error paths, kept out of line.

    [[gnu::cold, gnu::noinline]] void reportShortValues(int32_t count, int32_t index) const {
        error("%s() failed to extract %d values for parameter #%d", "next", count, index);
    }

    [[gnu::cold, gnu::noinline]] void reportShortHeader(uint32_t words, int32_t index) const {
        constexpr const char* kFields[kEntryHeaderWords] = {"device id", "parameter id",
                                                            "number of values"};
        error("%s() failed to extract %s for parameter #%d", "next", kFields[words], index);
    }

    /** Logs with the reader's tag. The platform's macros support only one tag per file. */
    template <typename... Args>
    void error(const char* format, Args... args) const {
        if (mLogTag != nullptr) {
            __android_log_print(ANDROID_LOG_ERROR, mLogTag, format, args...);
        }
    }

    Parser& mParser;
    const char* mLogTag;
};

}  // namespace ormel
