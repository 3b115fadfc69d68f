#include <algorithm>
#include <array>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "document/AppliedLists.h"
#include "document/EntryOrigins.h"
#include "document/LoadedDocument.h"
#include "show/EffectValues.h"
#include "text/Json.h"
#include "text/Names.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

using Values = std::vector<int32_t>;

/** Rows that differ in more places are shown as they are. */
constexpr size_t kMaxPlaces = 6;

/** A parameter of an object, or of a device in a list, as one document has it. */
// NOLINTNEXTLINE(bugprone-exception-escape): Json promises that its moves throw nothing.
struct Item {
    /** Numbers, or a text; null in a document that lacks it. */
    Json value;
    /** What the numbers are by their places. */
    Shape shape = {};
    std::set<int32_t> lines = {};
};

/** An item of two documents. */
// NOLINTNEXTLINE(bugprone-exception-escape): as above.
struct Pair {
    /** {device, code, meaning} or {parameter}. */
    Json head;
    std::array<Item, 2> items;
};

/** A list or an object of two documents. */
struct Group {
    std::array<bool, 2> isThere = {};
    /** By device and name. */
    std::map<std::pair<int32_t, std::string>, Pair> pairs;
};

/** By title. */
using Groups = std::map<std::string, Group>;

/** Adds what a document says. */
void addObjects(const LoadedDocument& document, size_t side, Groups& groups) {
    for (const Json& object : objectsOf(document)) {
        Group& group = groups[printable(object["object"])];
        group.isThere[side] = true;
        Json said = object.value("values", Json::object());
        for (const auto& [name, field] : object.items()) {
            if (name != "object" && name != "line" && name != "values") {
                said[name] = printable(field.is_string() ? std::string(field) : field.dump());
            }
        }
        std::set<int32_t> lines;
        if (object.contains("line")) {
            lines.insert(object["line"].get<int32_t>());
        }
        for (const auto& [name, value] : said.items()) {
            if (!value.empty()) {
                const Values row = value.is_array() ? Values(value) : Values();
                Pair& pair = group.pairs[{0, name}];
                pair.head = {{"parameter", name}};
                pair.items[side] = {value, {{}, {}, row, ""}, lines};
            }
        }
    }
}

/** Adds what an effect keeps of each profile and each tuning device, as the front applies them. */
void addLists(const LoadedDocument& document, size_t side, Groups& groups) {
    const EntryOrigins origins(document);
    for (const AppliedList& applied : appliedLists(document)) {
        const EffectList& list = applied.list;
        // A profile's name is none of the effect's business.
        const bool isProfile = list.kind == EffectList::Kind::PROFILE;
        Group& group =
                groups[isProfile ? "profile " + std::to_string(list.profile) : titleOf(list)];
        group.isThere[side] = true;
        for (const EffectValue& kept : keptValues(applied, origins)) {
            const auto [letters, meaning] = codeText(kept.code);
            if (kept.values.has_value()) {
                Pair& pair = group.pairs[{kept.device, letters}];
                pair.head = {{"device", deviceText(kept.device)},
                             {"code", letters},
                             {"meaning", meaning}};
                pair.items[side] = {*kept.values, kept.shape, sourceLines(kept.origins)};
            }
        }
    }
}

bool isEmptyText(const Json& value) {
    return value.is_string() && value.get_ref<const std::string&>().empty();
}

/** "32 -> 48", or what only one document has; just its length for a row that keeps it. */
std::string changeText(const Json& a, const Json& b) {
    if (a.size() > 1 && a.size() == b.size()) {
        return valueText(a);
    }
    const auto textOf = [](const Json& value) {
        return value.is_null()      ? "absent"
               : isEmptyText(value) ? "empty"
               : value.is_string()  ? std::string(value)
               : value.is_array()   ? valueText(value)
                                    : value.dump();
    };
    return textOf(a) + " -> " + textOf(b);
}

/** The changes between two rows of one length, each place under the name that it is given. */
template <typename NameOf>
std::vector<std::string> rowChanges(const Values& a, const Values& b, NameOf nameOf) {
    std::vector<std::string> changes;
    for (size_t i = 0; i < a.size(); ++i) {
        if (a[i] != b[i]) {
            changes.push_back(nameOf(i) + ": " + changeText(a[i], b[i]));
        }
    }
    return changes;
}

/** The lines on the parts that differ of two shapes that have the same ones. */
std::vector<std::string> partChanges(const Shape& a, const Shape& b) {
    const auto bandName = [&a, &b](size_t band) {
        const Shape::Column& first = a.columns.front();
        const bool hasFrequency =
                first.name == "frequency" && first.values == b.columns.front().values;
        return hasFrequency ? std::to_string(first.values[band]) + " Hz"
                            : "band " + std::to_string(band + 1);
    };
    std::vector<std::string> lines;
    for (size_t i = 0; i < a.columns.size(); ++i) {
        const auto changes = rowChanges(a.columns[i].values, b.columns[i].values, bandName);
        if (!changes.empty()) {
            lines.push_back(a.columns[i].name + " at " + joined(changes, ", "));
        }
    }
    for (size_t i = 0; i < a.fields.size(); ++i) {
        const auto& [name, value] = a.fields[i];
        if (value != b.fields[i].second) {
            lines.push_back(name + ": " + changeText(value, b.fields[i].second));
        }
    }
    const std::string rest = hasParts(a) ? a.restName + ' ' : "value ";
    const bool areAlike = a.rest.size() == b.rest.size();
    const auto changes = rowChanges(a.rest, areAlike ? b.rest : a.rest, [&rest](size_t place) {
        return rest + std::to_string(place + 1);
    });
    if (!areAlike || changes.size() > kMaxPlaces) {
        lines.insert(lines.end(), {"OLD: " + listText(a.rest), "NEW: " + listText(b.rest)});
    } else if (!changes.empty()) {
        lines.push_back(joined(changes, ", "));
    }
    return lines;
}

