// The elements of a tuning document that are no parameters.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ormel {

enum class DocumentElement : uint8_t {
    FORMAT_VERSION,
    TOOL_VERSION,
    AUTHORIZED_TECHNOLOGIES,
    GLOBAL_SETTING,
    PRESET,
    PROFILE,
    ENDPOINT_TYPE,
    INCLUDE,
    TUNING,
    DEVICE_ID,
    DATA,
};

/** Name of an element, and the attributes that the reader looks at; null for no more. */
struct DocumentElementRow {
    const char* name;
    std::array<const char*, 5> attributes;
};

/**
 * By DocumentElement. Parameters' elements are those of the value setters. The data of a tuning may
 * have any name.
 */
// clang-format off
inline constexpr DocumentElementRow kDocumentElements[] = {
    {"format_version",          {"major", "minor", "maintenance"}},
    {"tool_version",            {"major", "minor", "maintenance"}},
    {"authorized_technologies", {}},
    {"global_setting",          {"device_name", "device_index", "tuning_version", "virtual_bass_process", "altivo_game_system_gain"}},
    {"preset",                  {"id", "name", "type"}},
    {"profile",                 {"id", "name", "group"}},
    {"endpoint_type",           {"id"}},
    {"include",                 {"preset", "ieq_preset"}},
    {"tuning",                  {"name", "endpoint_type", "mono_device", "orientation", "output_channels"}},
    {"device_id",               {"id", "endpoint_port"}},
    {"",                        {}},
};
// clang-format on

constexpr const DocumentElementRow& rowOf(DocumentElement element) {
    return kDocumentElements[static_cast<size_t>(element)];
}

}  // namespace ormel
