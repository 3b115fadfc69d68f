#include <ormel/KivParameter.h>
#include <ormel/ValueSetter.h>

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "EffectValues.h"
#include "document/EntryOrigins.h"
#include "document/LoadedDocument.h"
#include "document/ReadTrace.h"
#include "document/XmlElements.h"
#include "text/Files.h"
#include "text/Json.h"
#include "text/Names.h"
#include "text/Progress.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

constexpr char kObjects[] = "objects";
constexpr char kProfiles[] = "profiles";
constexpr char kTunings[] = "tunings";
/** Built-in lists go by their names alone. */
constexpr char kBuiltIn[] = "";

constexpr int kValueWidth = 9;
/** Where the meanings of parameters begin, and objects behind their lines. */
constexpr size_t kMeaningColumn = 20;
constexpr size_t kObjectColumn = 12;

struct ShowOptions {
    std::string file;
    std::string profile;
    std::optional<std::string> device;
    std::vector<std::string> lists;
    std::vector<std::string> codes;
    std::vector<std::string> params;
    bool json = false;
};

/** A document, and what tells where its values come from. */
struct Source {
    explicit Source(const std::string& file) : document(file) {}

    const LoadedDocument document;
    const EntryOrigins origins{document};
    const std::vector<std::string> lines = linesOf(readDocument(document.file()));
};

/** The parameter of a name, or those of an element. Any other name throws std::runtime_error. */
std::vector<Parameter> parametersOf(const std::string& name) {
    std::vector<std::string> names(std::begin(kParameterNames), std::end(kParameterNames));
    const auto found = std::find(names.begin(), names.end(), name);
    if (found != names.end()) {
        return {static_cast<Parameter>(found - names.begin())};
    }
    if (ValueSetter* const setter = SetterCollection().getValueSetter(name)) {
        return setter->getParams();
    }
    for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
        names.emplace_back(setter->getNodeName());
    }
    const std::string nearest = nearestOf(name, names);
    throw std::runtime_error("there is no tuning parameter or element '" + name + "'" +
                             (nearest.empty() ? "" : "; the nearest is '" + nearest + "'"));
}

/** Which lists, and which of their entries. */
class Selection {
  public:
    Selection(const ShowOptions& options, const std::optional<Source>& source,
              const std::vector<EffectList>& lists)
        : mLists(options.lists.begin(), options.lists.end()) {
        if (!options.profile.empty()) {
            const auto profile = source.has_value() ? profileOf(source->document, options.profile)
                                                    : profileOf(options.profile);
            mLists.insert(kProfiles + std::to_string(profile));
        }
        const std::string device = options.device.value_or("");
        std::string tunings;
        for (const EffectList& list : lists) {
            tunings += list.kind == EffectList::Kind::TUNING ? ", " + list.name : "";
        }
        if (options.device && source && source->document.store().isXMLTuningValid(device)) {
            mLists.insert(kTunings + device);
        } else if (!device.empty()) {
            mDevice = deviceOf(device, tunings);
        }
        if (mLists.empty() && source.has_value()) {
            mLists = {kObjects, kProfiles, kTunings};
        } else if (mLists.empty()) {
            mLists = {kBuiltIn};
        }
        std::transform(options.codes.begin(), options.codes.end(),
                       std::inserter(mCodes, mCodes.end()), codeOf);
        for (const std::string& param : options.params) {
            const std::vector<Parameter> params = parametersOf(param);
            mParams.insert(params.begin(), params.end());
        }
    }

    /** Whether only some parameters are asked for; their entries then come with their reasons. */
    bool hasReasons() const { return !mCodes.empty() || !mParams.empty(); }

    bool hasObjects() const {
        return mLists.count(kObjects) > 0 && !mDevice.has_value() && !hasReasons();
    }

