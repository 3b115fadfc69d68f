// Reads integers as formatted stream extraction does, without a stream or a locale.
#include <ormel/TagIterator.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

#include "tuning/IntegerText.h"

namespace {

/**
 * Most numbers to reserve for a row. Reserving saves allocations, but a text of many commas must
 * not reserve as many.
 */
constexpr size_t kMaxReserve = 64;

bool isWhitespace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

/**
 * Removes one integer from the front of @p text. On failure @p value is what a stream would leave:
 * 0, or the nearest limit if out of range.
 */
bool extractInt(std::string_view& text, int& value) {
    value = 0;
    const char* begin = text.data();
    const char* const limit = begin + text.size();
    while (begin != limit && isWhitespace(*begin)) {
        ++begin;
    }
    if (limit - begin > 1 && begin[0] == '+' && begin[1] != '-') {
        ++begin;
    }
    const auto [end, error] = std::from_chars(begin, limit, value);
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    if (error == std::errc::result_out_of_range) {
        value = *begin == '-' ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    }
    return error == std::errc();
}

}  // namespace

int string2Int(std::string_view text) {
    int value = 0;
    extractInt(text, value);
    return value;
}

void string2IntVector(std::string_view text, std::vector<int>& out) {
    if (out.empty()) {
        const auto commas = static_cast<size_t>(std::count(text.begin(), text.end(), ','));
        out.reserve(std::min(commas + 1, kMaxReserve));
    }
    ormel::appendIntegers(text, out);
}

bool ormel::appendIntegers(std::string_view text, std::vector<int>& out) {
    for (int value = 0; extractInt(text, value);) {
        out.push_back(value);
        if (text.empty()) {
            return true;
        }
        if (text.front() == ',') {
            text.remove_prefix(1);
        }
    }
    return false;
}
