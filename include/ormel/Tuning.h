// A tuning of a tuning document.
#pragma once

#include <ormel/ParameterValues.h>

#include <map>

namespace ormel {

/** A named set of processing parameters for the hardware behind one endpoint. */
class Tuning : public ParameterValues {
  public:
    static const std::set<Parameter>& kValidParams;

    /** Endpoints by text name. */
    static const std::map<std::string, Endpoint>& kEndpNameToEndpoint;

    /** A tuning as a document gives it: read-only. */
    Tuning(std::string name, Endpoint endpoint, bool mono);

    /** Restores a stored tuning, which starts clean. */
    Tuning(long id, std::string name, Endpoint endpoint, bool mono, bool readonly);

    int64_t getId() const override { return mId; }
    const std::set<Parameter>& getValidParams() const override;

    std::string getName() const { return mName; }
    Endpoint getEndpoint() const { return mEndpoint; }

    /** Takes the endpoint of that name; an unknown name changes nothing. Never marks dirty. */
    void setEndpoint(const std::string& name);

    bool isMono() const { return mMono; }

    /** Never marks dirty. */
    void setMono(bool mono) { mMono = mono; }

    bool isReadonly() const { return mReadonly; }

    /**
     * The fields, one "name=value" line each, then every valid parameter. Parameters that were
     * never set get an empty list, which stays. An endpoint out of range has no name.
     */
    std::string toString();

  private:
    std::string mName;
    Endpoint mEndpoint;
    bool mMono;
    bool mReadonly;
};

}  // namespace ormel
