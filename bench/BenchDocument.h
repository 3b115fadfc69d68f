// Tuning documents of any size.
#pragma once

#include <cstddef>
#include <string>

namespace ormel::bench {

/**
 * A document of about @p size bytes: the profiles, presets and tunings of @p seed, repeated under
 * new ids and names. @p seed is a tuning document with four profiles.
 */
std::string growDocument(const std::string& seed, size_t size);

/** A small document: the presets and profile with id 0, and the first tuning, of @p seed. */
std::string shrinkDocument(const std::string& seed);

}  // namespace ormel::bench
