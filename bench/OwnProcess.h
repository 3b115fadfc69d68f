// Work in a process of its own: another one of this program, which does one task.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace ormel::bench {

/** What the shell's @p command prints; nothing when it fails. */
std::optional<std::string> outputOf(const std::string& command);

/** The number behind the first @p word of @p text; nothing where there is no such word. */
std::optional<double> numberBehind(const std::string& word, const std::string& text);

/** Has a fresh process do a task, and returns what it prints. */
std::string outputOfTask(const std::string& task, const std::string& argument);

/** Does the work of a task whose instructions are to be counted. What is around it is not. */
void doCounted(const std::function<void()>& work);

/**
 * Has a fresh process do a task and counts the instructions of its doCounted(), those of libraries
 * included. Counts with valgrind, which needs nothing of the kernel; nothing where that is missing
 * or does not work.
 */
std::optional<double> instructionsOf(const std::string& task, const std::string& argument);

}  // namespace ormel::bench
