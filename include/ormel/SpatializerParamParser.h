// The packed parameter list, and its reader.
#pragma once

#include <cstdint>

namespace ormel {

/** A position in a buffer of bytes. The buffer is not owned and must outlive the position. */
class ParserBuffer {
  public:
    /** @param size size of the buffer in bytes; 0 is taken when @p data is null */
    ParserBuffer(void* data, int size)
        : mData(static_cast<uint8_t*>(data)), mSize(data == nullptr ? 0 : size) {}

    /**
     * Moves by @p n bytes, backwards too, and even to before the start: only an end beyond the
     * buffer's is refused. The arithmetic wraps at 32 bits.
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
 * The list is an array of int32 in the machine's byte order: profile id and number of entries, then
 * per entry the device id (Android output device bits, 0x40000000 for all), the parameter code
 * (KivParameter.h), the number of values, and the values. Words behind the last entry are ignored.
 *
 * The buffer must be aligned for int32, as the values are read in place.
 *
 * To use: construct; validate(); begin(); then next() until it is false, reading the fields after
 * each true. Nothing is allocated, copied or locked; the list must not change meanwhile.
 *
 * Each failure is said as an error with the tag "OrmSpatializerParamParser", and leaves the fields
 * as far as they were read.
 */
class SpatializerParamParser : public ParserBuffer {
  public:
    using ParserBuffer::ParserBuffer;

    /**
     * Reads the header and goes to the first entry.
     *
     * @return false with "begin() failed to extract profile id" or "begin() failed to extract
     * number of parameters" when the buffer is too short
     */
    bool begin();

    /**
     * Reads the next entry. A failed one counts in mParamIndex like any other.
     *
     * A negative value count is taken as it stands and moves the position as skip() does.
     *
     * @return false after the last entry; false with "next() failed to extract device id for
     *         parameter #N", "... parameter id ...", "... number of values ..." or "... V values
     * ..." when the buffer is too short
     */
    bool next();

    /**
     * Walks the whole list; begin() again before reading it.
     *
     * @return false with "validate() EFFECT_PARAM_PROFILE header is incorrect." after the header's
     *         own message, or with "validate() Expected N parameters, found M parameters.". A list
     *         that is cut short in its last announced entry still passes, next() having said so.
     */
    bool validate();

    int32_t mProfileId = 0;
    int32_t mParamCount = 0;
    /** Number of the current entry, from 1. */
    int32_t mParamIndex = 0;

    int32_t mDeviceId = 0;
    int32_t mParamCode = 0;
    int32_t mValueCount = 0;
    /** The values, inside the buffer. */
    int32_t* mValues = nullptr;
};

}  // namespace ormel
