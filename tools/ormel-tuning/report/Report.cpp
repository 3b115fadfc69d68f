#include <ormel/KivParameter.h>
#include <ormel/TagIterator.h>

#include <algorithm>
#include <kainjow/mustache.hpp>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "EmbeddedText.h"
#include "check/CheckFile.h"
#include "document/AppliedLists.h"
#include "document/EntryOrigins.h"
#include "document/LoadedDocument.h"
#include "document/ReadTrace.h"
#include "plot/Pictures.h"
#include "show/EffectValues.h"
#include "text/Files.h"
#include "text/Json.h"
#include "text/Names.h"
#include "text/Progress.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

namespace mustache = kainjow::mustache;

/** Lines around one that is spoken of. */
constexpr size_t kContext = 2;

constexpr size_t kWidth = 440;
/** Of a picture without its legend. */
constexpr size_t kHeight = 300;
constexpr size_t kLineHeight = 18;
constexpr size_t kMaxPictures = 120;

/** A page shows no more lists than this. */
constexpr size_t kMaxLists = 200;
/** Rows up to this length stand as they are. */
constexpr size_t kMaxShort = 8;
/** Codes that one sentence names. */
constexpr size_t kMaxCodes = 8;

/** What a tuning sends only where its flag is set, or for 2 and 4 channels. */
constexpr KivParameter kSwitched[] = {CEQT, RSSA, BMDT, AOBS};

struct ReportOptions {
    std::string file;
    std::string old;
    std::string output;
};

/**
 * Adds the findings, with some lines around each, and the lines of the document, each with the
 * first finding on it.
 */
void addFindings(const ReportOptions& options, Findings& findings, Json& content) {
    Json source = Json::array();
    for (const std::string& line : linesOf(readDocument(options.file))) {
        source.push_back({{"text", line}});
    }
    Json list = Json::array();
    for (const Finding& finding : findings.sorted()) {
        const RuleRow& row = rowOf(finding.rule);
        std::string where = finding.elementName.empty() ? "" : "<" + finding.elementName + ">";
        where += finding.attribute.empty() ? "" : " " + finding.attribute;
        list.push_back({{"severity", severityName(row.severity)},
                        {"where", where},
                        {"what", finding.what},
                        {"rule", row.id},
                        {"line", finding.line == 0 ? Json() : Json(finding.line)},
                        {"sentence", row.sentence},
                        {"remedy", row.remedy}});
        const auto line = static_cast<size_t>(finding.line);
        if (line == 0 || line > source.size()) {
            continue;
        }
        source[line - 1].emplace("finding", list.size());
        Json& excerpt = list.back()["excerpt"];
        const size_t end = std::min(source.size(), line + kContext);
        for (size_t i = std::max(line, kContext + 1) - kContext; i <= end; ++i) {
            const Json& text = source[i - 1]["text"];
            excerpt.push_back({{"number", i}, {"text", text}, {"isPlace", i == line}});
        }
    }
    const size_t notes = findings.countOf(Severity::NOTE);
    const size_t errors = findings.countOf(Severity::ERROR);
    content["errors"] = countText(errors, "error", "errors");
    content["warnings"] = countText(findings.countOf(Severity::WARNING), "warning", "warnings");
    content["notes"] = notes == 0 ? Json() : Json(countText(notes, "note", "notes"));
    content["state"] = errors > 0 ? "error" : list.empty() ? "good" : "warning";
    content["source"] = std::move(source);
    content["findings"] = std::move(list);
}

/** Whether a picture has any value but 0. */
bool hasHeight(const Picture& picture) {
    return std::any_of(picture.curves.begin(), picture.curves.end(), [](const Curve& curve) {
        return curve.values != std::vector<int32_t>(curve.values.size());
    });
}

bool isChanged(const Picture& picture) {
    return std::any_of(picture.curves.begin(), picture.curves.end(),
                       [](const Curve& curve) { return curve.isOld; });
}

/** Each picture as an SVG document of its own, one behind the other. */
std::string scriptFor(const std::vector<Picture>& pictures) {
    const Scales scales = scalesOf(pictures);
    std::ostringstream script;
    for (size_t i = 0; i < pictures.size(); ++i) {
        const size_t lines = legendLines(pictures[i]);
        script << "set terminal svg name 'picture" << i << "' size " << kWidth << ','
               << kHeight + lines * kLineHeight << " dynamic font 'sans-serif,14'\n";
        writePicture(pictures[i], scales, lines, script);
        script << "set output\n";
    }
    return script.str();
}

