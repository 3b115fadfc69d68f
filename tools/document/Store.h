// The stores that the commands load documents into.
#pragma once

#include <android/log.h>
#include <ormel/SpatializerParamArray.h>

#include <string>

namespace ormel::tools {

/**
 * The process's store, which SpatializerParamCache works on. Throws std::runtime_error on a device
 * that has a document of its own, which would mix with the one that is looked at.
 */
SpatializerParamArray& processStore();

/**
 * Loads a document, as regularFile() finds it; std::runtime_error says that it cannot be. Messages
 * of the library of at least the given priority go to stderr meanwhile and from then on.
 */
void load(const std::string& file, SpatializerParamArray& store, android_LogPriority lowest);

}  // namespace ormel::tools
