#include "CheckFile.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include "CheckDocument.h"
#include "CheckMeaning.h"
#include "document/ReadTrace.h"
#include "document/VersionRules.h"

namespace ormel::tools {

namespace {

/** What the layer of meaning has findings about, which the schema need not say again. */
class Known {
  public:
    Known(const Findings& findings, const CheckDocument& document) {
        for (const Finding& finding : findings.all()) {
            if (finding.element == Finding::kNoElement) {
                continue;
            }
            mElements.insert(finding.element);
            mAttributes.insert({finding.element, finding.attribute});
            if (finding.isWhole) {
                mWholes.emplace_back(finding.element, document.end(finding.element));
            }
        }
        std::sort(mWholes.begin(), mWholes.end());
    }

    bool covers(const Finding& finding) const {
        if (isInWhole(finding.element)) {
            return true;
        }
        return finding.attribute.empty()
                       ? mElements.count(finding.element) != 0
                       : mAttributes.count({finding.element, finding.attribute}) != 0 ||
                                 mAttributes.count({finding.element, ""}) != 0;
    }

  private:
    /** Subtrees lie in each other or apart, and there are few in each other. */
    bool isInWhole(size_t element) const {
        auto whole = std::upper_bound(mWholes.begin(), mWholes.end(),
                                      std::make_pair(element, Finding::kNoElement));
        for (int steps = 0; whole != mWholes.begin() && steps < 4; ++steps) {
            --whole;
            if (whole->first <= element && element < whole->second) {
                return true;
            }
        }
        return false;
    }

    std::set<size_t> mElements;
    std::set<std::pair<size_t, std::string>> mAttributes;
    std::vector<std::pair<size_t, size_t>> mWholes;
};

void checkMeaning(const CheckDocument& document, ReadTrace& trace, Findings& findings) {
    const DeviceData& data = trace.getDocument();
    const CheckContext context = {document, trace, data, VersionRules::of(data.getFormatVersion()),
                                  findings};
    checkStructure(context);
    checkAttributes(context);
    checkObjects(context);
}

}  // namespace

Findings checkFile(const std::string& path, const CheckSchema& schema) {
    const std::string text = readDocument(path);
    // The reader frees its tree when it has read, so that the next one has the room.
    std::unique_ptr<ReadTrace> trace;
    long refusedAt = 0;
    try {
        trace = std::make_unique<ReadTrace>(path, text);
    } catch (const RefusedDocument& refused) {
        refusedAt = refused.getLine();
    }
    Findings findings;
    const CheckDocument document(text, findings);
    if (!document.isReadable()) {
        return findings;
    }
    if (trace == nullptr) {
        findings.add({Rule::REFUSED, refusedAt, "the library gives up reading the document here"});
    } else if (trace->getElements().size() == document.size()) {
        checkMeaning(document, *trace, findings);
    }
    Findings complaints;
    schema.validate(document, complaints);
    const Known known(findings, document);
    for (const Finding& complaint : complaints.all()) {
        if (!known.covers(complaint)) {
            findings.add(complaint);
        }
    }
    return findings;
}

}  // namespace ormel::tools
