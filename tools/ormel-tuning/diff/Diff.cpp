#include <ormel/StoreFront.h>

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "document/DocumentObjects.h"
#include "document/LoadedDocument.h"
#include "document/RecordingEffect.h"
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

Items itemsOf(const RecordingEffect& effect) {
    Items items;
    for (const auto& [place, values] : effect.getValues()) {
        const auto [device, code] = place;
        const auto [letters, meaning] = codeText(code);
        items[{device, letters}] = {deviceText(device), letters, meaning, code, values};
    }
    return items;
}

Items itemsOf(const Json& object) {
    Items items;
    for (const auto& [name, field] : object.items()) {
        if (name == "values") {
            for (const auto& [param, values] : field.items()) {
                if (!values.empty()) {
                    items[{0, param}] = {"", param, "", 0, values};
                }
            }
        } else if (name != "object" && name != "line") {
            const std::string text = field.is_string() ? field.get<std::string>() : field.dump();
            items[{0, name}] = {"", name, "", 0, {}, printable(text)};
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
    StoreFront front(document.store());
    Groups groups;
    for (const EffectList& list : document.lists()) {
        RecordingEffect effect;
        if (list.kind == EffectList::Kind::PROFILE) {
            front.setProfile(list.profile, &effect, false);
            // Its name is none of the effect's business.
            groups.emplace("profile " + std::to_string(list.profile), itemsOf(effect));
        } else {
            front.loadTuningDevice(list.name, &effect);
            groups.emplace(titleOf(list), itemsOf(effect));
        }
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

/** The bands whose values differ; none when the shapes do not allow the comparison. */
std::optional<std::vector<std::string>> bandChanges(const Item& left, const Item& right) {
    const std::optional<Shape> a = shapeOf(left.code, left.values);
    const std::optional<Shape> b = shapeOf(right.code, right.values);
    const bool areBands = a.has_value() && b.has_value() && !a->columns.empty() &&
                          a->fields == b->fields && left.values.size() == right.values.size();
    if (!areBands) {
        return std::nullopt;
    }
    const bool areSameFrequencies = frequenciesOf(*a) == frequenciesOf(*b);
    const auto nameOf = [&a, areSameFrequencies](size_t band) {
        const Values frequencies = frequenciesOf(*a);
        const bool hasFrequency = areSameFrequencies && !frequencies.empty();
        return hasFrequency ? std::to_string(frequencies[band]) + " Hz"
                            : "band " + std::to_string(band + 1);
    };
    std::vector<std::string> lines;
    for (size_t i = 0; i < a->columns.size(); ++i) {
        const auto changes = rowChanges(a->columns[i].values, b->columns[i].values, nameOf);
        if (!changes.empty()) {
            lines.push_back(a->columns[i].name + " at " + joined(changes, ", "));
        }
    }
    return lines;
}

std::vector<std::string> detailsOf(const Difference& difference) {
    if (difference.left == nullptr || difference.right == nullptr) {
        const Values& values = difference.item().values;
        return values.size() > 1 ? std::vector{listText(values)} : std::vector<std::string>();
    }
    const Item& left = *difference.left;
    const Item& right = *difference.right;
    if (left.values.size() <= 1 && right.values.size() <= 1) {
        return {};
    }
    if (const auto bands = bandChanges(left, right); bands.has_value()) {
        return *bands;
    }
    if (left.values.size() == right.values.size()) {
        const auto changes = rowChanges(left.values, right.values, [](size_t place) {
            return "value " + std::to_string(place + 1);
        });
        if (changes.size() <= kMaxPlaces) {
            return {joined(changes, ", ")};
        }
    }
    return {"a: " + listText(left.values), "b: " + listText(right.values)};
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
    return text;
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
            "{a, b, differences: [{in, device, code, meaning, a, b}]}, a and b being "
            "values, a text, or null where absent; with --document {in, parameter, a, b}");
    command->footer(kExample);
    command->callback([options, &status] { status = diff(*options, std::cout) ? 1 : 0; });
}

}  // namespace ormel::tools
