// Rows of integers spread over several texts.
#pragma once

#include <string_view>
#include <vector>

namespace ormel {

/**
 * Appends the integers of @p text to @p out as string2IntVector() does.
 *
 * @return whether the text ends directly after a number, so that a comma could continue the row
 */
bool appendIntegers(std::string_view text, std::vector<int>& out);

}  // namespace ormel