/** Takes a part of a text out of it. */
std::string cut(std::string& text, const std::string& begin, const std::string& end) {
    const size_t from = text.find(begin);
    const size_t to = from == std::string::npos ? from : text.find(end, from);
    if (to == std::string::npos) {
        return "";
    }
    std::string part = text.substr(from, to + end.size() - from);
    text.erase(from, part.size());
    return part;
}

Json curveJson(const Curve& curve) {
    const auto [low, high] = std::minmax_element(curve.values.begin(), curve.values.end());
    Json json = {{"name", curve.name}, {"isOld", curve.isOld}, {"isOff", curve.isOff},
                 {"low", *low},        {"high", *high},        {"points", Json::array()}};
    for (size_t i = 0; i < curve.values.size(); ++i) {
        json["points"].push_back({{"value", curve.values[i]}, {"place", curve.places[i]}});
    }
    return json;
}

/** A picture from the document that gnuplot drew; @p defs gets what all of them define. */
Json pictureJson(const Picture& picture, std::string svg, Json& defs) {
    cut(svg, "<title>", "</title>");
    cut(svg, "<desc>", "</desc>");
    cut(svg, " id=\"gnuplot", "canvas\"");
    defs = cut(svg, "<defs>", "</defs>");
    Json json = {{"title", titleOf(picture)},
                 {"flags", picture.flags},
                 {"isChanged", isChanged(picture)},
                 {"isOverFrequency", picture.kind->frequency.has_value()},
                 {"svg", svg.substr(std::string("<svg").size())}};
    for (const Curve& curve : picture.curves) {
        json["curves"].push_back(curveJson(curve));
    }
    return json;
}

/**
 * {pictures, defs, flat, notDrawn}: pictures whose values are all 0 are named only, those that
 * change come first, and where gnuplot fails, notDrawn says why.
 */
Json picturesJson(std::vector<Picture> pictures) {
    Json json = {{"pictures", Json::array()}, {"flat", Json::array()}, {"defs", ""}};
    std::stable_partition(pictures.begin(), pictures.end(), isChanged);
    const auto flat = std::stable_partition(pictures.begin(), pictures.end(), hasHeight);
    for (auto picture = flat; picture != pictures.end(); ++picture) {
        json["flat"].push_back({{"title", titleOf(*picture)}});
    }
    pictures.erase(flat, pictures.end());
    if (pictures.size() >= kMaxPictures) {
        pictures.resize(kMaxPictures);
        json["notDrawn"] = "Only the first " + std::to_string(kMaxPictures) + " are drawn.";
    }
    std::string drawn;
    try {
        drawn = pictures.empty() ? "" : drawnByGnuplot(scriptFor(pictures));
    } catch (const std::runtime_error& error) {
        json["notDrawn"] = error.what();
    }
    for (const Picture& picture : pictures) {
        const std::string svg = cut(drawn, "<svg", "</svg>\n\n");
        if (!svg.empty()) {
            json["pictures"].push_back(pictureJson(picture, svg, json["defs"]));
        }
    }
    return json;
}

/**
 * {fields: [{name, now, was}], bands: {names, rows: [{cells}]}, restName, items}. A number has
 * "was" where the old shape, which has the same parts, has another one in its place.
 *
 * @param changed gets the count of those
 */
Json partsJson(const Shape& now, const Shape& old, size_t& changed) {
    const auto cell = [&changed](int32_t number, int32_t was) {
        changed += number == was ? 0 : 1;
        return Json{{"now", number}, {"was", number == was ? Json() : Json(was)}};
    };
    Json parts = {{"restName", now.rest.empty() ? "" : now.restName}};
    for (size_t i = 0; i < now.fields.size(); ++i) {
        const auto& [name, number] = now.fields[i];
        parts["fields"].push_back(cell(number, old.fields[i].second));
        parts["fields"][i]["name"] = name;
    }
    for (size_t i = 0; i < now.columns.size(); ++i) {
        const Shape::Column& column = now.columns[i];
        parts["bands"]["names"].push_back(column.name);
        Json& rows = parts["bands"]["rows"];
        for (size_t band = 0; band < column.values.size(); ++band) {
            rows[band]["cells"].push_back(cell(column.values[band], old.columns[i].values[band]));
        }
    }
    for (size_t i = 0; i < now.rest.size(); ++i) {
        parts["items"].push_back(cell(now.rest[i], old.rest[i]));
    }
    return parts;
}