/** How the values of an item differ, below its name. */
std::string detailsOf(const Item& a, const Item& b) {
    std::ostringstream details;
    if (a.value.is_null() || b.value.is_null()) {
        printValues(a.value.is_null() ? b.shape : a.shape, details);
    } else if (a.value.size() > 1 || b.value.size() > 1) {
        // Where the parts are not the same, the rows are compared as they are.
        const bool areAlike = haveSameParts(a.shape, b.shape);
        for (const std::string& change :
             areAlike ? partChanges(a.shape, b.shape)
                      : partChanges({{}, {}, a.value, ""}, {{}, {}, b.value, ""})) {
            details << std::string(kValueColumn, ' ') << wrapped(change, kValueColumn) << '\n';
        }
    }
    return details.str();
}

/** The lines on a difference, without its group and device. */
std::string describe(const std::string& name, const Pair& pair, const Style& style) {
    const auto& [a, b] = pair.items;
    const std::string change = name + "  " + changeText(a.value, b.value);
    const std::string meaning = pair.head.value("meaning", "");
    const auto linesOf = [](const Item& item) {
        return item.lines.empty() ? "no line" : linesText(item.lines);
    };
    return "    " +
           (a.value.is_null()   ? style.added(change)
            : b.value.is_null() ? style.removed(change)
                                : change) +
           (meaning.empty() ? "" : "  " + style.faint(meaning)) + '\n' + detailsOf(a, b) +
           std::string(kValueColumn, ' ') + style.faint(linesOf(a) + " -> " + linesOf(b)) + '\n';
}

/** [{in, device, code, meaning, a, b, aLines, bLines}], and the same as text. */
Json differencesOf(const Groups& groups, std::ostream& text) {
    const Style style;
    const auto jsonOf = [](const Json& value) {
        return isEmptyText(value) ? Json::array() : value;
    };
    Json differences = Json::array();
    bool areShared = false;
    for (const auto& [title, group] : groups) {
        const size_t before = differences.size();
        const bool isInBoth = group.isThere[0] && group.isThere[1];
        Sections sections;
        for (const auto& [key, pair] : group.pairs) {
            const auto& [a, b] = pair.items;
            if (a.value == b.value) {
                continue;
            }
            Json& json = differences.emplace_back(Json{{"in", title}});
            json.update(pair.head);
            json.update({{"a", jsonOf(a.value)},
                         {"b", jsonOf(b.value)},
                         {"aLines", a.lines},
                         {"bLines", b.lines}});
            // Devices with the same differences share them.
            if (isInBoth) {
                addToSections(pair.head.value("device", ""), describe(key.second, pair, style),
                              sections);
            }
        }
        if (differences.size() == before) {
            continue;
        }
        text << style.heading(title) << '\n';
        const std::string count = countText(differences.size() - before, "value", "values");
        if (!isInBoth) {
            text << "  "
                 << (group.isThere[0] ? style.removed(count + " only in OLD")
                                      : style.added(count + " only in NEW"))
                 << '\n';
        }
        printSections(sections, text);
        const auto isSame = [](const auto& a, const auto& b) { return a.second == b.second; };
        areShared |= std::adjacent_find(sections.begin(), sections.end(), isSame) != sections.end();
    }
    text << (differences.empty() ? "no differences"
                                 : countText(differences.size(), "difference", "differences"))
         << (areShared ? ", counted for each device\n" : "\n");
    return differences;
}

struct DiffOptions {
    std::string left;
    std::string right;
    bool ofObjects = false;
    bool json = false;
};

/** Whether the documents differ. */
bool diff(const DiffOptions& options, std::ostream& out) {
    const auto add = options.ofObjects ? addObjects : addLists;
    Groups groups;
    add(LoadedDocument(options.left), 0, groups);
    add(LoadedDocument(options.right), 1, groups);
    std::ostringstream text;
    const Json differences = differencesOf(groups, text);
    if (options.json) {
        printJson({{"a", options.left}, {"b", options.right}, {"differences", differences}}, out);
    } else {
        out << text.str();
    }
    return !differences.empty();
}

}  // namespace

void addDiff(CLI::App& app, int& status) {
    CLI::App* const command = app.add_subcommand(
            "diff",
            "Compare what the effect gets from two tuning documents; exit status 1 if it differs");
    const auto options = std::make_shared<DiffOptions>();
    command->add_option("OLD", options->left, "Tuning document")->required();
    command->add_option("NEW", options->right, "Tuning document")->required();
    command->add_flag("--document", options->ofObjects,
                      "Compare the values that the documents give, not what the effect gets");
    command->add_flag("--json", options->json,
                      "{a, b, differences: [{in, device, code, meaning, a, b, aLines, bLines}]}; a "
                      "is from OLD, b from NEW: values, a text, or null if absent; with --document "
                      "{in, parameter, a, ...}");
    command->footer(R"(Example:
  ormel-tuning diff shipped.xml new.xml && echo "the effect gets the same")");
    command->callback([options, &status] { status = diff(*options, std::cout) ? 1 : 0; });
}

}  // namespace ormel::tools
