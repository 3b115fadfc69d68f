// The packed parameter list, and its reader.
#pragma once

#include <cstdint>

namespace ormel {

/** A read position in a byte buffer, which it does not own and which must outlive it. */
class ParserBuffer {
  public:
    /** @param size size of the buffer in bytes; taken as 0 if @p data is null */
    ParserBuffer(void* data, int size)
        : mData(static_cast<uint8_t*>(data)), mSize(data == nullptr ? 0 : size) {}

    /**
     * Moves by @p n bytes. A negative @p n moves backwards, even to before the start; only a
     * position beyond the end is refused. The arithmetic wraps at 32 bits.
     *
     * @return whether the position moved
     */
    bool skip(int n) {
        const auto end =
                static_cast<int32_t>(static_cast<uint32_t>(mOffset) + static_cast<uint32_t>(n));
        if (end > mSize) {
            return false;
        }
        mOffset = end;
        return true;
    }

    uint8_t* mData;
    /** In bytes. */
    int32_t mSize;
    /** In bytes from the start. */
    int32_t mOffset = 0;
};

/**
 * Reads a packed parameter list, entry by entry.
 *
 * The list is an array of int32 in the machine's byte order: profile id and number of entries; then
 * for each entry the device id (Android output device bits, 0x40000000 for all), the parameter code
 * (KivParameter.h), the number of values, and the values. Words after the last entry are ignored.
 *
 * The buffer must be aligned for int32, because values are read in place.
 *
 * To use: construct; validate(); begin(); then call next() until it returns false, and read the
 * fields after each true. Nothing is allocated, copied or locked; the list must not change
 * meanwhile.
 *
 * Each failure is logged as an error with the tag "OrmSpatializerParamParser". The fields keep what
 * was read before it.
 */
class SpatializerParamParser : public ParserBuffer {
  public:
    using ParserBuffer::ParserBuffer;

    /**
     * Reads the header and moves to the first entry.
     *
     * @return false with "begin() failed to extract profile id" or "begin() failed to extract
     *         number of parameters" if the buffer is too short
     */
    bool begin();

    /**
     * Reads the next entry. A failed one counts in mParamIndex too. A negative value count is
     * accepted, and moves the position as skip() does.
     *
     * @return false after the last entry; false with "next() failed to extract device id for
     *         parameter #N", "... parameter id ...", "... number of values ..." or "... V values
     *         ..." if the buffer is too short
     */
    bool next();

    /**
     * Walks the whole list; call begin() again before reading it.
     *
     * @return false with "validate() EFFECT_PARAM_PROFILE header is incorrect." after the header's
     *         own message, or with "validate() Expected N parameters, found M parameters.". A list
     *         cut short in its last announced entry still passes, after the message of next().
     */
    bool validate();

    int32_t mProfileId = 0;
    int32_t mParamCount = 0;
    /** Number of the current entry, from 1. */
    int32_t mParamIndex = 0;

    int32_t mDeviceId = 0;
    int32_t mParamCode = 0;
    int32_t mValueCount = 0;
    /** Points into the buffer. */
    int32_t* mValues = nullptr;
};

}  // namespace ormel
