// The output ports that a tuning device can belong to.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ormel {

/** A physical output port, as callers of the front number it. */
enum Port : int32_t {
    PORT_INTERNAL_SPEAKER = 0,
    PORT_HDMI = 1,
    PORT_MIRACAST = 2,
    PORT_HEADPHONE = 3,
    PORT_BLUETOOTH = 4,
    PORT_USB = 5,
    PORT_OTHER = 6,
};
constexpr size_t kPortCount = 7;

/** Text names by Port value. Not range checked. */
constexpr const char* kPortNames[kPortCount] = {"internal_speaker", "hdmi", "miracast", "headphone",
                                                "bluetooth",        "usb",  "other"};

/** Text name of a port; null if out of range. */
constexpr const char* portName(int32_t port) {
    const bool known = port >= 0 && port < static_cast<int32_t>(kPortCount);
    return known ? kPortNames[port] : nullptr;
}

}  // namespace ormel
