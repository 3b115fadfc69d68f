// The layout of what the commands print.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ormel::tools {

/** Columns that printed lines keep to where they can. */
constexpr size_t kColumns = 100;

/** Breaks a text at blanks, so that it fits between @p indent and the last column. */
std::string wrapped(std::string_view text, size_t indent);

/** "1, 2, 3". */
std::string listText(const std::vector<int32_t>& values);

/** The number itself when there is one, else how many there are: "[3]", "no values". */
std::string valueText(const std::vector<int32_t>& values);

/** "1 entry", "2 entries". */
std::string countText(size_t count, const std::string& one, const std::string& many);

/** A document's text for a terminal or a single line: without control characters. */
std::string printable(std::string text);

/** The lines of a document's text, each as above, very long ones cut short. */
std::vector<std::string> linesOf(const std::string& text);

/** The texts with @p separator between them. */
std::string joined(const std::vector<std::string>& texts, const std::string& separator);

/** What stands for blanks in a document's numbers. */
constexpr std::string_view kBlanks = " \t\n\v\f\r";

/** A text without the blanks around it. */
std::string_view trimmed(std::string_view text);

/** A text with the letters of ASCII in lower case. */
std::string lowered(std::string_view text);

/** The name that a text is most like, but for case and dashes; empty where none is near. */
std::string nearestOf(std::string_view text, const std::vector<std::string>& names);

/** The integer that a text is all of, its sign included; none where it does not fit 32 bits. */
std::optional<int32_t> integerOf(std::string_view text, int base = 10);

/** Texts under titles, in order. */
using Sections = std::vector<std::pair<std::string, std::string>>;

/** Appends a text to the last section if that has the title, else to a new one. */
void addToSections(const std::string& title, const std::string& text, Sections& sections);

/** Neighbours with the same text share it. A section without a title has no line for it. */
void printSections(const Sections& sections, std::ostream& out);

/** Colours for a terminal, plain text for everything else and where NO_COLOR is set. */
class Style {
  public:
    /** For standard output as it is now. */
    Style();

    std::string heading(const std::string& text) const { return coloured("1", text); }
    std::string faint(const std::string& text) const { return coloured("2", text); }
    std::string removed(const std::string& text) const { return coloured("31", text); }
    std::string added(const std::string& text) const { return coloured("32", text); }

  private:
    std::string coloured(const char* code, const std::string& text) const;

    bool mColour;
};

}  // namespace ormel::tools
