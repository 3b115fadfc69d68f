#include <ormel/TagIterator.h>

#include <algorithm>
#include <kainjow/mustache.hpp>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "EmbeddedText.h"
#include "ReportLists.h"
#include "check/CheckFile.h"
#include "document/LoadedDocument.h"
#include "document/ReadTrace.h"
#include "document/Store.h"
#include "plot/Drawing.h"
#include "plot/Pictures.h"
#include "text/Files.h"
#include "text/Json.h"
#include "text/Progress.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

namespace mustache = kainjow::mustache;

/** Lines around one that is spoken of. */
constexpr long kContext = 2;

constexpr size_t kWidth = 440;
/** Of a picture without its legend. */
constexpr size_t kHeight = 300;
constexpr size_t kLineHeight = 18;
constexpr size_t kMaxPictures = 120;

struct ReportOptions {
    std::string file;
    std::string old;
    std::string output;
};

/** A line and some around it: [{number, text, isPlace}]; empty for a line that there is not. */
Json excerptJson(const Json& source, long line) {
    const auto last = static_cast<long>(source.size());
    if (line < 1 || line > last) {
        return Json::array();
    }
    const long first = std::max(1L, line - kContext);
    Json excerpt(source.begin() + (first - 1), source.begin() + std::min(last, line + kContext));
    excerpt[static_cast<size_t>(line - first)]["isPlace"] = true;
    return excerpt;
}

/** Adds the findings, and the lines of the document, each with the first finding on it. */
void addFindings(const ReportOptions& options, Findings& findings, Json& content) {
    Json source = Json::array();
    for (const std::string& line : linesOf(readDocument(options.file))) {
        source.push_back({{"number", source.size() + 1}, {"text", line}});
    }
    Json list = Json::array();
    for (const Finding& finding : findings.sorted()) {
        const RuleRow& row = rowOf(finding.rule);
        const std::string id = "finding-" + std::to_string(list.size() + 1);
        std::string where = finding.elementName.empty() ? "" : "<" + finding.elementName + ">";
        where += finding.attribute.empty() ? "" : " " + finding.attribute;
        list.push_back({{"id", id},
                        {"severity", severityName(row.severity)},
                        {"where", where},
                        {"what", finding.what},
                        {"rule", row.id},
                        {"line", finding.line == 0 ? Json() : Json(finding.line)},
                        {"sentence", row.sentence},
                        {"remedy", row.remedy},
                        {"excerpt", excerptJson(source, finding.line)}});
        if (!list.back()["excerpt"].empty()) {
            source[static_cast<size_t>(finding.line - 1)].emplace("finding", id);
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
        return std::any_of(curve.values.begin(), curve.values.end(),
                           [](int32_t value) { return value != 0; });
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

/** The documents that gnuplot drew, as parts of a page: what they all define is in one place. */
std::vector<std::string> svgParts(std::string drawn, std::string& defs) {
    std::vector<std::string> parts;
    for (size_t at = drawn.find("<svg"); at != std::string::npos; at = drawn.find("<svg", at)) {
        const size_t end = std::min(drawn.find("<?xml", at), drawn.size());
        std::string part = drawn.substr(at, end - at);
        cut(part, "<title>", "</title>");
        cut(part, "<desc>", "</desc>");
        cut(part, " id=\"gnuplot", "canvas\"");
        defs = cut(part, "<defs>", "</defs>");
        parts.push_back(part.substr(std::string("<svg").size()));
        at = end;
    }
    return parts;
}

/**
 * {pictures, defs, flat, notDrawn}: pictures whose values are all 0 are named only, those that
 * change come first, and where gnuplot fails, notDrawn says why.
 */
Json picturesJson(std::vector<Picture> pictures) {
    Json json = {{"pictures", Json::array()}, {"flat", Json::array()}};
    // What changes comes first, what is flat last.
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
    std::vector<std::string> parts;
    std::string defs;
    try {
        if (!pictures.empty()) {
            parts = svgParts(drawnByGnuplot(scriptFor(pictures)), defs);
        }
    } catch (const std::runtime_error& error) {
        json["notDrawn"] = error.what();
    }
    json["defs"] = defs;
    for (size_t i = 0; i < std::min(parts.size(), pictures.size()); ++i) {
        const Picture& picture = pictures[i];
        Json& drawn = json["pictures"].emplace_back();
        drawn = {{"id", "picture-" + std::to_string(i + 1)},
                 {"title", titleOf(picture)},
                 {"flags", picture.flags},
                 {"isChanged", isChanged(picture)},
                 {"isOverFrequency", isOverFrequency(picture.kind)},
                 {"svg", parts[i]}};
        for (const Curve& curve : picture.curves) {
            drawn["curves"].push_back(curveJson(curve));
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
 * Content for the template, which has "has_NAME" beside a list that is not empty, and "isLast" in
 * each of its objects. Every text stays text, whatever is in it, but for the markup that the tool
 * made.
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
            "report", "Write a page for the review of a tuning document, or of what it changes");
    const auto options = std::make_shared<ReportOptions>();
    command->add_option("FILE", options->file, "Tuning document")->required();
    command->add_option("-o,--output", options->output, "Page, one HTML file")->required();
    command->add_option("--against", options->old, "Show what changes from this document to FILE")
            ->type_name("OLD");
    command->footer(
            R"(The page has the findings of check, what the effect gets and from which line, and
the curves. It needs no network, runs nothing, and prints.

Example:
  ormel-tuning report examples/tablet-quad.xml --against examples/faulty.xml -o review.html)");
    command->callback([options] { report(*options); });
}

}  // namespace ormel::tools
