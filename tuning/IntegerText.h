// Rows of integers that are spread over several texts.
#pragma once

#include <string_view>
#include <vector>

namespace ormel {

/**
 * Appends the integers of @p text to @p out as string2IntVector() does.
 *
 * @return whether the text ends right behind a number, so that a row could go on after a comma
 */
bool appendIntegers(std::string_view text, std::vector<int>& out);

}  // namespace ormel
