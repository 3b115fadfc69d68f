#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "ShowText.h"
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

void to_json(Json& json, const Shape& shape) {
    json = Json::object();
    for (const auto& [name, value] : shape.fields) {
        json[name] = value;
    }
    if (!shape.columns.empty()) {
        json["bands"] = Json::array();
    }
    for (const Shape::Column& column : shape.columns) {
        for (size_t band = 0; band < column.values.size(); ++band) {
            json["bands"][band][column.name] = column.values[band];
        }
    }
    if (!shape.rest.empty()) {
        json[shape.restName] = shape.rest;
    }
}

void to_json(Json& json, const Entry& entry) {
    const auto [letters, meaning] = codeText(entry.code);
    json = {{"device", deviceText(entry.device)},
            {"deviceId", entry.device},
            {"code", letters},
            {"meaning", meaning},
            {"values", entry.values}};
    if (const auto shape = shapeOf(entry.code, entry.values); shape.has_value()) {
        json["structure"] = *shape;
    }
}

void to_json(Json& json, const Origin& origin) {
    json = {{"parameter", parameterName(origin.param)}, {"origin", nameOf(origin.kind)}};
    if (origin.kind == Origin::Kind::LINE) {
        json["line"] = origin.line;
    }
}

namespace {

constexpr char kObjects[] = "objects";
constexpr char kProfiles[] = "profiles";
constexpr char kTunings[] = "tunings";

struct ShowOptions {
    std::string file;
    std::string profile;
    std::string device;
    std::vector<std::string> lists;
    std::vector<std::string> codes;
    std::vector<std::string> params;
    bool json = false;
};

/** Which lists, and which of their entries. */
class Selection {
  public:
    Selection(const ShowOptions& options, const std::vector<EffectList>& known)
        : mOptions(options) {
        if (!options.profile.empty()) {
            mProfile = profileOf(options.profile);
        }
        const bool isTuningDevice =
                std::any_of(known.begin(), known.end(), [&options](const EffectList& list) {
                    return list.kind == EffectList::Kind::TUNING && list.name == options.device;
                });
        if (isTuningDevice) {
            mTuningDevice = options.device;
        } else if (!options.device.empty()) {
            mDevice = deviceOf(options.device);
        }
        for (const std::string& code : options.codes) {
            mCodes.insert(codeOf(code));
        }
        for (const std::string& param : options.params) {
            const auto* const found =
                    std::find(std::begin(kParameterNames), std::end(kParameterNames), param);
            if (found == std::end(kParameterNames)) {
                throw std::runtime_error("there is no tuning parameter '" + param + "'");
            }
            mParams.insert(static_cast<size_t>(found - std::begin(kParameterNames)));
        }
    }

    bool hasObjects() const { return isWhole(kObjects) && !mDevice.has_value() && !hasReasons(); }

    /** Whether some parameters alone are asked for, which then say all that stands behind them. */
    bool hasReasons() const { return !mCodes.empty() || !mParams.empty(); }

    bool has(const EffectList& list) const {
        switch (list.kind) {
            case EffectList::Kind::PROFILE:
                return isWhole(kProfiles) || list.profile == mProfile;
            case EffectList::Kind::TUNING:
                return isWhole(kTunings) || list.name == mTuningDevice;
            case EffectList::Kind::BUILT_IN:
                break;
        }
        return isNamed(list.name) || (mOptions.file.empty() && isWhole(list.name));
    }

    bool has(const Entry& entry, const Origins& origins) const {
        const bool isOfParam =
                mParams.empty() ||
                std::any_of(origins.begin(), origins.end(), [this](const Origin& origin) {
                    return mParams.count(static_cast<size_t>(origin.param)) > 0;
                });
        return isOfParam && (mCodes.empty() || mCodes.count(entry.code) > 0) &&
               (!mDevice.has_value() || entry.device == *mDevice);
    }

  private:
    bool isNamed(const std::string& list) const {
        return std::find(mOptions.lists.begin(), mOptions.lists.end(), list) !=
               mOptions.lists.end();
    }

    /** Whether a kind of list is asked for, or everything. */
    bool isWhole(const std::string& kind) const {
        const bool isAll =
                mOptions.lists.empty() && !mProfile.has_value() && !mTuningDevice.has_value();
        return isAll || isNamed(kind);
    }

