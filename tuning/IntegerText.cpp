// Integers as formatted stream extraction reads them, without a stream and without a locale.
#include <ormel/TagIterator.h>

#include <charconv>
#include <limits>
#include <system_error>

namespace {

constexpr std::string_view kWhitespace = " \t\n\v\f\r";

void skipWhitespace(std::string_view& text) {
    const size_t start = text.find_first_not_of(kWhitespace);
    text.remove_prefix(start == std::string_view::npos ? text.size() : start);
}

/**
 * Takes one integer off the front of @p text. On failure @p value is what a stream would leave: 0,
 * or the nearest limit for a number out of range.
 */
bool extractInt(std::string_view& text, int& value) {
    value = 0;
    skipWhitespace(text);
    if (text.substr(0, 1) == "+" && text.substr(1, 1) != "-") {
        text.remove_prefix(1);
    }
    const char* const begin = text.data();
    const auto [end, error] = std::from_chars(begin, begin + text.size(), value);
    text.remove_prefix(static_cast<size_t>(end - begin));
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
    for (int value = 0; extractInt(text, value);) {
        out.push_back(value);
        if (!text.empty() && (text.front() == ',' || text.front() == ' ')) {
            text.remove_prefix(1);
        }
    }
}
