// The interface that the effect implements.
#pragma once

#include <cstdint>

namespace ormel {

/**
 * The effect, as this library drives it. It is called on the thread of the front operation that
 * needs it, with no lock of this library held, and may call the library from there. It must not
 * throw: the library is built without the tables to unwind by. Parameters are addressed by Android
 * output device (0x40000000 for all) and by code (KivParameter.h).
 *
 * The order of the operations is a binary contract with effects that are built elsewhere.
 */
class IEffectOrm {
  public:
    /**
     * Sets one parameter, to take effect with the next commit.
     *
     * @param values in the effect's own units; valid during the call only
     * @param count  number of values
     * @return a status, which this library does not look at
     */
    virtual int32_t setEffectParam(int32_t device, int32_t code, const int32_t* values,
                                   int32_t count) = 0;

    /** Keeps the place of an operation that this library does not call. */
    virtual int32_t reservedEffectOperation() { return 0; }

    /**
     * Reads the values of one parameter.
     *
     * @param values receives the values
     * @param count  in: room in @p values; out: number of values written. A number that is negative
     *               or beyond the room is taken for a failed read
     * @return 0, or a status
     */
    virtual int32_t getEffectParam(int32_t device, int32_t code, int32_t* values,
                                   int32_t* count) = 0;

    /**
     * Makes what was set take effect.
     *
     * @param device always 0x40000000
     * @return 0, or a status, which the front operation passes on
     */
    virtual int32_t commitEffectParams(int32_t device) = 0;

    virtual ~IEffectOrm() = default;
};

}  // namespace ormel
