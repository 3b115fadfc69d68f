// The profiles that an effect applies.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ormel {

using OrmSpatializerProfileId = int32_t;

/** Selects the built-in list common to all profiles. */
constexpr OrmSpatializerProfileId ORM_SPATIALIZER_PROFILE_COMMON = -1;
constexpr OrmSpatializerProfileId ORM_SPATIALIZER_PROFILE_DYNAMIC = 0;
constexpr OrmSpatializerProfileId ORM_SPATIALIZER_PROFILE_MOVIE = 1;
constexpr OrmSpatializerProfileId ORM_SPATIALIZER_PROFILE_MUSIC = 2;
constexpr OrmSpatializerProfileId ORM_SPATIALIZER_PROFILE_CUSTOM = 3;

/** Text names of the profiles by id, from dynamic to custom. Not range checked. */
constexpr const char* kProfileNames[] = {"dynamic", "movie", "music", "custom"};

/**
 * Bands of the effect's graphic equalizer. An entry that does not have 2 * kGeqBands + 1 values is
 * not applied.
 */
constexpr size_t kGeqBands = 20;

}  // namespace ormel
