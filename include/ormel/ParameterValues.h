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
 * Has no lock: one thread builds an object, and callers that share it serialise their access. No
 * operation fails or logs.
 */
class ParameterValues {
  public:
    /** The stored object's id; -1 if made without one. */
    virtual int64_t getId() const = 0;

    /** Whether the object is new, or changed since it was restored or marked clean. */
    virtual bool isDirty() const;
    virtual void setDirty(bool dirty);

    virtual ~ParameterValues() = default;

    /** The parameters that this class of object accepts. */
    virtual const std::set<Parameter>& getValidParams() const = 0;

    /**
     * Replaces the list of @p param and marks the object dirty. Accepts any parameter and any list:
     * the caller checks getValidParams().
     */
    void set(Parameter param, std::vector<int> values);

    /** Number of values passed to set() so far, including replaced ones. */
    size_t getSetCount() const { return mSetCount; }

    /**
     * One line per parameter in ascending order: "name=", then each value followed by a comma.
     * Omits IEQ_ID.
     */
    std::string valuesToString() const;

    /**
     * The lists by parameter. Lists may be empty: readers look up by subscript, which adds an empty
     * list for an absent parameter.
     */
    std::map<Parameter, std::vector<int>>& getValues() { return mValues; }
    const std::map<Parameter, std::vector<int>>& getValues() const { return mValues; }

  protected:
    ParameterValues(int64_t id, bool dirty) : mId(id), mDirty(dirty) {}
    ParameterValues(const ParameterValues&) = default;
    ParameterValues(ParameterValues&&) = default;
    ParameterValues& operator=(const ParameterValues&) = default;
    ParameterValues& operator=(ParameterValues&&) = default;

    /** Adds an empty list for every valid parameter that has none. */
    void fillAbsentParams();

    int64_t mId;
    bool mDirty;
    std::map<Parameter, std::vector<int>> mValues;

  private:
    size_t mSetCount = 0;
};

/** The first value; 0 if there is none. */
inline int firstOr0(const std::vector<int>& values) {
    return values.empty() ? 0 : values.front();
}

}  // namespace ormel