bool isLong(const EffectValue& value) {
    return value.values.has_value() && (value.values->size() > kMaxShort || hasParts(value.shape));
}

std::string shortText(const EffectValue& value) {
    if (!value.values.has_value()) {
        return "absent";
    }
    return isLong(value) || value.values->empty()
                   ? countText(value.values->size(), "value", "values")
                   : listText(*value.values);
}

/** Parameters that come from one place share it: [{line, origin, params}]. */
Json originsJson(const Origins& origins) {
    std::map<std::pair<long, std::string>, std::vector<std::string>> paramsOfPlace;
    for (const auto& [kind, param, line] : origins) {
        paramsOfPlace[{line, nameOf(kind)}].emplace_back(parameterName(param));
    }
    Json list = Json::array();
    for (const auto& [place, params] : paramsOfPlace) {
        const auto& [line, word] = place;
        list.push_back({{"line", line == 0 ? Json() : Json(line)},
                        {"origin", word},
                        {"params", joined(params, ", ")}});
    }
    return list;
}

/** {code, meaning, now, was, isChanged, reason, from, parts, oldValues} */
Json rowJson(const EffectValue& now, const EffectValue& was) {
    const auto [letters, meaning] = codeText(now.code);
    Json row = {{"code", letters},
                {"meaning", meaning},
                {"now", shortText(now)},
                {"was", shortText(was)},
                {"isChanged", now.values != was.values},
                {"reason", now.notSent.empty() ? Json() : Json(now.notSent)},
                {"from", originsJson(now.origins)}};
    if (!isLong(now)) {
        return row;
    }
    const bool areAlike = was.values.has_value() && haveSameParts(now.shape, was.shape) &&
                          now.shape.rest.size() == was.shape.rest.size();
    size_t changed = 0;
    row["parts"] = partsJson(now.shape, areAlike ? was.shape : now.shape, changed);
    if (changed > 0) {
        row["now"] = shortText(now) + ", " + std::to_string(changed) + " changed";
    } else if (was.values.has_value() && was.values != now.values) {
        row["parts"]["oldValues"] = listText(*was.values);
    }
    return row;
}

/** The value for a device and a code; one that the effect does not get, if there is none yet. */
EffectValue& valueAt(int32_t device, int32_t code, std::vector<EffectValue>& values) {
    const auto found = std::find_if(values.begin(), values.end(), [&](const EffectValue& value) {
        return value.device == device && value.code == code;
    });
    return found == values.end() ? values.emplace_back(EffectValue{device, code}) : *found;
}

/** Adds what a tuning gives and a flag or the number of channels keeps from the effect. */
void addSwitchedOff(const LoadedDocument& document, const EntryOrigins& origins,
                    const AppliedList& applied, std::vector<EffectValue>& values) {
    const std::vector<Entry>& entries = applied.list.entries;
    const ParameterValues* const tuning = origins.tuningOf(applied.list);
    if (tuning == nullptr || entries.empty()) {
        return;
    }
    for (const KivParameter switched : kSwitched) {
        const int32_t code = kivCode(switched);
        const EntryLayout layout = layoutOf(code);
        const Parameter param = (layout.lists.size() == 0 ? layout.channelLists : layout.lists)[0];
        const bool isSent = std::any_of(entries.begin(), entries.end(),
                                        [code](const Entry& entry) { return entry.code == code; });
        if (isSent || valuesOf(*tuning, param).empty()) {
            continue;
        }
        const bool isOff =
                layout.enable.size() != 0 && firstOr0(valuesOf(*tuning, layout.enable[0])) == 0;
        const Parameter cause = isOff ? layout.enable[0] : OUTPUT_CHANNELS;
        EffectValue& value = valueAt(entries.front().device, code, values);
        value.origins = {{Origin::Kind::LINE, param, document.trace().lineOf(*tuning, param)}};
        value.notSent = std::string(parameterName(cause)) + " is " +
                        std::to_string(firstOr0(valuesOf(*tuning, cause))) +
                        (isOff ? "" : ", and only 2 and 4 channels are sent");
    }
}

