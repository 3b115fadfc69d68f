// The interface that the effect implements.
#pragma once

#include <cstdint>

namespace ormel {

/**
 * The effect, as this library drives it.
 *
 * Operations are called on the thread of the front operation, with none of this library's locks
 * held, and may call back into the library. They must not throw: the library is built without
 * unwind tables. A parameter is addressed by Android output device (0x40000000 for all) and by code
 * (KivParameter.h).
 *
 * The order of the operations is a binary contract with effects built elsewhere.
 */
class IEffectOrm {
  public:
    /**
     * Sets one parameter, effective with the next commit.
     *
     * @param values in the effect's own units; valid only during the call
     * @param count  number of values
     * @return a status, which this library ignores
     */
    virtual int32_t setEffectParam(int32_t device, int32_t code, const int32_t* values,
                                   int32_t count) = 0;

    /** Keeps the vtable slot of an operation that this library does not call. */
    virtual int32_t reservedEffectOperation() { return 0; }

    /**
     * Reads the values of one parameter.
     *
     * @param values receives the values
     * @param count  in: capacity of @p values; out: number of values written. A negative count, or
     *               one beyond the capacity, counts as a failed read
     * @return 0 on success, else a status
     */
    virtual int32_t getEffectParam(int32_t device, int32_t code, int32_t* values,
                                   int32_t* count) = 0;

    /**
     * Makes the parameters set so far take effect.
     *
     * @param device always 0x40000000
     * @return 0 or a status; SpatializerParamCache.h says which ones its operations return
     */
    virtual int32_t commitEffectParams(int32_t device) = 0;

    virtual ~IEffectOrm() = default;
};

}  // namespace ormel
