// What `check` finds: one table of rules, and the findings that name them.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "document/XmlElements.h"

namespace ormel::tools {

template <typename Range, typename Value>
bool contains(const Range& range, const Value& value) {
    return std::find(std::begin(range), std::end(range), value) != std::end(range);
}

/** By the rows of the table. */
enum class Rule : size_t {
#define ORMEL_CHECK_RULE(name, id, severity, sentence, remedy) name,
#include "CheckRules.inc"
};

enum class Severity { ERROR, WARNING, NOTE };

inline const char* severityName(Severity severity) {
    constexpr const char* kNames[] = {"error", "warning", "note"};
    return kNames[static_cast<size_t>(severity)];
}

struct RuleRow {
    /** Stable: builds and documents refer to it. */
    const char* id;
    Severity severity;
    /** What is wrong and what the reader makes of it. */
    const char* sentence;
    /** What to write instead. */
    const char* remedy;
};

inline constexpr RuleRow kRules[] = {
#define ORMEL_CHECK_RULE(name, id, severity, sentence, remedy) \
    {id, Severity::severity, sentence, remedy},
#include "CheckRules.inc"
};

inline const RuleRow& rowOf(Rule rule) {
    return kRules[static_cast<size_t>(rule)];
}

/** One thing that is wrong with a document. */
struct Finding {
    static constexpr size_t kNoElement = static_cast<size_t>(-1);

    Rule rule;
    /** 0 for the line of its element. */
    long line;
    /** What is wrong here, and what the reader makes of it. */
    std::string what;
    /** The element in question by its place in document order, and its name. */
    size_t element = kNoElement;
    std::string elementName = {};
    /** The attribute in question; empty where it is the element as a whole. */
    std::string attribute = {};
    /** Whether everything below the element is affected as well. */
    bool isWhole = false;
};

/** The findings of one document, of each rule no more than anybody reads. */
class Findings {
  public:
    static constexpr size_t kMaxPerRule = 1000;

    void add(Finding finding) {
        if (++mCounts[static_cast<size_t>(finding.rule)] <= kMaxPerRule) {
            mFindings.push_back(std::move(finding));
        }
    }

    /** Takes findings back, which then do not count either. */
    template <typename Condition>
    void removeIf(Condition condition) {
        const auto isRemoved = [&](const Finding& each) {
            const bool isMet = condition(each);
            mCounts[static_cast<size_t>(each.rule)] -= isMet ? 1 : 0;
            return isMet;
        };
        mFindings.erase(std::remove_if(mFindings.begin(), mFindings.end(), isRemoved),
                        mFindings.end());
    }

    /** Gives those about elements the elements' names and lines. */
    void locate(const XmlElements& document) {
        for (Finding& finding : mFindings) {
            if (finding.element != Finding::kNoElement) {
                finding.elementName = document.name(finding.element);
                finding.line = finding.line == 0 ? document.line(finding.element) : finding.line;
            }
        }
    }

    /** Counts those of another document as well. */
    void count(const Findings& others) {
        std::transform(mCounts.begin(), mCounts.end(), others.mCounts.begin(), mCounts.begin(),
                       std::plus<>());
    }

    const std::vector<Finding>& all() const { return mFindings; }

    /** By line, and in the order of adding. */
    const std::vector<Finding>& sorted() {
        std::stable_sort(mFindings.begin(), mFindings.end(),
                         [](const Finding& a, const Finding& b) { return a.line < b.line; });
        return mFindings;
    }

    /** Number of findings of a rule, those beyond the limit included. */
    size_t countOf(Rule rule) const { return mCounts[static_cast<size_t>(rule)]; }

    /** Number of findings of a severity, those beyond the limit included. */
    size_t countOf(Severity severity) const {
        size_t count = 0;
        for (size_t rule = 0; rule < mCounts.size(); ++rule) {
            count += kRules[rule].severity == severity ? mCounts[rule] : 0;
        }
        return count;
    }

  private:
    std::vector<Finding> mFindings;
    std::array<size_t, std::size(kRules)> mCounts{};
};

}  // namespace ormel::tools
