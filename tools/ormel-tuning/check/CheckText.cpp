#include "CheckText.h"

#include <ormel/TagIterator.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace ormel::tools {

namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";
constexpr std::string_view kDigits = "0123456789";

std::string_view trimmed(std::string_view text) {
    const size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) {
        return "";
    }
    return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

std::string lowered(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return lower;
}

/** Length of the number that a text begins with, sign included; 0 if it begins with none. */
size_t numberLength(std::string_view text) {
    const bool isSigned = !text.empty() && (text.front() == '+' || text.front() == '-');
    const size_t begin = isSigned ? 1 : 0;
    const size_t end = std::min(text.find_first_not_of(kDigits, begin), text.size());
    return end == begin ? 0 : end;
}

/** Of a text that is a number. */
bool fits(std::string_view number) {
    const bool isNegative = number.front() == '-';
    number.remove_prefix(isNegative || number.front() == '+' ? 1 : 0);
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    const int64_t limit = int64_t{std::numeric_limits<int32_t>::max()} + (isNegative ? 1 : 0);
    const std::string digits = std::to_string(limit);
    return number.size() < digits.size() || (number.size() == digits.size() && number <= digits);
}

bool isOneOf(const std::string& word, const std::vector<std::string>& words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool meansFalse(std::string_view text) {
    return isOneOf(lowered(trimmed(text)), {"false", "no", "off", "0"});
}

}  // namespace

bool meansTrue(std::string_view text) {
    return isOneOf(lowered(trimmed(text)), {"true", "yes", "on", "1"});
}

TextFault faultOfNumber(std::string_view text) {
    const std::string_view number = trimmed(text);
    if (number.empty()) {
        return TextFault::EMPTY;
    }
    if (numberLength(number) != number.size()) {
        return TextFault::NOT_A_NUMBER;
    }
    return fits(number) ? TextFault::NONE : TextFault::OUT_OF_RANGE;
}

TextFault faultOfSwitch(std::string_view text) {
    if (text == "true" || text == "false") {
        return TextFault::NONE;
    }
    const TextFault fault = faultOfNumber(text);
    const bool isWord = fault == TextFault::NOT_A_NUMBER && (meansTrue(text) || meansFalse(text));
    return isWord ? TextFault::MISSPELT : fault;
}

RowFault faultOfRow(std::string_view text) {
    std::vector<int> numbers;
    string2IntVector(text, numbers);
    std::string_view rest = text;
    for (size_t i = 0; i < numbers.size(); ++i) {
        rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
        rest.remove_prefix(numberLength(rest));
        const bool isParted = !rest.empty() && (rest.front() == ',' || rest.front() == ' ');
        rest.remove_prefix(isParted ? 1 : 0);
    }
    rest = trimmed(rest);
    if (trimmed(text).empty()) {
        return {TextFault::EMPTY, 0, ""};
    }
    if (rest.find_first_not_of(", \t\n\v\f\r") == std::string_view::npos) {
        return {TextFault::NONE, numbers.size(), ""};
    }
    const size_t length = numberLength(rest);
    if (length != 0) {
        return {TextFault::OUT_OF_RANGE, numbers.size(), std::string(rest.substr(0, length))};
    }
    const size_t end = std::max(rest.find_first_of(", \t\n\v\f\r"), size_t{1});
    return {TextFault::NOT_A_NUMBER, numbers.size(), std::string(rest.substr(0, end))};
}

}  // namespace ormel::tools
