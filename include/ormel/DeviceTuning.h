// The binding of a tuning device to a port and a tuning.
#pragma once

#include <cstdint>
#include <string>

namespace ormel {

/** Says which tuning a tuning device on a port uses. Starts dirty however it was made. */
class DeviceTuning {
  public:
    /**
     * @param device name of the tuning device
     * @param port   text name of the port that it belongs to
     * @param tuning name of the tuning that it uses
     */
    DeviceTuning(std::string device, std::string port, std::string tuning);
    DeviceTuning(long long id, std::string device, std::string port, std::string tuning);

    DeviceTuning(const DeviceTuning&) = default;
    DeviceTuning(DeviceTuning&&) = default;
    DeviceTuning& operator=(const DeviceTuning&) = default;
    DeviceTuning& operator=(DeviceTuning&&) = default;

    /** The stored object's id, -1 for an object that was made without one. */
    virtual int64_t getId() const { return mId; }

    virtual bool isDirty() const { return mDirty; }
    virtual void setDirty(bool dirty) { mDirty = dirty; }

    virtual ~DeviceTuning() = default;

    std::string getDevice() const { return mDevice; }
    std::string getPort() const { return mPort; }
    std::string getTuning() const { return mTuning; }

    /** The fields, one "name=value" line each, without a line feed after the last. */
    std::string toString() const;

  private:
    int64_t mId;
    std::string mDevice;
    std::string mPort;
    std::string mTuning;
    bool mDirty;
};

}  // namespace ormel
