#include "ShowText.h"

#include <ormel/ParameterValues.h>

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

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
std::string originText(const Json& origins) {
    std::set<long> lines;
    std::set<std::string> others;
    for (const Json& origin : origins) {
        if (origin.contains("line")) {
            lines.insert(origin["line"].get<long>());
        } else {
            others.insert(origin["origin"]);
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

/** "name value", an endpoint being better known by its name. */
std::string fieldText(const std::string& name, const Json& value) {
    if (value.is_array()) {
        return name + ' ' + listText(value);
    }
    const bool isEndpoint = name == "endpoint" && value.is_number();
    const std::string word = isEndpoint ? endpointName(value.get<int>()) : "";
    const std::string text = !word.empty()       ? word
                             : value.is_string() ? value.get<std::string>()
                                                 : value.dump();
    return name + ' ' + (text.empty() ? "-" : printable(text));
}

/** A line of a table, of the value of that name in each band. */
void printRow(const std::string& name, const Json& bands, size_t begin, std::ostream& out) {
    out << std::string(kValueColumn, ' ') << std::left << std::setw(kBandNameWidth) << name
        << std::right;
    for (size_t i = begin; i < std::min(bands.size(), begin + kBandsPerLine); ++i) {
        out << std::setw(kBandWidth) << bands[i][name].get<int32_t>();
    }
    out << '\n';
}

/** The meaning of an entry and what stands behind it, the latter below when it does not fit. */
std::string meaningText(const std::string& meaning, const std::string& origin, const Style& style) {
    const bool fits = kMeaningColumn + meaning.size() + 2 + origin.size() <= kColumns;
    const std::string gap = fits ? "  " : '\n' + std::string(kMeaningColumn, ' ');
    return wrapped(meaning, kMeaningColumn) + (origin.empty() ? "" : gap + style.faint(origin));
}

std::string describe(const Json& entry, const Style& style) {
    const std::vector<int32_t> values = entry["values"];
    std::ostringstream out;
    out << "    " << std::left << std::setw(5) << entry["code"].get<std::string>() << std::right
        << std::setw(kValueWidth) << valueText(values) << "  "
        << meaningText(entry["meaning"], originText(entry["from"]), style) << '\n';
    if (entry.contains("structure")) {
        printStructure(entry["structure"], out);
    } else if (values.size() > 1) {
        out << std::string(kValueColumn, ' ') << wrapped(listText(values), kValueColumn) << '\n';
    }
    for (const Json& origin : entry["from"]) {
        if (origin.contains("why")) {
            const std::string why = origin["parameter"].get<std::string>() + ": " +
                                    origin["why"].get<std::string>();
            out << std::string(kValueColumn, ' ') << style.faint(wrapped(why, kValueColumn))
                << '\n';
        }
    }
    return out.str();
}

/** The entries by device. Devices one after another whose entries are the same share them. */
void printList(const Json& list, const Style& style, std::ostream& out) {
    const Json& entries = list["entries"];
    out << style.heading(list["list"].get<std::string>() + ": " +
                         countText(entries.size(), "entry", "entries"))
        << '\n';
    Sections sections;
    for (const Json& entry : entries) {
        addToSections(entry["device"], describe(entry, style), sections);
    }
    printSections(sections, out);
}

void printObject(const Json& object, const Style& style, std::ostream& out) {
    std::vector<std::string> fields;
    for (const auto& [name, value] : object.items()) {
        if (name != "object" && name != "line" && name != "values") {
            fields.push_back(fieldText(name, value));
        }
    }
    // What a tuning's start tag gives as well, and much depends on.
    const Json values = object.value("values", Json::object());
    for (const Parameter param : {OUTPUT_CHANNELS, ORIENTATION}) {
        if (const auto found = values.find(parameterName(param)); found != values.end()) {
            fields.push_back(
                    fieldText(parameterName(param), firstOr0(found->get<std::vector<int>>())));
        }
    }
    std::string line = object.contains("line") ? "line " + object["line"].dump() : "";
    line.resize(std::max(line.size() + 1, kObjectColumn), ' ');
    out << style.faint(line)
        << wrapped(printable(object["object"]) + (fields.empty() ? "" : ": ") +
                           joined(fields, ", "),
                   kObjectColumn)
        << '\n';
}

}  // namespace

void printStructure(const Json& structure, std::ostream& out) {
    std::vector<std::string> fields;
    for (const auto& [name, value] : structure.items()) {
        if (name != "bands") {
            fields.push_back(fieldText(name, value));
        }
    }
    if (!fields.empty()) {
        out << std::string(kValueColumn, ' ') << wrapped(joined(fields, ", "), kValueColumn)
            << '\n';
    }
    const Json bands = structure.value("bands", Json::array());
    for (size_t begin = 0; begin < bands.size(); begin += kBandsPerLine) {
        for (const auto& [name, value] : bands[begin].items()) {
            printRow(name, bands, begin, out);
        }
    }
}

void printText(const Json& shown, std::ostream& out) {
    const Style style;
    for (const Json& object : shown["objects"]) {
        printObject(object, style, out);
    }
    const char* gap = shown["objects"].empty() ? "" : "\n";
    for (const Json& list : shown["lists"]) {
        out << gap;
        printList(list, style, out);
        gap = "\n";
    }
}

}  // namespace ormel::tools
