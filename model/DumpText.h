// The "name=value" lines in dumps of tuning objects.
#pragma once

#include <cstdint>
#include <string>

namespace ormel {

inline std::string dumpLine(const char* name, const std::string& value) {
    return std::string(name) + "=" + value + "\n";
}

inline std::string dumpLine(const char* name, const char* value) {
    return dumpLine(name, std::string(value));
}

inline std::string dumpLine(const char* name, int64_t value) {
    return dumpLine(name, std::to_string(value));
}

inline std::string dumpLine(const char* name, bool value) {
    return dumpLine(name, value ? "true" : "false");
}

}  // namespace ormel
