// The process's store, and what becomes of the library's messages.
#pragma once

#include <android/log.h>

#include <string>

namespace ormel::tools {

/**
 * From now on prints the messages of the whole process to stderr, "level tag: message" each, if
 * they are of at least the given priority.
 */
void setLibraryLog(android_LogPriority lowest);

/**
 * Loads a document, as readDocument() reads it, into the process's store, which
 * SpatializerParamCache works on. Messages of the library of at least the given priority go to
 * stderr meanwhile and from then on. Throws std::runtime_error for a document that cannot be
 * loaded, and on a device that has one of its own, which would mix with it.
 */
void loadForProcess(const std::string& file, android_LogPriority lowest);

}  // namespace ormel::tools