    bool has(const EffectList& list) const {
        constexpr const char* kKinds[] = {kProfiles, kTunings, kBuiltIn};
        const std::string kind = kKinds[static_cast<size_t>(list.kind)];
        const bool isProfile = list.kind == EffectList::Kind::PROFILE;
        const std::string name = isProfile ? std::to_string(list.profile) : list.name;
        return mLists.count(kind) > 0 || mLists.count(kind + name) > 0;
    }

    bool has(const EffectValue& entry) const {
        const auto isWanted = [this](const Origin& from) { return mParams.count(from.param) > 0; };
        const Origins& origins = entry.origins;
        return (mParams.empty() || std::any_of(origins.begin(), origins.end(), isWanted)) &&
               (mCodes.empty() || mCodes.count(entry.code) > 0) &&
               (!mDevice.has_value() || entry.device == *mDevice);
    }

  private:
    /** Kinds of lists, and single ones by kind and name. */
    std::set<std::string> mLists;
    std::optional<int32_t> mDevice;
    std::set<int32_t> mCodes;
    std::set<Parameter> mParams;
};

/** The line of the element that chose the preset of a profile's device; 0 where there is none. */
long includeLine(const LoadedDocument& document, const EffectList& list, int32_t device) {
    const Endpoint wanted = device == DEVICE_OUT_SPEAKER ? ENDPOINT_SPEAKER : ENDPOINT_HEADPHONE;
    const auto& sections = document.trace().getSections();
    const auto last = std::find_if(sections.rbegin(), sections.rend(), [&](const auto& section) {
        const auto* const endpoint = static_cast<const ProfileEndpoint*>(section.object);
        return section.owner == ParameterOwner::PROFILE_ENDPOINT && endpoint != nullptr &&
               endpoint->getEndpoint() == wanted && endpoint->getProfileId() == list.profile;
    });
    if (last == sections.rend()) {
        return 0;
    }
    const XmlElements& xml = document.elements();
    const size_t profile = xml.parent(last->element);
    for (size_t i = xml.end(profile); i-- > profile;) {
        // Of formats 3.2. the profile has it, of others each endpoint.
        const bool isOwn = xml.parent(i) == profile || xml.parent(i) == last->element;
        if (isOwn && document.trace().getElements()[i].is(DocumentElement::INCLUDE)) {
            return xml.line(i);
        }
    }
    return 0;
}

/** Each origin of an entry in words: its line, the include that chose it, its version rule. */
std::vector<std::string> reasonsOf(const Source& source, const EffectList& list,
                                   const EffectValue& entry) {
    const auto lineText = [&lines = source.lines](long line) {
        const bool isThere = line > 0 && static_cast<size_t>(line) <= lines.size();
        return "line " + std::to_string(line) +
               (isThere ? ": " + std::string(trimmed(lines[static_cast<size_t>(line - 1)])) : "");
    };
    const bool isOfPreset = entry.code == kivCode(IEBS) || entry.code == kivCode(IEID);
    const long include = isOfPreset ? includeLine(source.document, list, entry.device) : 0;
    std::vector<std::string> reasons;
    for (const Origin& origin : entry.origins) {
        std::string reason = nameOf(origin.kind);
        if (origin.kind == Origin::Kind::LINE) {
            reason = lineText(origin.line);
        } else if (origin.kind == Origin::Kind::VERSION_RULE) {
            reason += " of format " + source.document.objects().getFormatVersion();
        }
        reasons.push_back(reason + (include == 0 ? "" : "; included in " + lineText(include)));
    }
    return reasons;
}