/**
 * [{devices, isChanged, rows}] of the rows by device, taken from there; equal ones are one.
 *
 * @param changes gets what changes: "dom, gebs for speaker; vbm for all devices"
 */
Json groupsJson(std::map<int32_t, Json>& rowsOfDevice, std::string& changes) {
    Json groups = Json::array();
    for (auto& [device, rows] : rowsOfDevice) {
        if (!groups.empty() && groups.back()["rows"] == rows) {
            groups.back()["devices"].get_ref<std::string&>() += ", " + deviceText(device);
        } else {
            groups.push_back({{"devices", deviceText(device)}, {"rows", std::move(rows)}});
        }
    }
    for (Json& group : groups) {
        std::vector<std::string> codes;
        for (const Json& row : group["rows"]) {
            if (row["isChanged"]) {
                codes.push_back(row["code"]);
            }
        }
        const bool isCut = codes.size() > kMaxCodes;
        codes.resize(std::min(codes.size(), kMaxCodes));
        group["isChanged"] = !codes.empty();
        if (!codes.empty()) {
            changes += (changes.empty() ? "" : "; ") + joined(codes, ", ") +
                       (isCut ? " and more for " : " for ") + std::string(group["devices"]);
        }
    }
    return groups;
}

/** {title, sentence, isChanged, groups} of what the effect gets; @p was is null for a new list. */
Json listJson(const EffectList& list, const std::vector<EffectValue>& values,
              const AppliedList* was, bool hasOld) {
    std::map<int32_t, Json> rowsOfDevice;
    size_t changed = 0;
    for (const EffectValue& value : values) {
        const EffectValue old = hasOld ? keptValue(was, value.device, value.code) : value;
        rowsOfDevice[value.device].push_back(rowJson(value, old));
        changed += value.values != old.values ? 1 : 0;
    }
    std::string changes;
    Json groups = groupsJson(rowsOfDevice, changes);
    const std::string count = countText(values.size(), "value", "values");
    const std::string sentence =
            !hasOld          ? count
            : was == nullptr ? "New, with " + count
            : changed == 0   ? "Nothing changes: " + count
                             : std::to_string(changed) + " of " + count +
                                     (changed == 1 ? " changes: " : " change: ") + changes;
    return {{"title", titleOf(list)},
            {"sentence", sentence + "."},
            {"isChanged", changed > 0},
            {"groups", std::move(groups)}};
}

/** Profiles are the same by number, tuning devices by name. */
const AppliedList* findSame(const std::vector<AppliedList>& lists, const EffectList& list) {
    const auto found = std::find_if(lists.begin(), lists.end(), [&list](const AppliedList& other) {
        return other.list.kind == list.kind && other.list.profile == list.profile &&
               (list.kind == EffectList::Kind::PROFILE || other.list.name == list.name);
    });
    return found == lists.end() ? nullptr : &*found;
}

/**
 * [{title, sentence, isChanged, groups: [{devices, isChanged, rows}]}]: what the effect gets of
 * each profile and tuning device, beside what it gets of @p old where there is an old document.
 */
Json listsJson(const LoadedDocument& document, const LoadedDocument* old) {
    const bool hasOld = old != nullptr;
    const auto oldLists = hasOld ? appliedLists(*old) : std::vector<AppliedList>();
    std::vector<AppliedList> lists = appliedLists(document);
    lists.resize(std::min(lists.size(), kMaxLists));
    const EntryOrigins origins(document);
    Json json = Json::array();
    for (const AppliedList& list : lists) {
        std::vector<EffectValue> values = keptValues(list, origins);
        const AppliedList* const was = findSame(oldLists, list.list);
        for (const auto& [place, old] : was == nullptr ? RecordingEffect::Values() : was->values) {
            valueAt(place.first, place.second, values);
        }
        addSwitchedOff(document, origins, list, values);
        json.push_back(listJson(list.list, values, was, hasOld));
    }
    for (const AppliedList& list : oldLists) {
        if (findSame(lists, list.list) == nullptr && json.size() < kMaxLists) {
            const std::string count = countText(list.values.size(), "value", "values");
            json.push_back({{"title", titleOf(list.list)},
                            {"sentence", "Gone; the old document has " + count + "."},
                            {"isChanged", true},
                            {"groups", Json::array()}});
        }
    }
    return json;
}

