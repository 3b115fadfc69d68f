#include "Text.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <numeric>
#include <sstream>

namespace ormel::tools {

namespace {

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

std::string wrapped(std::string_view text, size_t indent) {
    const size_t width = kColumns - indent;
    std::string lines;
    while (text.size() > width) {
        size_t blank = text.rfind(' ', width);
        if (blank == std::string_view::npos) {
            break;
        }
        // What stands between two commas stays together, if that does not leave half a line.
        const size_t comma = text.rfind(", ", width - 1);
        if (comma != std::string_view::npos && comma > width / 2) {
            blank = comma + 1;
        }
        lines.append(text.substr(0, blank)).append("\n").append(indent, ' ');
        text.remove_prefix(blank + 1);
    }
    return lines.append(text);
}

std::string listText(const std::vector<int32_t>& values) {
    std::string text;
    for (const int32_t value : values) {
        text.append(text.empty() ? "" : ", ").append(std::to_string(value));
    }
    return text;
}

std::string valueText(const std::vector<int32_t>& values) {
    return values.size() == 1 ? std::to_string(values.front())
           : values.empty()   ? "no values"
                              : '[' + std::to_string(values.size()) + ']';
}

std::string countText(size_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

std::string printable(std::string text) {
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(text.c_str()[i + 1]);
        // In UTF-8, control characters beyond ASCII are two bytes.
        const bool isPair = byte == 0xc2 && next >= 0x80 && next < 0xa0;
        if (isPair || byte < ' ' || byte == 0x7f) {
            text.replace(i, isPair ? 2 : 1, "?");
        }
    }
    return text;
}

std::vector<std::string> linesOf(const std::string& text) {
    constexpr size_t kMaxLineLength = 400;
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        line.erase(line.find_last_not_of('\r') + 1);
        std::replace(line.begin(), line.end(), '\t', ' ');
        if (line.size() > kMaxLineLength) {
            line.replace(kMaxLineLength, std::string::npos, " ...");
        }
        lines.push_back(printable(std::move(line)));
    }
    return lines;
}

std::string joined(const std::vector<std::string>& texts, const std::string& separator) {
    std::string all;
    for (const std::string& text : texts) {
        all.append(&text == texts.data() ? "" : separator).append(text);
    }
    return all;
}

void addToSections(const std::string& title, const std::string& text, Sections& sections) {
    if (sections.empty() || sections.back().first != title) {
        sections.emplace_back(title, "");
    }
    sections.back().second += text;
}

void printSections(const Sections& sections, std::ostream& out) {
    std::string titles;
    for (size_t i = 0; i < sections.size(); ++i) {
        const auto& [title, text] = sections[i];
        titles += (titles.empty() ? "" : ", ") + title;
        if (i + 1 < sections.size() && sections[i + 1].second == text) {
            continue;
        }
        out << (titles.empty() ? "" : "  " + titles + '\n') << text;
        titles.clear();
    }
}

std::string_view trimmed(std::string_view text) {
    text = text.substr(0, text.find_last_not_of(kBlanks) + 1);
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

std::string lowered(std::string_view text) {
    std::string lower(text);
    for (char& letter : lower) {
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    }
    return lower;
}

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

std::optional<int32_t> integerOf(std::string_view text, int base) {
    // from_chars knows no plus, and would take a minus behind one.
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    const char* const end = text.data() + text.size();
    int32_t number = 0;
    const auto [rest, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

Style::Style() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the tool has one thread.
    const char* const noColour = std::getenv("NO_COLOR");
    mColour = (noColour == nullptr || *noColour == '\0') && ::isatty(STDOUT_FILENO) != 0;
}

std::string Style::coloured(const char* code, const std::string& text) const {
    return mColour ? std::string("\033[").append(code).append("m").append(text).append("\033[0m")
                   : text;
}

}  // namespace ormel::tools
