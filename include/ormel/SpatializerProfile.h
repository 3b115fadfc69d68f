// The profiles that an effect applies.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ormel {

/** A spatializer profile. */
using OrmSpatializerProfileId = int32_t;

/** Stands for the built-in list that belongs to every profile. */
constexpr OrmSpatializerProfileId ORM_SPATIALIZER_PROFILE_COMMON = -1;
constexpr OrmSpatializerProfileId ORM_SPATIALIZER_PROFILE_DYNAMIC = 0;
constexpr OrmSpatializerProfileId ORM_SPATIALIZER_PROFILE_MOVIE = 1;
constexpr OrmSpatializerProfileId ORM_SPATIALIZER_PROFILE_MUSIC = 2;
constexpr OrmSpatializerProfileId ORM_SPATIALIZER_PROFILE_CUSTOM = 3;

/** Text names of the profiles from dynamic to custom, by their number. Not range checked. */
constexpr const char* kProfileNames[] = {"dynamic", "movie", "music", "custom"};

/** Bands of the effect's graphic equalizer. Entries of another width are not applied. */
constexpr size_t kGeqBands = 20;

}  // namespace ormel