/** What the documents make an effect get; the document may be one that cannot be loaded. */
void addLoaded(const ReportOptions& options, Json& content) {
    const auto old = options.old.empty() ? nullptr : std::make_unique<LoadedDocument>(options.old);
    std::optional<LoadedDocument> document;
    try {
        document.emplace(options.file);
    } catch (const std::runtime_error&) {
        content["isRefused"] = true;
        return;
    }
    content["format"] = document->objects().getFormatVersion();
    Json lists = listsJson(*document, old.get());
    const auto changed = std::count_if(lists.begin(), lists.end(),
                                       [](const Json& list) { return bool(list["isChanged"]); });
    content["changed"] = changed == 0 ? Json() : Json(changed);
    content["listCount"] = countText(lists.size(), "list", "lists");
    content["isCut"] = lists.size() == kMaxLists;
    content["lists"] = std::move(lists);
    content.update(picturesJson(picturesOf(*document, old.get(), {})));
}

/**
 * Content for the template, which has "has_NAME" beside a list that is not empty, and "isLast" and
 * "index", from 1, in each of its objects. Every text stays text, whatever is in it, but for the
 * markup that the tool made.
 */
mustache::data toData(const Json& json) {
    if (json.is_object()) {
        mustache::data object;
        for (const auto& [name, value] : json.items()) {
            const bool isMarkup = name == "svg" || name == "defs";
            object.set(name, isMarkup ? value.get<std::string>() : toData(value));
            if (value.is_array() && !value.empty()) {
                object.set("has_" + name, true);
            }
        }
        return object;
    }
    if (json.is_array()) {
        mustache::data list(mustache::data::type::list);
        for (const Json& value : json) {
            mustache::data item = toData(value);
            if (value.is_object()) {
                item.set("isLast", &value == &json.back());
                item.set("index", std::to_string(&value - &json.front() + 1));
            }
            list.push_back(item);
        }
        return list;
    }
    if (json.is_string()) {
        return printable(json);
    }
    return json.is_number() ? mustache::data(json.dump()) : json == Json(true);
}

void report(const ReportOptions& options) {
    const std::string& name = options.output;
    const std::string ending = name.substr(std::min(name.rfind('.'), name.size()));
    if (ending != ".html" && ending != ".htm") {
        throw std::runtime_error(name + ": pages are .html or .htm");
    }
    const ProgressStep step("reviewing " + options.file);
    setLibraryLog(ANDROID_LOG_SILENT);
    // The last iterator to go takes libxml2's state with it, which the schema is part of.
    const TagIterator keepsLibraryUp;
    Findings findings = checkFile(options.file, CheckSchema(""));
    Json content = {{"file", baseName(options.file)},
                    {"old", options.old.empty() ? Json() : Json(baseName(options.old))}};
    addFindings(options, findings, content);
    addLoaded(options, content);
    mustache::mustache page(pageText());
    // What is not UTF-8, in the name of a file or a document's bytes, appears replaced.
    const std::string valid = content.dump(-1, ' ', false, Json::error_handler_t::replace);
    const std::string filled = page.render(toData(Json::parse(valid)));
    if (!page.is_valid()) {
        throw std::logic_error("the page's template: " + page.error_message());
    }
    writeFile(options.output, filled);
}

}  // namespace

void addReport(CLI::App& app, int& /* status */) {
    CLI::App* const command = app.add_subcommand(
            "report", "Write an HTML page for reviewing a tuning document or what it changes");
    const auto options = std::make_shared<ReportOptions>();
    command->add_option("FILE", options->file, "Tuning document")->required();
    command->add_option("-o,--output", options->output, "The page: one file, .html or .htm")
            ->required();
    command->add_option("--against", options->old, "Show what changes from this document to FILE")
            ->type_name("OLD");
    command->footer(
            R"(The page has the findings of check, what the effect gets and from which line, and
the curves. It needs no network, contains no scripts, and can be printed.

Example:
  ormel-tuning report examples/tablet-quad.xml --against examples/faulty.xml -o review.html)");
    command->callback([options] { report(*options); });
}

}  // namespace ormel::tools
