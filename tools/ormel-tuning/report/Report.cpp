#include <ormel/TagIterator.h>

#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Page.h"
#include "ReportLists.h"
#include "ReportPictures.h"
#include "ReportSource.h"
#include "check/CheckFile.h"
#include "document/LoadedDocument.h"
#include "document/ReadTrace.h"
#include "document/Store.h"
#include "text/Files.h"
#include "text/Progress.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

struct ReportOptions {
    std::string file;
    std::string old;
    std::string output;
};

Json findingJson(const Finding& finding, size_t number, const std::vector<std::string>& lines) {
    const RuleRow& row = rowOf(finding.rule);
    std::string where = finding.elementName.empty() ? "" : "<" + finding.elementName + ">";
    where += finding.attribute.empty() ? "" : " " + finding.attribute;
    return {{"id", "finding-" + std::to_string(number)},
            {"severity", severityName(row.severity)},
            {"where", where},
            {"what", finding.what},
            {"rule", row.id},
            {"line", finding.line == 0 ? Json(false) : Json(finding.line)},
            {"sentence", row.sentence},
            {"remedy", row.remedy},
            {"excerpt", excerptJson(lines, finding.line)}};
}

/** The findings; adds the lines that have some to @p findingOfLine. */
Json findingsJson(Findings& findings, const std::vector<std::string>& lines,
                  std::map<long, std::string>& findingOfLine) {
    Json list = Json::array();
    for (const Finding& finding : findings.sorted()) {
        Json json = findingJson(finding, list.size() + 1, lines);
        findingOfLine.emplace(finding.line, json["id"]);
        list.push_back(std::move(json));
    }
    return list;
}

size_t changedCount(const Json& lists) {
    size_t count = 0;
    for (const Json& list : lists) {
        count += list["isChanged"].get<bool>() ? 1 : 0;
    }
    return count;
}

std::string verdictOf(const Findings& findings, const Json& lists, bool hasOld) {
    const size_t errors = findings.countOf(Severity::ERROR);
    const size_t warnings = findings.countOf(Severity::WARNING);
    const size_t notes = findings.countOf(Severity::NOTE);
    std::string verdict = findings.all().empty()
                                  ? "No findings."
                                  : countText(errors, "error", "errors") + " and " +
                                            countText(warnings, "warning", "warnings") + ".";
    verdict += notes == 0 ? "" : " " + countText(notes, "note", "notes") + ".";
    if (hasOld) {
        const size_t changed = changedCount(lists);
        verdict += changed == 0 ? " The effect gets the same as before."
                                : " The effect gets other values in " + std::to_string(changed) +
                                          " of " + countText(lists.size(), "list", "lists") + ".";
    }
    return verdict;
}

/** What the documents make an effect get; the document may be one that cannot be loaded. */
void addLoaded(const ReportOptions& options, Json& content) {
    std::optional<LoadedDocument> old;
    if (!options.old.empty()) {
        old.emplace(options.old);
    }
    std::optional<LoadedDocument> document;
    try {
        document.emplace(options.file);
    } catch (const std::runtime_error&) {
        content["isRefused"] = true;
        return;
    }
    content["format"] = document->objects().getFormatVersion();
    content["lists"] = listsJson(*document, old.has_value() ? &*old : nullptr);
    content["isCut"] = content["lists"].size() == kMaxLists;
    content.update(picturesJson(picturesOf(*document, old.has_value() ? &*old : nullptr, {})));
}

void report(const ReportOptions& options) {
    const ProgressStep step("reviewing " + options.file);
    setLibraryLog(ANDROID_LOG_SILENT);
    // The last iterator to go takes libxml2's state with it, which the schema is part of.
    const TagIterator keepsLibraryUp;
    Findings findings = checkFile(options.file, CheckSchema(""));
    const std::vector<std::string> lines = linesOf(readDocument(options.file));
    std::map<long, std::string> findingOfLine;
    const bool hasOld = !options.old.empty();
    Json content = {{"file", baseName(options.file)},
                    {"old", hasOld ? Json(baseName(options.old)) : Json(false)},
                    {"isRefused", false},
                    {"isCut", false},
                    {"format", ""},
                    {"lists", Json::array()},
                    {"pictures", Json::array()},
                    {"flat", false},
                    {"notDrawn", false},
                    {"defs", ""},
                    {"findings", findingsJson(findings, lines, findingOfLine)}};
    addLoaded(options, content);
    content["verdict"] = verdictOf(findings, content["lists"], hasOld);
    const bool hasErrors = findings.countOf(Severity::ERROR) > 0;
    content["state"] = hasErrors ? "error" : findings.all().empty() ? "good" : "warning";
    content["source"] = sourceJson(lines, findingOfLine);
    for (const char* const part : {"findings", "lists", "pictures"}) {
        content[std::string("has_") + part] = !content[part].empty();
    }
    writeFile(options.output, pageOf(content));
}

}  // namespace

void addReport(CLI::App& app) {
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
