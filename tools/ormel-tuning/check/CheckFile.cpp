#include "CheckFile.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "CheckDocument.h"
#include "CheckMeaning.h"
#include "document/ReadTrace.h"

namespace ormel::tools {

namespace {

/** The places that the layer of meaning has findings about, which the schema need not repeat. */
class ReportedPlaces {
  public:
    ReportedPlaces(const Findings& findings, const CheckDocument& document) {
        for (const Finding& finding : findings.all()) {
            if (finding.element == Finding::kNoElement) {
                continue;
            }
            mElements.insert(finding.element);
            mAttributes.insert({finding.element, finding.attribute});
            if (finding.isWhole) {
                mSubtrees.emplace_back(finding.element, document.end(finding.element));
            }
        }
        std::sort(mSubtrees.begin(), mSubtrees.end());
    }

    bool cover(const Finding& finding) const {
        if (isInSubtree(finding.element)) {
            return true;
        }
        return finding.attribute.empty()
                       ? mElements.count(finding.element) != 0
                       : mAttributes.count({finding.element, finding.attribute}) != 0 ||
                                 mAttributes.count({finding.element, ""}) != 0;
    }

  private:
    /** Subtrees lie in each other or apart, and there are few in each other. */
    bool isInSubtree(size_t element) const {
        auto subtree = std::upper_bound(mSubtrees.begin(), mSubtrees.end(),
                                        std::make_pair(element, Finding::kNoElement));
        for (int steps = 0; subtree != mSubtrees.begin() && steps < 4; ++steps) {
            --subtree;
            if (subtree->first <= element && element < subtree->second) {
                return true;
            }
        }
        return false;
    }

    std::set<size_t> mElements;
    std::set<std::pair<size_t, std::string>> mAttributes;
    std::vector<std::pair<size_t, size_t>> mSubtrees;
};

void checkMeaning(const CheckDocument& document, const ReadTrace& trace, Findings& findings) {
    const DeviceData& data = trace.getDocument();
    const CheckContext context = {document, trace, data, data.getFormatVersion(), findings};
    checkStructure(context);
    checkAttributes(context);
    checkObjects(context);
    checkSisters(context);
    checkCurves(context);
    checkFormat(context);
}

}  // namespace

Findings checkFile(const std::string& path, const CheckSchema& schema,
                   const std::vector<std::string>& disabled) {
    const std::string text = readDocument(path);
    Findings findings;
    SchemaValidation validation(schema);
    const CheckDocument document(text, validation, findings);
    if (!document.isReadable()) {
        return findings;
    }
    try {
        checkMeaning(document, ReadTrace(path, text, document.elements()), findings);
    } catch (const RefusedDocument& refused) {
        findings.add(
                {Rule::REFUSED, refused.line, "the library gives up reading the document here"});
    }
    const ReportedPlaces reported(findings, document);
    for (const Finding& found : validation.findings()) {
        if (!reported.cover(found)) {
            Finding finding =
                    document.finding(found.rule, found.element, found.what, found.attribute);
            finding.line = found.line == 0 ? finding.line : found.line;
            findings.add(std::move(finding));
        }
    }
    findings.removeIf([&](const Finding& each) { return contains(disabled, rowOf(each.rule).id); });
    dropConsequences(document, findings);
    return findings;
}

}  // namespace ormel::tools
