#include <algorithm>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "document/AppliedLists.h"
#include "document/EntryOrigins.h"
#include "document/LoadedDocument.h"
#include "show/ShowText.h"
#include "text/Json.h"
#include "text/Names.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

using Values = std::vector<int32_t>;

/** Where a parameter's details begin below its name. */
constexpr size_t kDetailColumn = 10;
/** Rows that differ in more places are shown as they are. */
constexpr size_t kMaxPlaces = 6;
constexpr char kExample[] = R"(Example:
  ormel-tuning diff shipped.xml new.xml && echo "the effect gets the same")";

/** A parameter of an object, or of a device in a list. */
struct Item {
    /** What it belongs to within its group, such as a device; may be empty. */
    std::string part;
    std::string name;
    std::string meaning;
    /** The effect parameter's code; 0 for what is none. */
    int32_t code = 0;
    /** Numbers, or a text. */
    Values values = {};
    std::string text = {};
    /** What the values are by their places, where that is known. */
    std::optional<Shape> shape = {};
    /** The lines of the document that it comes from. */
    std::set<long> lines = {};
};

bool isSame(const Item& left, const Item& right) {
    return left.values == right.values && left.text == right.text;
}

/** The items of a list or an object, by part and name. */
using Items = std::map<std::pair<int32_t, std::string>, Item>;
/** The lists or objects of a document, by title. */
using Groups = std::map<std::string, Items>;

/** An item of two documents; null in the one that lacks it. */
struct Difference {
    const Item* left = nullptr;
    const Item* right = nullptr;

    const Item& item() const { return left == nullptr ? *right : *left; }
    bool isNone() const { return left != nullptr && right != nullptr && isSame(*left, *right); }
};

/** The differences in a list or an object, and in all of them by title. */
using Differences = std::map<Items::key_type, Difference>;
using GroupDifferences = std::map<std::string, Differences>;

Items itemsOf(const AppliedList& applied, const std::vector<Origins>& origins) {
    Items items;
    for (const auto& [place, values] : applied.values) {
        const auto [device, code] = place;
        const auto [letters, meaning] = codeText(code);
        items[{device, letters}] = {deviceText(device),
                                    letters,
                                    meaning,
                                    code,
                                    values,
                                    "",
                                    shapeOf(applied, device, code)};
    }
    // Of entries for one device and code the effect keeps the last.
    for (size_t i = 0; i < origins.size(); ++i) {
        const Entry& entry = applied.list.entries[i];
        const auto item = items.find({entry.device, codeText(entry.code).letters});
        if (item == items.end()) {
            continue;
        }
        item->second.lines.clear();
        for (const Origin& origin : origins[i]) {
            if (origin.kind == Origin::Kind::LINE) {
                item->second.lines.insert(origin.line);
            }
        }
    }
    return items;
}

Items itemsOf(const Json& object) {
    Items items;
    std::set<long> lines;
    if (object.contains("line")) {
        lines.insert(object["line"].get<long>());
    }
    for (const auto& [name, field] : object.items()) {
        if (name == "values") {
            for (const auto& [param, values] : field.items()) {
                if (!values.empty()) {
                    items[{0, param}] = {"", param, "", 0, values, "", {}, lines};
                }
            }
        } else if (name != "object" && name != "line") {
            const std::string text = field.is_string() ? field.get<std::string>() : field.dump();
            items[{0, name}] = {"", name, "", 0, {}, printable(text), {}, lines};
        }
    }
    return items;
}

Groups objectGroups(const LoadedDocument& document) {
    Groups groups;
    for (const Json& object : objectsOf(document)) {
        groups.emplace(printable(object["object"]), itemsOf(object));
    }
    return groups;
}

/** What an effect keeps of each profile and each tuning device, as the front applies them. */
Groups effectGroups(const LoadedDocument& document) {
    const EntryOrigins origins(document);
    Groups groups;
    for (const AppliedList& applied : appliedLists(document)) {
        const EffectList& list = applied.list;
        // A profile's name is none of the effect's business.
        const bool isProfile = list.kind == EffectList::Kind::PROFILE;
        groups.emplace(isProfile ? "profile " + std::to_string(list.profile) : titleOf(list),
                       itemsOf(applied, origins.originsOf(list)));
    }
    return groups;
}

template <typename Map, typename Predicate>
void eraseIf(Map& map, Predicate isUnwanted) {
    for (auto at = map.begin(); at != map.end();) {
        at = isUnwanted(at->second) ? map.erase(at) : std::next(at);
    }
}

GroupDifferences differencesOf(const Groups& left, const Groups& right) {
    GroupDifferences all;
    const auto add = [&all](const Groups& groups, const Item* Difference::*side) {
        for (const auto& [group, items] : groups) {
            for (const auto& [key, item] : items) {
                all[group][key].*side = &item;
            }
        }
    };
    add(left, &Difference::left);
    add(right, &Difference::right);
    for (auto& [group, differences] : all) {
        eraseIf(differences, [](const Difference& difference) { return difference.isNone(); });
    }
    eraseIf(all, [](const Differences& differences) { return differences.empty(); });
    return all;
}

