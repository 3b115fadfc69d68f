// The base of every tuning object that carries parameter values.
#pragma once

#include <ormel/Parameter.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ormel {

/**
 * An id, a dirty flag and the value lists of a tuning object, by parameter.
 *
 * Nothing here locks: an object is built by one thread and shared only by callers who serialise
 * their access. No operation fails or logs.
 */
class ParameterValues {
  public:
    /** The stored object's id, -1 for an object that was made without one. */
    virtual int64_t getId() const = 0;

    /** Whether the object is new, or changed since it was restored or last marked clean. */
    virtual bool isDirty() const;
    virtual void setDirty(bool dirty);

    virtual ~ParameterValues() = default;

    /** The parameters that this class of object accepts. */
    virtual const std::set<Parameter>& getValidParams() const = 0;

    /**
     * Replaces the list of @p param and marks the object dirty. Any parameter and any list is
     * taken: keeping to getValidParams() is up to the caller.
     */
    void set(Parameter param, std::vector<int> values);

    /** Number of values that set() was given so far, replaced ones included. */
    size_t getSetCount() const { return mSetCount; }

    /**
     * One line per parameter in ascending order, "name=" and each value followed by a comma.
     * IEQ_ID is left out.
     */
    std::string valuesToString() const;

    /**
     * The lists by parameter. A parameter may have an empty list: readers use the map's inserting
     * lookup, so asking for an absent parameter leaves an empty list behind.
     */
    std::map<Parameter, std::vector<int>>& getValues() { return mValues; }
    const std::map<Parameter, std::vector<int>>& getValues() const { return mValues; }

  protected:
    ParameterValues(int64_t id, bool dirty) : mId(id), mDirty(dirty) {}
    ParameterValues(const ParameterValues&) = default;
    ParameterValues(ParameterValues&&) = default;
    ParameterValues& operator=(const ParameterValues&) = default;
    ParameterValues& operator=(ParameterValues&&) = default;

    /** Gives every valid parameter that has no list an empty one. */
    void fillAbsentParams();

    int64_t mId;
    bool mDirty;
    std::map<Parameter, std::vector<int>> mValues;

  private:
    size_t mSetCount = 0;
};

/** The first of a parameter's values; 0 where a value is needed and there is none. */
inline int firstOr0(const std::vector<int>& values) {
    return values.empty() ? 0 : values.front();
}

}  // namespace ormel
