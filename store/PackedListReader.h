// The reading of packed parameter lists, for this library's reader and for any with its fields.
#pragma once

#include <log/log.h>

#include <cstdint>
#include <cstring>

namespace ormel {

/** Works on the fields of a @p Parser, which SpatializerParamParser.h describes. */
template <typename Parser>
class PackedListReader {
  public:
    /** @param logTag tag of the messages; not copied */
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
        // A copy that nobody else can see is walked in registers.
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
    /** Device id, parameter code, value count. */
    static constexpr uint32_t kEntryHeaderWords = 3;

    /** What is left of the buffer, in whole words; none before its start. */
    static uint32_t wordsLeft(const Parser& at) {
        const bool inside = at.mOffset >= 0 && at.mOffset < at.mSize;
        return inside ? static_cast<uint32_t>(at.mSize - at.mOffset) / kWordSize : 0;
    }

    static bool readWord(Parser& at, int32_t& word) {
        if (wordsLeft(at) < 1) {
            return false;
        }
        std::memcpy(&word, at.mData + at.mOffset, sizeof(word));
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
            at = readShortEntry(at);
            return false;
        }
        int32_t header[kEntryHeaderWords];
        std::memcpy(header, at.mData + at.mOffset, sizeof(header));
        const auto [deviceId, paramCode, count] = header;
        const int32_t valuesAt = at.mOffset + static_cast<int32_t>(sizeof(header));
        at.mDeviceId = deviceId;
        at.mParamCode = paramCode;
        at.mValueCount = count;
        at.mOffset = valuesAt;
        // A positive count must fit; a negative one moves backwards, wrapping at 32 bits.
        const bool fits = count <= 0 || static_cast<uint32_t>(count) <= words - kEntryHeaderWords;
        if (!fits || !at.skip(static_cast<int32_t>(static_cast<uint32_t>(count) * kWordSize))) {
            sayShortValues(count, at.mParamIndex);
            return false;
        }
        at.mValues = reinterpret_cast<int32_t*>(at.mData + valuesAt);
        return true;
    }

    // What follows is for broken lists, and out of the way of the others.

    [[gnu::cold, gnu::noinline]] void sayShortValues(int32_t count, int32_t index) const {
        error("%s() failed to extract %d values for parameter #%d", "next", count, index);
    }

    /** Reads as much of an entry's header as there is. */
    [[gnu::cold, gnu::noinline]] Parser readShortEntry(Parser at) const {
        if (!readWord(at, at.mDeviceId)) {
            error("%s() failed to extract device id for parameter #%d", "next", at.mParamIndex);
        } else if (!readWord(at, at.mParamCode)) {
            error("%s() failed to extract parameter id for parameter #%d", "next", at.mParamIndex);
        } else {
            error("%s() failed to extract number of values for parameter #%d", "next",
                  at.mParamIndex);
        }
        return at;
    }

    /** The tag is the reader's, so the platform's macros, which know one tag a file, will not do. */
    template <typename... Args>
    void error(const char* format, Args... args) const {
        __android_log_print(ANDROID_LOG_ERROR, mLogTag, format, args...);
    }

    Parser& mParser;
    const char* mLogTag;
};

}  // namespace ormel
