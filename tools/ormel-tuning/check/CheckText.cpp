#include "CheckText.h"

#include <ormel/TagIterator.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "text/Text.h"

namespace ormel::tools {

namespace {

/** Where a row's numbers end. */
constexpr std::string_view kSeparators = ", \t\n\v\f\r";

/** Length of the number that a text begins with, sign included; 0 if it begins with none. */
size_t numberLength(std::string_view text) {
    const bool isSigned = !text.empty() && (text.front() == '+' || text.front() == '-');
    const size_t begin = isSigned ? 1 : 0;
    const size_t end = std::min(text.find_first_not_of("0123456789", begin), text.size());
    return end == begin ? 0 : end;
}

/** What a word for true or false means, however it is spelt; none for any other text. */
std::optional<bool> meaningOf(std::string_view text) {
    static constexpr std::pair<std::string_view, bool> kWords[] = {
            {"true", true},   {"yes", true}, {"on", true},   {"1", true},
            {"false", false}, {"no", false}, {"off", false}, {"0", false}};
    const std::string word = lowered(trimmed(text));
    for (const auto& [known, meaning] : kWords) {
        if (word == known) {
            return meaning;
        }
    }
    return std::nullopt;
}

}  // namespace

bool meansTrue(std::string_view text) {
    return meaningOf(text).value_or(false);
}

TextFault faultOfNumber(std::string_view text) {
    const std::string_view number = trimmed(text);
    if (number.empty()) {
        return TextFault::EMPTY;
    }
    if (numberLength(number) != number.size()) {
        return TextFault::NOT_A_NUMBER;
    }
    return integerOf(number).has_value() ? TextFault::NONE : TextFault::OUT_OF_RANGE;
}

TextFault faultOfSwitch(std::string_view text) {
    if (text == "true" || text == "false") {
        return TextFault::NONE;
    }
    const TextFault fault = faultOfNumber(text);
    const bool isWord = fault == TextFault::NOT_A_NUMBER && meaningOf(text).has_value();
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
    if (rest.find_first_not_of(kSeparators) == std::string_view::npos) {
        return {TextFault::NONE, numbers.size(), ""};
    }
    const size_t length = numberLength(rest);
    if (length != 0) {
        return {TextFault::OUT_OF_RANGE, numbers.size(), std::string(rest.substr(0, length))};
    }
    const size_t end = std::max(rest.find_first_of(kSeparators), size_t{1});
    return {TextFault::NOT_A_NUMBER, numbers.size(), std::string(rest.substr(0, end))};
}

}  // namespace ormel::tools