    const ShowOptions& mOptions;
    std::optional<OrmSpatializerProfileId> mProfile;
    std::optional<std::string> mTuningDevice;
    std::optional<int32_t> mDevice;
    std::set<int32_t> mCodes;
    std::set<size_t> mParams;
};

/** The line of the element that chose the preset of a profile's device; 0 where there is none. */
long includeLine(const LoadedDocument& document, const EffectList& list, int32_t device) {
    const Endpoint wanted = device == DEVICE_OUT_SPEAKER ? ENDPOINT_SPEAKER : ENDPOINT_HEADPHONE;
    const XmlElements& xml = document.elements();
    const auto& elements = document.trace().getElements();
    // Of formats 3.2. the profile has it, of others each endpoint.
    std::set<size_t> owners;
    for (const ReadSection& section : document.trace().getSections()) {
        for (const ProfileEndpoint* const endpoint : document.objects().getProfileEndpoints()) {
            const bool isTheirs = endpoint == section.object && endpoint->getEndpoint() == wanted;
            if (isTheirs && endpoint->getProfileId() == list.profile) {
                owners = {section.element, xml.parent(section.element)};
            }
        }
    }
    long line = 0;
    for (size_t element = 0; element < elements.size(); ++element) {
        const bool isInclude = elements[element].is(DocumentElement::INCLUDE);
        line = isInclude && owners.count(xml.parent(element)) > 0 ? xml.line(element) : line;
    }
    return line;
}

/** Says of each origin of an entry what stands behind it. */
void addReasons(const LoadedDocument& document, const std::vector<std::string>& lines,
                const EffectList& list, Json& entry) {
    const auto lineText = [&lines](long line) {
        const bool isThere = line > 0 && static_cast<size_t>(line) <= lines.size();
        return "line " + std::to_string(line) +
               (isThere ? ": " + std::string(trimmed(lines[static_cast<size_t>(line - 1)])) : "");
    };
    for (Json& origin : entry["from"]) {
        std::string why = origin["origin"];
        if (origin.contains("line")) {
            why = lineText(origin["line"]);
        } else if (why == nameOf(Origin::Kind::VERSION_RULE)) {
            why += " of format " + document.objects().getFormatVersion();
        }
        const bool isOfPreset = origin["parameter"].get<std::string>().compare(0, 4, "ieq_") == 0 &&
                                (entry["code"] == "iebs" || entry["code"] == "ieid");
        const long include = isOfPreset ? includeLine(document, list, entry["deviceId"]) : 0;
        origin["why"] = why + (include == 0 ? "" : "; included in " + lineText(include));
    }
}

/** The list's entries that are selected, with what stands behind each. */
Json shownList(const EffectList& list, const std::vector<Origins>& origins,
               const Selection& selection) {
    Json entries = Json::array();
    for (size_t i = 0; i < list.entries.size(); ++i) {
        const Origins from = origins.empty() ? Origins() : origins[i];
        if (selection.has(list.entries[i], from)) {
            Json& entry = entries.emplace_back(list.entries[i]);
            entry["from"] = from;
        }
    }
    const bool isBuiltIn = list.kind == EffectList::Kind::BUILT_IN;
    return {{"list", titleOf(list)}, {"builtIn", isBuiltIn}, {"entries", entries}};
}

/** Lists that nothing is selected of are left out where parameters are. */
void addList(Json list, const Selection& selection, Json& shown) {
    if (!selection.hasReasons() || !list["entries"].empty()) {
        shown["lists"].push_back(std::move(list));
    }
}

void addDocument(const LoadedDocument& document, const std::vector<EffectList>& lists,
                 const Selection& selection, Json& shown) {
    const ProgressStep step("looking where values come from");
    shown["file"] = document.file();
    if (selection.hasObjects()) {
        shown["objects"] = objectsOf(document);
    }
    const EntryOrigins origins(document);
    const std::vector<std::string> text = selection.hasReasons()
                                                  ? linesOf(readDocument(document.file()))
                                                  : std::vector<std::string>();
    for (const EffectList& list : lists) {
        if (!selection.has(list)) {
            continue;
        }
        Json json = shownList(list, origins.originsOf(list), selection);
        if (selection.hasReasons()) {
            for (Json& entry : json["entries"]) {
                addReasons(document, text, list, entry);
            }
        }
        addList(std::move(json), selection, shown);
    }
}

void show(const ShowOptions& options, std::ostream& out) {
    std::optional<LoadedDocument> document;
    std::vector<EffectList> lists;
    if (!options.file.empty()) {
        lists = document.emplace(options.file).lists();
    }
    const Selection selection(options, lists);
    Json shown = {{"file", nullptr}, {"objects", Json::array()}, {"lists", Json::array()}};
    if (document.has_value()) {
        addDocument(*document, lists, selection, shown);
    } else {
        shown.erase("file");
    }
    SpatializerParamArray store{SpatializerParamArray::Empty()};
    for (const EffectList& list : builtInLists(store)) {
        if (selection.has(list)) {
            addList(shownList(list, {}, selection), selection, shown);
        }
    }
    if (shown["objects"].empty() && shown["lists"].empty()) {
        throw std::runtime_error(options.file.empty() ? "that takes a FILE"
                                                      : options.file + ": no such list or entry");
    }
    options.json ? printJson(shown, out) : printText(shown, out);
}

std::vector<std::string> listNames() {
    std::vector<std::string> names = {kObjects, kProfiles, kTunings,
                                      profileText(ORM_SPATIALIZER_PROFILE_COMMON)};
    const std::vector<std::string> profiles = profileNames();
    names.insert(names.end(), profiles.begin(), profiles.end());
    return names;
}

}  // namespace

void addShow(CLI::App& app) {
    CLI::App* const command = app.add_subcommand(
            "show", "Show what a tuning document becomes, and where each value comes from");
    const auto options = std::make_shared<ShowOptions>();
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
                        "Only these; may be repeated. " + joined(listNames(), ", ") +
                                ", of which those from " + listNames()[3] + " on are built in")
            ->allow_extra_args(false)
            ->check(CLI::IsMember(listNames()))
            ->type_name("LIST");
    command->add_option("--code", options->codes,
                        "Only the effect's parameter of this code, with what stands behind it; "
                        "may be repeated")
            ->allow_extra_args(false)
            ->type_name("CODE");
    command->add_option("--parameter", options->params,
                        "Only what is made of this tuning parameter, likewise")
            ->allow_extra_args(false)
            ->type_name("NAME");
    command->add_flag("--json", options->json,
                      "{file, objects: [{object, line, ..., values: {PARAMETER: [...]}}], lists: "
                      "[{list, builtIn, entries: [{device, deviceId, code, meaning, values, "
                      "structure, from: [{parameter, origin, line, why}]}]}]}");
    command->footer(R"(What stands behind an entry: the lines of its elements; a version rule or a
default, where the reader put the value in; absent, where nothing did.

Examples:
  ormel-tuning show examples/tablet-quad.xml --profile movie --device speaker
  ormel-tuning show examples/tablet-quad.xml --profile movie --device speaker --code ieid
  ormel-tuning show --list common)");
    command->callback([options] { show(*options, std::cout); });
}

}  // namespace ormel::tools