/** The entries of a list that are selected. */
std::vector<EffectValue> entriesOf(const EffectList& list, const std::optional<Source>& source,
                                   const Selection& selection) {
    const auto origins = list.kind == EffectList::Kind::BUILT_IN
                                 ? std::vector<Origins>(list.entries.size())
                                 : source->origins.originsOf(list);
    std::vector<EffectValue> entries;
    for (size_t i = 0; i < list.entries.size(); ++i) {
        EffectValue entry = valueOf(list.entries[i], origins[i]);
        if (!selection.has(entry)) {
            continue;
        }
        if (selection.hasReasons() && !entry.origins.empty()) {
            entry.reasons = reasonsOf(*source, list, entry);
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

/** "lines 12, 40; version rule". */
std::string originText(const Origins& origins) {
    std::string text = linesText(sourceLines(origins));
    for (const auto kind :
         {Origin::Kind::ABSENT, Origin::Kind::DEFAULT, Origin::Kind::VERSION_RULE}) {
        if (std::any_of(origins.begin(), origins.end(),
                        [kind](const Origin& origin) { return origin.kind == kind; })) {
            text.append(text.empty() ? "" : "; ").append(nameOf(kind));
        }
    }
    return text;
}

/** The lines about an entry; its origins have a line of their own if they do not fit. */
std::string describe(const EffectValue& entry, const Style& style) {
    const auto [letters, meaning] = codeText(entry.code);
    const std::string origin = originText(entry.origins);
    const bool fits = kMeaningColumn + meaning.size() + 2 + origin.size() <= kColumns;
    std::ostringstream out;
    out << "    " << std::left << std::setw(5) << letters << std::right << std::setw(kValueWidth)
        << valueText(*entry.values) << "  " << wrapped(meaning, kMeaningColumn);
    if (!origin.empty()) {
        out << (fits ? "  " : '\n' + std::string(kMeaningColumn, ' ')) << style.faint(origin);
    }
    out << '\n';
    printValues(entry.shape, out);
    for (size_t i = 0; i < entry.reasons.size(); ++i) {
        const std::string why = parameterName(entry.origins[i].param) + (": " + entry.reasons[i]);
        out << std::string(kValueColumn, ' ') << style.faint(wrapped(why, kValueColumn)) << '\n';
    }
    return out.str();
}

/** The entries by device. Devices one after another whose entries are the same share them. */
void printList(const std::string& title, const std::vector<EffectValue>& entries,
               const Style& style, std::ostream& out) {
    const std::string count = countText(entries.size(), "entry", "entries");
    out << style.heading(title + ": " + count) << '\n';
    Sections sections;
    for (const EffectValue& entry : entries) {
        addToSections(deviceText(entry.device), describe(entry, style), sections);
    }
    printSections(sections, out);
}

void printObject(const Json& object, const Style& style, std::ostream& out) {
    std::vector<std::string> fields;
    for (const auto& [name, value] : object.items()) {
        if (name != "object" && name != "line" && name != "values") {
            const std::string text = value.is_string() ? printable(value) : value.dump();
            fields.push_back(name + ' ' + (text.empty() ? "-" : text));
        }
    }
    // What a tuning's start tag gives as well, and much depends on.
    const Json values = object.value("values", Json::object());
    for (const char* const name : {parameterName(OUTPUT_CHANNELS), parameterName(ORIENTATION)}) {
        if (values.contains(name)) {
            fields.push_back(name + (' ' + std::to_string(firstOr0(values[name]))));
        }
    }
    std::string line = object.contains("line") ? "line " + object["line"].dump() : "";
    line.resize(std::max(line.size() + 1, kObjectColumn), ' ');
    const std::string title = printable(object["object"]) + (fields.empty() ? "" : ": ");
    out << style.faint(line) << wrapped(title + joined(fields, ", "), kObjectColumn) << '\n';
}

void show(const ShowOptions& options, std::ostream& out) {
    std::optional<ProgressStep> step("looking where values come from");
    std::optional<Source> source;
    std::vector<EffectList> lists;
    if (!options.file.empty()) {
        lists = source.emplace(options.file).document.lists();
    }
    SpatializerParamArray store{SpatializerParamArray::Empty()};
    const std::vector<EffectList> builtIn = builtInLists(store);
    lists.insert(lists.end(), builtIn.begin(), builtIn.end());
    const Selection selection(options, source, lists);
    const Json objects =
            source && selection.hasObjects() ? objectsOf(source->document) : Json::array();
    Json json = options.file.empty() ? Json::object() : Json{{"file", options.file}};
    json.update({{"objects", objects}, {"lists", Json::array()}});
    const Style style;
    std::ostringstream text;
    for (const Json& object : objects) {
        printObject(object, style, text);
    }
    for (const EffectList& list : lists) {
        if (!selection.has(list)) {
            continue;
        }
        const std::vector<EffectValue> entries = entriesOf(list, source, selection);
        // If parameters are asked for, a list that has none of them is left out.
        if (entries.empty() && selection.hasReasons()) {
            continue;
        }
        text << (objects.empty() && json["lists"].empty() ? "" : "\n");
        printList(titleOf(list), entries, style, text);
        json["lists"].push_back({{"list", titleOf(list)},
                                 {"builtIn", list.kind == EffectList::Kind::BUILT_IN},
                                 {"entries", entries}});
    }
    if (objects.empty() && json["lists"].empty()) {
        throw std::runtime_error(options.file.empty()
                                         ? "show: FILE is required for this; see --help"
                                         : options.file + ": no entry matches these options");
    }
    step.reset();
    options.json ? printJson(json, out) : void(out << text.str());
}

std::vector<std::string> builtInNames() {
    std::vector<std::string> names = profileNames();
    names.insert(names.begin(), profileText(ORM_SPATIALIZER_PROFILE_COMMON));
    return names;
}

}  // namespace

void addShow(CLI::App& app, int& /* status */) {
    CLI::App* const command = app.add_subcommand(
            "show",
            "Show the values that the library derives from a tuning document, and their sources");
    const auto options = std::make_shared<ShowOptions>();
    std::vector<std::string> lists = builtInNames();
    lists.insert(lists.begin(), {kObjects, kProfiles, kTunings});
    command->add_option("FILE", options->file,
                        "Tuning document; without one, the library's built-in lists are shown");
    command->add_option("--profile", options->profile,
                        "Only the document's list for a profile: " + joined(profileNames(), ", ") +
                                ", or a number");
    command->add_option("--device", options->device,
                        "Only the list of a tuning device; or only the entries for an output "
                        "device: " +
                                joined(deviceNames(), ", ") + ", or a number");
    command->add_option("--list", options->lists,
                        "Only these lists; may be repeated. Of the document: " +
                                joined({kObjects, kProfiles, kTunings}, ", ") +
                                ". Built in: " + joined(builtInNames(), ", "))
            ->allow_extra_args(false)
            ->check(CLI::IsMember(lists).description(""))
            ->type_name("LIST");
    command->add_option(
                   "--code", options->codes,
                   "Only entries of this effect parameter, with their sources; may be repeated")
            ->allow_extra_args(false)
            ->type_name("CODE");
    command->add_option(
                   "--parameter", options->params,
                   "Only entries made from this tuning parameter or element, with their sources; "
                   "may be repeated")
            ->allow_extra_args(false)
            ->type_name("NAME");
    command->add_flag("--json", options->json,
                      "{file, objects: [{object, line, ..., values: {PARAMETER: [...]}}], lists: "
                      "[{list, builtIn, entries: [{device, deviceId, code, meaning, values, "
                      "structure, from: [{parameter, origin, line, why}]}]}]}");
    command->footer(
            R"(Sources of an entry: the lines of its elements; "version rule" or "default" if
the library sets the value; "absent" if nothing does.

Examples:
  ormel-tuning show examples/tablet-quad.xml --profile movie --device speaker
  ormel-tuning show examples/tablet-quad.xml --profile movie --device speaker --code ieid
  ormel-tuning show --list common)");
    command->callback([options] { show(*options, std::cout); });
}

}  // namespace ormel::tools
