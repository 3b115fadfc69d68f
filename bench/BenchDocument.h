// Tuning documents of any size.
#pragma once

#include <cstddef>
#include <string>

namespace ormel::bench {

/**
 * A document of about @p size bytes: the profiles, presets and tunings of @p seed, a tuning
 * document of four profiles, again and again under new ids and names.
 */
std::string growDocument(const std::string& seed, size_t size);

}  // namespace ormel::bench
