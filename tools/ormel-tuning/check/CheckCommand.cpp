#include <ormel/TagIterator.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "CheckFile.h"
#include "Commands.h"
#include "document/LoadedDocument.h"
#include "text/Json.h"
#include "text/Progress.h"
#include "text/Text.h"

namespace ormel::tools {

void to_json(Json& json, const RuleRow& row) {
    json = {{"id", row.id},
            {"severity", severityName(row.severity)},
            {"sentence", row.sentence},
            {"remedy", row.remedy}};
}

void to_json(Json& json, const Finding& finding) {
    const RuleRow& row = rowOf(finding.rule);
    json = {{"line", finding.line},
            {"severity", severityName(row.severity)},
            {"id", row.id},
            {"element", finding.elementName},
            {"attribute", finding.attribute},
            {"what", finding.what},
            {"remedy", row.remedy}};
}

namespace {

constexpr int kFindings = 1;
constexpr int kFailed = 2;

struct CheckOptions {
    std::vector<std::string> files;
    std::string schema;
    std::string explain;
    std::string failOn = "warning";
    std::vector<std::string> disabled;
    bool rules = false;
    bool quiet = false;
    bool json = false;
};

/** The files, with the XML files in a folder and those below in its place. */
std::vector<std::string> documentsIn(const std::vector<std::string>& names) {
    namespace fs = std::filesystem;
    std::vector<std::string> files;
    for (const std::string& name : names) {
        std::error_code error;
        if (!fs::is_directory(name, error)) {
            files.push_back(name);
            continue;
        }
        std::set<std::string> found;
        for (const fs::path& path : fs::recursive_directory_iterator(name)) {
            if (path.extension() == ".xml" && fs::is_regular_file(path)) {
                found.insert(path.string());
            }
        }
        if (found.empty()) {
            throw std::runtime_error(name + ": no *.xml in this folder");
        }
        files.insert(files.end(), found.begin(), found.end());
    }
    return files;
}

void printText(const std::string& file, Findings& findings, const Style& style) {
    for (const Finding& finding : findings.sorted()) {
        const RuleRow& row = rowOf(finding.rule);
        const std::string severity = severityName(row.severity);
        std::string where = finding.elementName.empty() ? "" : "<" + finding.elementName + ">";
        where += finding.attribute.empty() ? "" : " " + finding.attribute;
        where += where.empty() ? "" : ": ";
        std::cout << printable(file) << ':' << finding.line << ": "
                  << (row.severity == Severity::ERROR  ? style.removed(severity)
                      : row.severity == Severity::NOTE ? style.faint(severity)
                                                       : style.heading(severity))
                  << ": " << printable(where + finding.what) << ' '
                  << style.faint("[" + std::string(row.id) + "]") << '\n';
    }
    for (size_t rule = 0; rule < std::size(kRules); ++rule) {
        const size_t count = findings.countOf(static_cast<Rule>(rule));
        if (count > Findings::kMaxPerRule) {
            std::cout << printable(file) << ": " << count - Findings::kMaxPerRule << " more ["
                      << kRules[rule].id << "]\n";
        }
    }
}

/** The rule of an id. Throws std::runtime_error, which says the nearest one, for no rule. */
const RuleRow& ruleOf(const std::string& id) {
    std::vector<std::string> ids;
    for (const RuleRow& row : kRules) {
        ids.emplace_back(row.id);
        if (id == row.id) {
            return row;
        }
    }
    const std::string nearest = nearestOf(id, ids);
    throw std::runtime_error("there is no rule '" + id + "'; " +
                             (nearest.empty() ? "" : "the nearest is '" + nearest + "'; ") +
                             "see check --rules");
}

/** One rule in words, or all of them as a list in Markdown. */
void printRules(const CheckOptions& options) {
    const RuleRow* const one = options.rules ? nullptr : &ruleOf(options.explain);
    if (options.json) {
        printJson(one == nullptr ? Json(kRules) : Json(*one), std::cout);
    } else if (one != nullptr) {
        std::cout << one->id << " (" << severityName(one->severity) << ")\n"
                  << wrapped(one->sentence, 0) << "\nInstead: " << wrapped(one->remedy, 0) << '\n';
    } else {
        for (const RuleRow& row : kRules) {
            std::cout << "- `" << row.id << "` (" << severityName(row.severity)
                      << "): " << row.sentence << ' ' << row.remedy << '\n';
        }
    }
}

/** {errors, warnings, notes}. */
Json countsOf(const Findings& findings) {
    return {{"errors", findings.countOf(Severity::ERROR)},
            {"warnings", findings.countOf(Severity::WARNING)},
            {"notes", findings.countOf(Severity::NOTE)}};
}

int checkFiles(const CheckOptions& options) {
    setLibraryLog(ANDROID_LOG_SILENT);
    // The last iterator to go takes libxml2's state with it, which the schema is part of.
    const TagIterator keepsLibraryUp;
    const CheckSchema schema(options.schema);
    const std::vector<std::string> files = documentsIn(options.files);
    const std::string ofAll = "/" + std::to_string(files.size()) + "] checking ";
    const Style style;
    Findings all;
    size_t checked = 0;
    size_t withFindings = 0;
    Json reports = Json::array();
    bool hasFailed = false;
    for (const std::string& file : files) {
        try {
            std::optional<ProgressStep> step(
                    joined({"[", std::to_string(checked + 1), ofAll, file}, ""));
            Findings findings = checkFile(file, schema, options.disabled);
            step.reset();
            ++checked;
            withFindings += findings.all().empty() ? 0 : 1;
            all.count(findings);
            if (options.json) {
                Json report = {{"file", file}};
                report.update(countsOf(findings));
                report["findings"] = findings.sorted();
                reports.push_back(std::move(report));
            } else if (!options.quiet) {
                printText(file, findings, style);
            }
        } catch (const std::runtime_error& error) {
            std::cerr << "ormel-tuning: " << printable(error.what()) << '\n';
            hasFailed = true;
        }
    }
    const size_t errors = all.countOf(Severity::ERROR);
    const size_t warnings = all.countOf(Severity::WARNING);
    const size_t notes = all.countOf(Severity::NOTE);
    if (options.json) {
        Json json = {{"files", std::move(reports)}, {"checked", checked}};
        json.update(countsOf(all));
        printJson(json, std::cout);
    } else if (files.size() > 1 && !options.quiet) {
        std::cout << countText(checked, "file", "files")
                  << " checked: " << countText(errors, "error", "errors") << ", "
                  << countText(warnings, "warning", "warnings") << " and "
                  << countText(notes, "note", "notes") << " in "
                  << countText(withFindings, "file", "files") << '\n';
    }
    const size_t failing = errors + (options.failOn != "error" ? warnings : 0) +
                           (options.failOn == "note" ? notes : 0);
    return hasFailed ? kFailed : failing == 0 ? 0 : kFindings;
}

int run(const CheckOptions& options) {
    std::for_each(options.disabled.begin(), options.disabled.end(), ruleOf);
    if (options.rules || !options.explain.empty()) {
        printRules(options);
        return 0;
    }
    if (options.files.empty()) {
        throw std::runtime_error("check: FILE is required; see --help");
    }
    return checkFiles(options);
}

}  // namespace

void addCheck(CLI::App& app, int& status) {
    CLI::App* const command = app.add_subcommand(
            "check", "Find mistakes in tuning documents; the library itself reports almost none");
    const auto options = std::make_shared<CheckOptions>();
    command->add_option("FILE", options->files,
                        "Tuning documents, or folders to search for *.xml; - is standard input");
    command->add_option("--schema", options->schema, "Use this schema instead of the built-in one")
            ->type_name("FILE");
    command->add_option("--explain", options->explain,
                        "Explain a rule: what it finds and what to do about it")
            ->type_name("ID");
    command->add_option("--fail-on", options->failOn,
                        "The lowest severity that gives exit status 1")
            ->check(CLI::IsMember({"error", "warning", "note"}))
            ->capture_default_str();
    command->add_option("--disable", options->disabled, "Disable this rule; may be repeated")
            ->type_name("ID")
            ->allow_extra_args(false);
    // Options of a subcommand are read from the application's file.
    app.set_config("--config", "", "A file whose section [check] sets fail-on and disable")
            ->type_name("FILE");
    app.allow_config_extras(CLI::config_extras_mode::error);
    command->fallthrough();
    command->add_flag("--rules", options->rules, "List all rules, in Markdown");
    command->add_flag("-q,--quiet", options->quiet, "Print nothing; only set the exit status");
    command->add_flag(
            "--json", options->json,
            "{files: [{file, errors, warnings, notes, findings: [{line, severity, id, element, "
            "attribute, what, remedy}]}], checked, errors, warnings, notes}; element and "
            "attribute are empty if a finding is about none");
    command->footer(R"(A finding is a line FILE:LINE: severity: what [rule].
--config FILE reads fail-on and disable from the section [check] of a file.

Examples:
  ormel-tuning check examples/faulty.xml
  ormel-tuning check --explain lost-first-child
  ormel-tuning check --config check.toml examples/tablet-quad.xml)");
    command->callback([options, &status] { status = run(*options); });
}

}  // namespace ormel::tools
