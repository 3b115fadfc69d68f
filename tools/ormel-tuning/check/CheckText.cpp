#include "CheckText.h"

#include <ormel/TagIterator.h>

#include <algorithm>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include "text/Text.h"

namespace ormel::tools {

namespace {

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
            {"true", true},   {"yes", true}, {"on", true},   {"1", true},  {"enabled", true},
            {"false", false}, {"no", false}, {"off", false}, {"0", false}, {"disabled", false}};
    const std::string word = lowered(trimmed(text));
    for (const auto& [known, meaning] : kWords) {
        const bool isBegun = word.size() != 2 && known.size() > 3 && known.find(word) == 0;
        if (word == known || (!word.empty() && isBegun)) {
            return meaning;
        }
    }
    const std::string nearest = nearestOf(word, {"true", "false"});
    return nearest.empty() ? std::nullopt : std::optional<bool>(nearest == "true");
}

/** A text in small letters, with dashes for what may part its words. */
std::string likeness(std::string_view text) {
    std::string like = lowered(trimmed(text));
    std::replace_if(
            like.begin(), like.end(), [](char each) { return each == '_' || each == ' '; }, '-');
    return like;
}

/** Letters to add, leave out, replace or exchange with the next to get one text from another. */
size_t editDistance(std::string_view one, std::string_view other) {
    std::vector<size_t> older;
    std::vector<size_t> last(other.size() + 1);
    std::iota(last.begin(), last.end(), size_t{0});
    for (size_t i = 1; i <= one.size(); ++i) {
        std::vector<size_t> row(other.size() + 1, i);
        for (size_t j = 1; j <= other.size(); ++j) {
            const bool isSame = one[i - 1] == other[j - 1];
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (isSame ? 0 : 1)});
            const bool isExchanged =
                    i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1];
            row[j] = isExchanged ? std::min(row[j], older[j - 2] + 1) : row[j];
        }
        older = std::exchange(last, std::move(row));
    }
    return last.back();
}

}  // namespace

std::string nearestOf(std::string_view text, const std::vector<std::string>& names) {
    constexpr size_t kLongest = 64;
    const std::string like = likeness(text.substr(0, kLongest));
    std::string nearest;
    size_t limit = like.size() / 4 + (like.size() < 3 ? 1 : 2);
    for (const std::string& name : names) {
        // No distance is below the difference in length.
        const auto [shorter, longer] = std::minmax({name.size(), like.size()});
        const size_t distance =
                longer - shorter < limit ? editDistance(like, likeness(name)) : limit;
        if (distance < limit) {
            nearest = name;
            limit = distance;
        }
    }
    return nearest;
}

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

TextFault faultOfBand(std::string_view text) {
    const TextFault fault = faultOfNumber(text);
    std::vector<int> numbers;
    string2IntVector(std::string(text) + ",0", numbers);
    return fault == TextFault::NONE && numbers.size() != 2 ? TextFault::NOT_A_NUMBER : fault;
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
    constexpr std::string_view kSeparators = ", \t\n\v\f\r";
    std::vector<int> numbers;
    string2IntVector(text, numbers);
    std::string_view rest = trimmed(text);
    if (rest.empty()) {
        return {TextFault::EMPTY, 0, ""};
    }
    for (size_t i = 0; i < numbers.size(); ++i) {
        rest.remove_prefix(numberLength(rest));
        const bool isParted = !rest.empty() && rest.front() == ',';
        rest = trimmed(rest.substr(isParted ? 1 : 0));
    }
    if (rest.find_first_not_of(kSeparators) == std::string_view::npos) {
        return {TextFault::NONE, numbers.size(), ""};
    }
    const size_t length = numberLength(rest);
    const size_t end = length != 0 ? length : std::max(rest.find_first_of(kSeparators), size_t{1});
    return {length != 0 ? TextFault::OUT_OF_RANGE : TextFault::NOT_A_NUMBER, numbers.size(),
            std::string(rest.substr(0, end))};
}

}  // namespace ormel::tools
