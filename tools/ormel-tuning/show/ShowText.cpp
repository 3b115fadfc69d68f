#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

#include "Shown.h"
#include "text/Names.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

constexpr int kValueWidth = 9;
/** Where the meanings of parameters begin, and values that do not fit before them. */
constexpr size_t kMeaningColumn = 20;
constexpr size_t kValueColumn = 10;
/** Bands stand side by side, as many as a line takes. */
constexpr size_t kBandsPerLine = 10;
constexpr int kBandWidth = 7;
constexpr int kBandNameWidth = 16;
/** Where objects begin behind their lines. */
constexpr size_t kObjectColumn = 12;

/** "lines 12, 40; version rule". */
std::string originText(const Origins& origins) {
    std::set<long> lines;
    std::set<std::string> others;
    for (const Origin& origin : origins) {
        if (origin.kind == Origin::Kind::LINE) {
            lines.insert(origin.line);
        } else {
            others.insert(nameOf(origin.kind));
        }
    }
    std::vector<std::string> numbers;
    std::transform(lines.begin(), lines.end(), std::back_inserter(numbers),
                   [](long line) { return std::to_string(line); });
    std::vector<std::string> parts(others.begin(), others.end());
    if (!numbers.empty()) {
        parts.insert(parts.begin(),
                     (lines.size() == 1 ? "line " : "lines ") + joined(numbers, ", "));
    }
    return joined(parts, "; ");
}

void printRow(const std::string& name, const std::vector<int32_t>& values, size_t begin,
              std::ostream& out) {
    const size_t end = std::min(values.size(), begin + kBandsPerLine);
    out << std::string(kValueColumn, ' ') << std::left << std::setw(kBandNameWidth) << name
        << std::right;
    for (size_t i = begin; i < end; ++i) {
        out << std::setw(kBandWidth) << values[i];
    }
    out << '\n';
}

/** Text for a named value, an endpoint being better known by its name. */
std::string fieldText(const std::string& name, int32_t value) {
    const std::string word = name == "endpoint" ? endpointName(value) : "";
    return name + ' ' + (word.empty() ? std::to_string(value) : word);
}

void printShape(const Shape& shape, std::ostream& out) {
    const std::string indent(kValueColumn, ' ');
    std::vector<std::string> fields;
    for (const auto& [name, value] : shape.fields) {
        fields.push_back(fieldText(name, value));
    }
    if (!shape.rest.empty()) {
        fields.push_back(shape.restName + ' ' + listText(shape.rest));
    }
    if (!fields.empty()) {
        out << indent << wrapped(joined(fields, ", "), kValueColumn) << '\n';
    }
    const size_t bands = shape.columns.empty() ? 0 : shape.columns.front().values.size();
    for (size_t begin = 0; begin < bands; begin += kBandsPerLine) {
        for (const Shape::Column& column : shape.columns) {
            printRow(column.name, column.values, begin, out);
        }
    }
}

void printValues(const Entry& entry, std::ostream& out) {
    if (const auto shape = shapeOf(entry.code, entry.values); shape.has_value()) {
        printShape(*shape, out);
    } else if (entry.values.size() > 1) {
        out << std::string(kValueColumn, ' ') << wrapped(listText(entry.values), kValueColumn)
            << '\n';
    }
}

/** The meaning of an entry and what stands behind it, the latter below when it does not fit. */
std::string meaningText(const std::string& meaning, const std::string& origin, const Style& style) {
    const bool fits = kMeaningColumn + meaning.size() + 2 + origin.size() <= kColumns;
    const std::string gap = fits ? "  " : '\n' + std::string(kMeaningColumn, ' ');
    return wrapped(meaning, kMeaningColumn) + (origin.empty() ? "" : gap + style.faint(origin));
}

std::string describe(const ShownEntry& shown, const Style& style) {
    const auto [letters, meaning] = codeText(shown.entry.code);
    std::ostringstream out;
    out << "    " << std::left << std::setw(5) << letters << std::right << std::setw(kValueWidth)
        << valueText(shown.entry.values) << "  "
        << meaningText(meaning, originText(shown.origins), style) << '\n';
    printValues(shown.entry, out);
    return out.str();
}

/** The entries by device. Devices one after another whose entries are the same share them. */
void print(const ShownList& shown, const Style& style, std::ostream& out) {
    const std::string count = countText(shown.entries.size(), "entry", "entries");
    out << style.heading(shown.title + ": " + count) << '\n';
    Sections sections;
    for (const ShownEntry& entry : shown.entries) {
        addToSections(deviceText(entry.entry.device), describe(entry, style), sections);
    }
    printSections(sections, out);
}

/** A field as "name value". */
std::string fieldText(const std::string& name, const Json& value) {
    const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
    return name + ' ' + (text.empty() ? "-" : printable(text));
}

std::string fieldsText(const DocumentObject& object) {
    std::vector<std::string> fields;
    for (const auto& [name, value] : object.fields.items()) {
        fields.push_back(fieldText(name, value));
    }
    // What a tuning's start tag gives as well, and much depends on.
    for (const Parameter param : {OUTPUT_CHANNELS, ORIENTATION}) {
        const auto* const values = object.values;
        if (values != nullptr && values->getValues().count(param) > 0) {
            const Json json = firstOr0(values->getValues().at(param));
            fields.push_back(fieldText(parameterName(param), json));
        }
    }
    return joined(fields, ", ");
}

void print(const DocumentObject& object, const Style& style, std::ostream& out) {
    const std::string fields = fieldsText(object);
    std::string line = object.line == 0 ? "" : "line " + std::to_string(object.line);
    line.resize(std::max(line.size() + 1, kObjectColumn), ' ');
    out << style.faint(line)
        << wrapped(printable(object.title) + (fields.empty() ? "" : ": " + fields), kObjectColumn)
        << '\n';
}

}  // namespace

void printText(const Shown& shown, std::ostream& out) {
    const Style style;
    for (const DocumentObject& object : shown.objects) {
        print(object, style, out);
    }
    bool isFirst = shown.objects.empty();
    for (const ShownList& list : shown.lists) {
        out << (isFirst ? "" : "\n");
        print(list, style, out);
        isFirst = false;
    }
}

}  // namespace ormel::tools