/** null without an item. */
Json jsonOf(const Item* item) {
    if (item == nullptr) {
        return nullptr;
    }
    return item->text.empty() ? Json(item->values) : Json(item->text);
}

Json jsonOf(const std::string& group, const Difference& difference) {
    const Item& item = difference.item();
    Json json = {{"in", group}};
    if (item.code != 0) {
        json.update({{"device", item.part}, {"code", item.name}, {"meaning", item.meaning}});
    } else {
        json["parameter"] = item.name;
    }
    json.update({{"a", jsonOf(difference.left)}, {"b", jsonOf(difference.right)}});
    json["aLines"] = difference.left == nullptr ? std::set<long>() : difference.left->lines;
    json["bLines"] = difference.right == nullptr ? std::set<long>() : difference.right->lines;
    return json;
}

/** "32 -> 48", or what only one document has; just its length for a row that keeps it. */
std::string changeText(const Difference& difference) {
    const bool keepsLength = difference.left != nullptr && difference.right != nullptr &&
                             difference.left->values.size() > 1 &&
                             difference.left->values.size() == difference.right->values.size();
    if (keepsLength) {
        return valueText(difference.left->values);
    }
    const auto textOf = [](const Item* item) {
        if (item == nullptr) {
            return std::string("absent");
        }
        return item->text.empty() ? valueText(item->values) : item->text;
    };
    return textOf(difference.left) + " -> " + textOf(difference.right);
}

/** The changes between two rows of one length, each place under the name that it is given. */
template <typename NameOf>
std::vector<std::string> rowChanges(const Values& left, const Values& right, NameOf nameOf) {
    std::vector<std::string> changes;
    for (size_t i = 0; i < left.size(); ++i) {
        if (left[i] != right[i]) {
            changes.push_back(nameOf(i) + ": " + std::to_string(left[i]) + " -> " +
                              std::to_string(right[i]));
        }
    }
    return changes;
}

Values frequenciesOf(const Shape& shape) {
    for (const Parameter param :
         {IEQ_FREQUENCY, GEQ_FREQUENCY, REGULATOR_FREQUENCY, AUDIO_OPTIMIZER_FREQUENCY}) {
        if (const Shape::Column* const column = findColumn(shape, param); column != nullptr) {
            return column->values;
        }
    }
    return {};
}

std::vector<std::string> columnChanges(const Shape& a, const Shape& b) {
    const Values frequencies = frequenciesOf(a);
    const bool hasFrequency = frequencies == frequenciesOf(b) && !frequencies.empty();
    std::vector<std::string> lines;
    for (size_t i = 0; i < a.columns.size(); ++i) {
        const auto changes = rowChanges(a.columns[i].values, b.columns[i].values, [&](size_t band) {
            return hasFrequency ? std::to_string(frequencies[band]) + " Hz"
                                : "band " + std::to_string(band + 1);
        });
        if (!changes.empty()) {
            lines.push_back(a.columns[i].name + " at " + joined(changes, ", "));
        }
    }
    return lines;
}

/** The places that differ, or where they are many both rows as they are. */
std::vector<std::string> listChanges(const Values& left, const Values& right,
                                     const std::string& name) {
    if (left.size() == right.size()) {
        const auto changes = rowChanges(
                left, right, [&name](size_t place) { return name + std::to_string(place + 1); });
        if (changes.size() <= kMaxPlaces) {
            return changes.empty() ? changes : std::vector{joined(changes, ", ")};
        }
    }
    return {"a: " + listText(left), "b: " + listText(right)};
}

/** The parts of two values that differ; none when their shapes do not allow the comparison. */
std::optional<std::vector<std::string>> partChanges(const Item& left, const Item& right) {
    if (!left.shape.has_value() || !right.shape.has_value()) {
        return std::nullopt;
    }
    const Shape& a = *left.shape;
    const Shape& b = *right.shape;
    const auto bandCount = [](const Shape& shape) {
        return shape.columns.empty() ? 0 : shape.columns.front().values.size();
    };
    if (a.fields.size() != b.fields.size() || a.columns.size() != b.columns.size() ||
        bandCount(a) != bandCount(b)) {
        return std::nullopt;
    }
    std::vector<std::string> lines = columnChanges(a, b);
    for (size_t i = 0; i < a.fields.size(); ++i) {
        if (a.fields[i] != b.fields[i]) {
            lines.push_back(a.fields[i].first + ": " + std::to_string(a.fields[i].second) + " -> " +
                            std::to_string(b.fields[i].second));
        }
    }
    for (std::string& change : listChanges(a.rest, b.rest, a.restName + " ")) {
        lines.push_back(std::move(change));
    }
    return lines;
}

