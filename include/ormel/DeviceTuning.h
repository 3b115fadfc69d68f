// The binding of a tuning device to a port and a tuning.
#pragma once

#include <cstdint>
#include <string>

namespace ormel {

/** The tuning that a tuning device on a port uses. Starts dirty, even when restored. */
class DeviceTuning {
  public:
    /**
     * @param device name of the tuning device
     * @param port   text name of its port
     * @param tuning name of its tuning
     */
    DeviceTuning(std::string device, std::string port, std::string tuning);
    DeviceTuning(long long id, std::string device, std::string port, std::string tuning);

    DeviceTuning(const DeviceTuning&) = default;
    DeviceTuning(DeviceTuning&&) = default;
    DeviceTuning& operator=(const DeviceTuning&) = default;
    DeviceTuning& operator=(DeviceTuning&&) = default;

    /** The stored object's id; -1 if made without one. */
    virtual int64_t getId() const { return mId; }

    virtual bool isDirty() const { return mDirty; }
    virtual void setDirty(bool dirty) { mDirty = dirty; }

    virtual ~DeviceTuning() = default;

    std::string getDevice() const { return mDevice; }
    std::string getPort() const { return mPort; }
    std::string getTuning() const { return mTuning; }

    /** One "name=value" line per field; no line feed after the last. */
    std::string toString() const;

  private:
    int64_t mId;
    std::string mDevice;
    std::string mPort;
    std::string mTuning;
    bool mDirty;
};

}  // namespace ormel
