// Runs a task in a separate process of this program.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace ormel::bench {

/** The output of a shell command; nothing if it fails. */
std::optional<std::string> outputOf(const std::string& command);

/** The number after the first @p word in @p text; nothing if the word is missing. */
std::optional<double> numberAfter(const std::string& word, const std::string& text);

/** Runs a task in a new process, and returns its output. */
std::string outputOfTask(const std::string& task, const std::string& argument);

/** Does the part of a task whose instructions are counted. */
void doCounted(const std::function<void()>& work);

/**
 * Runs a task in a new process and counts the instructions of its doCounted(), including those of
 * libraries. Uses valgrind, which needs no kernel support; nothing if valgrind is missing or fails.
 */
std::optional<double> instructionsOf(const std::string& task, const std::string& argument);

}  // namespace ormel::bench
