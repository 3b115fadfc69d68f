// A tuning of a tuning document.
#pragma once

#include <ormel/ParameterValues.h>

#include <map>

namespace ormel {

/** A named set of device-specific processing parameters for one endpoint. */
class Tuning : public ParameterValues {
  public:
    static const std::set<Parameter>& kValidParams;

    /** Endpoints by text name. */
    static const std::map<std::string, Endpoint>& kEndpNameToEndpoint;

    /** A tuning from a document: read-only. */
    Tuning(std::string name, Endpoint endpoint, bool mono);

    /** Restores a stored tuning; starts clean. */
    Tuning(long id, std::string name, Endpoint endpoint, bool mono, bool readonly);

    int64_t getId() const override { return mId; }
    const std::set<Parameter>& getValidParams() const override;

    std::string getName() const { return mName; }
    Endpoint getEndpoint() const { return mEndpoint; }

    /**
     * Sets the endpoint by its text name; ignores an unknown name. Does not mark the tuning dirty.
     */
    void setEndpoint(const std::string& name);

    bool isMono() const { return mMono; }

    /** Does not mark the tuning dirty. */
    void setMono(bool mono) { mMono = mono; }

    bool isReadonly() const { return mReadonly; }

    /**
     * One "name=value" line per field, then every valid parameter. Parameters never set get an
     * empty list, which stays. An endpoint out of range has no name.
     */
    std::string toString();

  private:
    std::string mName;
    Endpoint mEndpoint;
    bool mMono;
    bool mReadonly;
};

}  // namespace ormel