std::vector<std::string> detailsOf(const Difference& difference) {
    const Item& item = difference.item();
    if (difference.left == nullptr || difference.right == nullptr) {
        const bool isRow = item.values.size() > 1 && !item.shape.has_value();
        return isRow ? std::vector{listText(item.values)} : std::vector<std::string>();
    }
    const Item& left = *difference.left;
    const Item& right = *difference.right;
    if (left.values.size() <= 1 && right.values.size() <= 1) {
        return {};
    }
    const auto parts = partChanges(left, right);
    return parts.has_value() ? *parts : listChanges(left.values, right.values, "value ");
}

/** "line 1 -> lines 2, 3". */
std::string linesText(const Difference& difference) {
    const auto textOf = [](const Item* item) {
        if (item == nullptr || item->lines.empty()) {
            return std::string("no line");
        }
        std::string text;
        for (const long line : item->lines) {
            text += (text.empty() ? "" : ", ") + std::to_string(line);
        }
        return (item->lines.size() == 1 ? "line " : "lines ") + text;
    };
    return textOf(difference.left) + " -> " + textOf(difference.right);
}

/** The lines on a difference, without its group and part. */
std::string describe(const Difference& difference, const Style& style) {
    const Item& item = difference.item();
    const std::string change = item.name + "  " + changeText(difference);
    std::string text = "    ";
    if (difference.left == nullptr) {
        text += style.added(change);
    } else {
        text += difference.right == nullptr ? style.removed(change) : change;
    }
    if (!item.meaning.empty()) {
        text += "  " + style.faint(item.meaning);
    }
    text += '\n';
    for (const std::string& detail : detailsOf(difference)) {
        text.append(kDetailColumn, ' ').append(wrapped(detail, kDetailColumn)).append("\n");
    }
    std::ostringstream parts;
    if ((difference.left == nullptr || difference.right == nullptr) && item.shape.has_value()) {
        printStructure(*item.shape, parts);
    }
    return text + parts.str() + std::string(kDetailColumn, ' ') +
           style.faint(linesText(difference)) + '\n';
}

/** The differences of one group; devices with the same ones share them. */
void printGroup(const Differences& differences, const Style& style, std::ostream& out) {
    Sections sections;
    for (const auto& [key, difference] : differences) {
        addToSections(difference.item().part, describe(difference, style), sections);
    }
    printSections(sections, out);
}

void print(const GroupDifferences& all, const Groups& left, const Groups& right,
           std::ostream& out) {
    const Style style;
    size_t total = 0;
    for (const auto& [group, differences] : all) {
        total += differences.size();
        const std::string count = countText(differences.size(), "value", "values") + " in ";
        out << style.heading(group) << '\n';
        if (left.count(group) == 0) {
            out << "  " << style.added(count + "b only") << '\n';
        } else if (right.count(group) == 0) {
            out << "  " << style.removed(count + "a only") << '\n';
        } else {
            printGroup(differences, style, out);
        }
    }
    out << (total == 0 ? "no differences" : countText(total, "difference", "differences")) << '\n';
}

struct DiffOptions {
    std::string left;
    std::string right;
    bool ofObjects = false;
    bool json = false;
};

/** Whether the documents differ. */
bool diff(const DiffOptions& options, std::ostream& out) {
    const LoadedDocument left(options.left);
    const LoadedDocument right(options.right);
    const auto groupsOf = options.ofObjects ? objectGroups : effectGroups;
    const Groups leftGroups = groupsOf(left);
    const Groups rightGroups = groupsOf(right);
    const GroupDifferences all = differencesOf(leftGroups, rightGroups);
    if (!options.json) {
        print(all, leftGroups, rightGroups, out);
        return !all.empty();
    }
    Json list = Json::array();
    for (const auto& [group, differences] : all) {
        for (const auto& [key, difference] : differences) {
            list.push_back(jsonOf(group, difference));
        }
    }
    printJson({{"a", options.left}, {"b", options.right}, {"differences", list}}, out);
    return !all.empty();
}

}  // namespace

void addDiff(CLI::App& app, int& status) {
    CLI::App* const command = app.add_subcommand(
            "diff", "Compare what two tuning documents make an effect get; exit 1 if they differ");
    const auto options = std::make_shared<DiffOptions>();
    command->add_option("A", options->left, "Tuning document")->required();
    command->add_option("B", options->right, "Tuning document")->required();
    command->add_flag("--document", options->ofObjects,
                      "Compare the tuning values as the documents give them");
    command->add_flag(
            "--json", options->json,
            "{a, b, differences: [{in, device, code, meaning, a, b, aLines, bLines}]}, a and b "
            "being "
            "values, a text, or null where absent; with --document {in, parameter, a, ...}");
    command->footer(kExample);
    command->callback([options, &status] { status = diff(*options, std::cout) ? 1 : 0; });
}

}  // namespace ormel::tools
