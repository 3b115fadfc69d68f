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
        if (!readWord(mParser.mProfileId)) {
            error("%s() failed to extract profile id", "begin");
            return false;
        }
        if (!readWord(mParser.mParamCount)) {
            error("%s() failed to extract number of parameters", "begin");
            return false;
        }
        return true;
    }

    bool next() {
        if (mParser.mParamIndex >= mParser.mParamCount) {
            return false;
        }
        const int32_t index = ++mParser.mParamIndex;
        if (!readWord(mParser.mDeviceId)) {
            error("%s() failed to extract device id for parameter #%d", "next", index);
            return false;
        }
        if (!readWord(mParser.mParamCode)) {
            error("%s() failed to extract parameter id for parameter #%d", "next", index);
            return false;
        }
        if (!readWord(mParser.mValueCount)) {
            error("%s() failed to extract number of values for parameter #%d", "next", index);
            return false;
        }
        const int32_t at = mParser.mOffset;
        if (!skipValues(mParser.mValueCount)) {
            error("%s() failed to extract %d values for parameter #%d", "next", mParser.mValueCount,
                  index);
            return false;
        }
        mParser.mValues = reinterpret_cast<int32_t*>(mParser.mData + at);
        return true;
    }

    bool validate() {
        if (!begin()) {
            error("%s() EFFECT_PARAM_PROFILE header is incorrect.", "validate");
            return false;
        }
        while (next()) {
        }
        if (mParser.mParamIndex != mParser.mParamCount) {
            error("%s() Expected %d parameters, found %d parameters.", "validate",
                  mParser.mParamCount, mParser.mParamIndex);
            return false;
        }
        return true;
    }

  private:
    static constexpr int32_t kWordSize = sizeof(int32_t);

    /** What is left of the buffer, in words; none before its start. */
    int32_t wordsLeft() const {
        return mParser.mOffset < 0 ? 0 : (mParser.mSize - mParser.mOffset) / kWordSize;
    }

    bool readWord(int32_t& word) {
        if (wordsLeft() < 1) {
            return false;
        }
        std::memcpy(&word, mParser.mData + mParser.mOffset, sizeof(word));
        mParser.mOffset += kWordSize;
        return true;
    }

    /** A negative count moves backwards, wrapping at 32 bits; a positive one must fit. */
    bool skipValues(int32_t count) {
        if (count > wordsLeft()) {
            return false;
        }
        return mParser.skip(static_cast<int32_t>(static_cast<uint32_t>(count) * kWordSize));
    }

    template <typename... Args>
    void error(const char* format, Args... args) const {
        __android_log_print(ANDROID_LOG_ERROR, mLogTag, format, args...);
    }

    Parser& mParser;
    const char* mLogTag;
};

}  // namespace ormel
