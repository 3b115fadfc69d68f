#include "CheckRules.h"

#include <algorithm>
#include <utility>

namespace ormel::tools {

const char* severityName(Severity severity) {
    return severity == Severity::ERROR     ? "error"
           : severity == Severity::WARNING ? "warning"
                                           : "note";
}

const RuleRow* findRule(const std::string& id) {
    const auto* const end = std::end(kRules);
    const auto* const found = std::find_if(std::begin(kRules), end,
                                           [&id](const RuleRow& row) { return id == row.id; });
    return found == end ? nullptr : found;
}

void Findings::add(Finding finding) {
    if (++mCounts[static_cast<size_t>(finding.rule)] <= kMaxPerRule) {
        mFindings.push_back(std::move(finding));
    }
}

const std::vector<Finding>& Findings::sorted() {
    std::stable_sort(mFindings.begin(), mFindings.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return mFindings;
}

size_t Findings::countOf(Severity severity) const {
    size_t count = 0;
    for (size_t rule = 0; rule < mCounts.size(); ++rule) {
        count += kRules[rule].severity == severity ? mCounts[rule] : 0;
    }
    return count;
}

}  // namespace ormel::tools
