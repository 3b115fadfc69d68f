#include "CheckDocument.h"

#include <algorithm>
#include <utility>

#include "document/ReadTrace.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

using namespace std::string_view_literals;

constexpr std::pair<std::string_view, const char*> kPackers[] = {{"\x1f\x8b", "gzip"},
                                                                 {"\xfd"
                                                                  "7zXZ\0"sv,
                                                                  "xz"},
                                                                 {"BZh", "bzip2"},
                                                                 {"\x28\xb5\x2f\xfd", "zstd"},
                                                                 {"PK\x03\x04", "zip"},
                                                                 {"\x5d\0\0"sv, "lzma"},
                                                                 {"\x04\x22\x4d\x18", "lz4"}};

/** What libxml2 reads however it was built. */
constexpr std::string_view kEncodings[] = {"utf-8",    "utf-16", "utf-16le",   "utf-16be",
                                           "us-ascii", "ascii",  "iso-8859-1", "iso-latin-1"};

std::string firstLine(const char* message) {
    const std::string_view text = message == nullptr ? "" : message;
    return std::string(text.substr(0, text.find('\n')));
}

/** The line that libxml2 names of a tag behind @p mark: "Start Tag band line 12"; else @p other. */
long lineIn(const std::string& message, const char* mark, long other) {
    const size_t found = message.find(mark);
    const size_t line = found == std::string::npos ? found : message.find(" line ", found);
    return line == std::string::npos ? other : std::stol("0" + message.substr(line + 6));
}

}  // namespace

CheckDocument::CheckDocument(const std::string& text, SchemaValidation& validation,
                             Findings& findings) {
    for (const auto& [mark, packer] : kPackers) {
        if (text.compare(0, mark.size(), mark) == 0) {
            findings.add({Rule::COMPRESSED, 1,
                          std::string("the file is packed with ") + packer + "; ship it unpacked"});
            return;
        }
    }
    std::optional<Finding> fault;
    const XmlErrorScope errors([&fault](const xmlError& error) {
        const std::string message = firstLine(error.message);
        if (!fault.has_value()) {
            fault = {Rule::NOT_WELL_FORMED, lineIn(message, "tag mismatch: ", error.line), message};
        } else {
            // What follows comes of the first, but may tell where that tag begins.
            fault->line = std::min(fault->line, lineIn(message, "Start Tag ", fault->line));
        }
    });
    mElements.emplace(text, &validation.listener());
    if (fault.has_value()) {
        findings.add(*fault);
    }
    if (isReadable()) {
        findOddities(findings);
    } else if (findings.all().empty()) {
        findings.add({Rule::NOT_WELL_FORMED, 1,
                      text.empty() ? "Document is empty" : "Document cannot be read"});
    }
}

/** What is not read everywhere. */
void CheckDocument::findOddities(Findings& findings) const {
    const std::string& encoding = mElements->getEncoding();
    if (!encoding.empty() && std::find(std::begin(kEncodings), std::end(kEncodings),
                                       lowered(encoding)) == std::end(kEncodings)) {
        findings.add({Rule::ENCODING, 1,
                      "the encoding " + encoding + " is not read everywhere; write UTF-8"});
    }
    auto references = mElements->getReferences();
    std::stable_sort(references.begin(), references.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [element, name] : references) {
        findings.add(finding(Rule::ENTITY_REFERENCE, element,
                             "what &" + name + "; stands for is not read; write it out"));
    }
}

Finding CheckDocument::finding(Rule rule, size_t element, std::string what,
                               std::string attribute) const {
    return {rule,
            line(element),
            std::move(what),
            element,
            std::string(name(element)),
            std::move(attribute)};
}

}  // namespace ormel::tools
