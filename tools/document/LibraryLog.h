// What becomes of the library's messages in a tool.
#pragma once

#include <android/log.h>

namespace ormel::tools {

/**
 * From now on prints the messages of the whole process to stderr, "level tag: message" each, if
 * they are of at least the given priority.
 */
void setLibraryLog(android_LogPriority lowest);

}  // namespace ormel::tools
