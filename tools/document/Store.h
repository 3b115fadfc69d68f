// The stores that the commands load documents into.
#pragma once

#include <android/log.h>
#include <ormel/SpatializerParamArray.h>

#include <memory>
#include <string>

namespace ormel::tools {

// Making a store loads the device's own document, if there is one. It would mix with the one that
// is looked at, so std::runtime_error is thrown then.

/** The process's store, which the front works on, as if nobody had used it yet. */
SpatializerParamArray& processStore();

/** A store of one's own. */
std::unique_ptr<SpatializerParamArray> makeStore();

/** Throws std::runtime_error for a file that cannot be opened for reading. */
void requireReadable(const std::string& file);

/**
 * Loads a document; std::runtime_error says that it cannot be. Messages of the library of at least
 * the given priority go to stderr meanwhile and from then on.
 */
void load(const std::string& file, SpatializerParamArray& store, android_LogPriority lowest);

}  // namespace ormel::tools
