// The elements of a tuning document other than parameters.
#pragma once

#include <ormel/Parameter.h>

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

struct DocumentElementRow {
    const char* name;
    /** Class of the objects that its parameters go to. A preset's depends on its type. */
    ParameterOwner owner;
    /** Attributes that the reader uses; unused places are null. */
    std::array<const char*, 5> attributes;
};

/**
 * By DocumentElement. Parameter elements are in the setters' table. A tuning's data may have any
 * name.
 */
// clang-format off
inline constexpr DocumentElementRow kDocumentElements[] = {
    {"format_version",          ParameterOwner::NONE,             {"major", "minor", "maintenance"}},
    {"tool_version",            ParameterOwner::NONE,             {"major", "minor", "maintenance"}},
    {"authorized_technologies", ParameterOwner::NONE,             {}},
    {"global_setting",          ParameterOwner::NONE,             {"device_name", "device_index", "tuning_version", "virtual_bass_process", "altivo_game_system_gain"}},
    {"preset",                  ParameterOwner::NONE,             {"id", "name", "type"}},
    {"profile",                 ParameterOwner::PROFILE,          {"id", "name", "group"}},
    {"endpoint_type",           ParameterOwner::PROFILE_ENDPOINT, {"id"}},
    {"include",                 ParameterOwner::NONE,             {"preset", "ieq_preset"}},
    {"tuning",                  ParameterOwner::TUNING,           {"name", "endpoint_type", "mono_device", "orientation", "output_channels"}},
    {"device_id",               ParameterOwner::NONE,             {"id", "endpoint_port"}},
    {"",                        ParameterOwner::NONE,             {}},
};
// clang-format on

constexpr const DocumentElementRow& rowOf(DocumentElement element) {
    return kDocumentElements[static_cast<size_t>(element)];
}

}  // namespace ormel
