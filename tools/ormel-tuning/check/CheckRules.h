// What `check` finds: one table of rules, and the findings that name them.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace ormel::tools {

/** In the order of the table. */
enum class Rule : size_t {
    COMPRESSED,
    ENCODING,
    NOT_WELL_FORMED,
    REFUSED,
    SCHEMA,
    ENTITY_REFERENCE,
    UNKNOWN_ELEMENT,
    UNKNOWN_ATTRIBUTE,
    UNREAD_ELEMENT,
    LOST_FIRST_CHILD,
    CHILDLESS,
    TUNING_WITHOUT_DATA,
    WRONG_SECTION,
    MISSING_ATTRIBUTE,
    NOT_A_NUMBER,
    MISSPELT_BOOLEAN,
    OUT_OF_RANGE,
    ROW_CUT,
    SHORT_COLUMN,
    UNEQUAL_COLUMNS,
    GEQ_BAND_COUNT,
    BAND_DEPTH,
    IEQ_BAND_NAME,
    INCLUDE_POSITION,
    UNKNOWN_PRESET,
    UNKNOWN_PRESET_TYPE,
    LATE_IEQ,
    OVERWRITTEN,
    REPEATED_VALUE,
    REPEATED_PROFILE,
    REPEATED_ENDPOINT,
    REPEATED_PRESET,
    REPEATED_DEVICE,
    REPEATED_TUNING,
    UNKNOWN_ENDPOINT,
    UNKNOWN_PORT,
    UNSUPPORTED_PORT,
    MISSING_DEFAULT_DEVICE,
    MIX_MATRIX_LENGTH,
    CHANNELS_NOT_SENT,
};

constexpr size_t kRuleCount = static_cast<size_t>(Rule::CHANNELS_NOT_SENT) + 1;

enum class Severity { ERROR, WARNING };

/** "error" or "warning". */
const char* severityName(Severity severity);

struct RuleRow {
    Rule rule;
    /** Stable: builds and documents refer to it. */
    const char* id;
    Severity severity;
    /** What is wrong and what the reader makes of it. */
    const char* sentence;
    /** What to write instead. */
    const char* remedy;
};

/** Every rule, in the order of the enumeration. */
const std::vector<RuleRow>& allRules();

const RuleRow& rowOf(Rule rule);

/** The rule of an id, null for any other text. */
const RuleRow* findRule(const std::string& id);

/** One thing that is wrong with a document. */
struct Finding {
    static constexpr size_t kNoElement = static_cast<size_t>(-1);

    Rule rule;
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

    void add(Finding finding);

    /** By line, and in the order of adding. */
    const std::vector<Finding>& sorted();

    const std::vector<Finding>& all() const { return mFindings; }

    /** Number of findings of a rule, those beyond the limit included. */
    size_t countOf(Rule rule) const { return mCounts[static_cast<size_t>(rule)]; }

    /** Number of findings of a severity, those beyond the limit included. */
    size_t countOf(Severity severity) const;

  private:
    std::vector<Finding> mFindings;
    std::array<size_t, kRuleCount> mCounts{};
};

}  // namespace ormel::tools
