// The layer of `check` that goes by what the reader made of a document.
#pragma once

#include <ormel/VersionRules.h>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "CheckDocument.h"
#include "CheckRules.h"
#include "document/ReadTrace.h"

namespace ormel::tools {

/** Texts and numbers, one behind the other. */
template <typename... Parts>
std::string concat(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

/** A document, what its reader did with it, and where findings go. */
struct CheckContext {
    const CheckDocument& document;
    const ReadTrace& trace;
    const DeviceData& data;
    const std::string formatVersion;
    Findings& findings;

    const ReadElement& read(size_t element) const { return trace.getElements()[element]; }
    const ReadSection& section(size_t element) const {
        return trace.getSections()[read(element).section];
    }
    /** What a section's object holds of a parameter; none where nothing came of the section. */
    const std::vector<int>& valuesOf(size_t section, Parameter param) const {
        return valuesOf(trace.getSections()[section], param);
    }
    const std::vector<int>& valuesOf(const ReadSection& section, Parameter param) const {
        static const std::vector<int> none;
        if (section.object == nullptr || section.owner == ParameterOwner::NONE) {
            return none;
        }
        const auto& values = static_cast<const ParameterValues*>(section.object)->getValues();
        const auto found = values.find(param);
        return found == values.end() ? none : found->second;
    }
    bool has(VersionRuleKind rule) const { return findVersionRule(formatVersion, rule) != nullptr; }
    /** Whether the reader was at the element at all, other than to look at its name. */
    bool isUsed(size_t element) const {
        const ReadElement& record = read(element);
        return record.as != ReadElement::As::NOTHING || record.isEntered || record.isStray;
    }
    /** Whether the reader passed over the element since its parent has nothing in front of it. */
    bool isLostFirst(size_t element) const {
        return element != 0 && document.isFirstNode(element) &&
               read(document.parent(element)).isEntered && !isUsed(element);
    }
    bool isNamed(size_t element, DocumentElement kind) const {
        return document.name(element) == rowOf(kind).name;
    }
    /** Adds a finding about an element. @param what texts and numbers to put together */
    template <typename... Parts>
    void add(Rule rule, size_t element, const Parts&... what) const {
        addAttribute(rule, element, "", what...);
    }
    /** The same about one of its attributes. */
    template <typename... Parts>
    void addAttribute(Rule rule, size_t element, std::string_view attribute,
                      const Parts&... what) const {
        findings.add(document.finding(rule, element, concat(what...), std::string(attribute)));
    }
    /** The same about it and all that is below it. */
    template <typename... Parts>
    void addWhole(Rule rule, size_t element, const Parts&... what) const {
        Finding finding = document.finding(rule, element, concat(what...));
        finding.isWhole = true;
        findings.add(std::move(finding));
    }
};

template <typename Range, typename Value>
bool contains(const Range& range, const Value& value) {
    return std::find(std::begin(range), std::end(range), value) != std::end(range);
}

/** The place of the value that is farthest from 0. */
size_t largestOf(const std::vector<int>& values);

/** Whether a value that is not small is over five times as large as any other. */
bool isOutOfProportion(const std::vector<int>& values, size_t at, long least = 20);

/** Whether the neighbours of a value have the other sign, and none of the three is small. */
bool isTurnedAt(const std::vector<int>& values, size_t at);

/** What is left unread, and what is read in the wrong place. */
void checkStructure(const CheckContext& context);

/** The texts of attributes, and those that are missing or not looked at. */
void checkAttributes(const CheckContext& context);

/** What the objects of the document come to, each and together. */
void checkObjects(const CheckContext& context);

/** Sections against the others of their kind. */
void checkSisters(const CheckContext& context);

/** Bands against those around them and in other curves, and the rows of matrices. */
void checkCurves(const CheckContext& context);

/** Whether the document is written for another format than it says. */
void checkFormat(const CheckContext& context);

/** Drops what comes of another finding: of one mistake one finding is left. */
void dropConsequences(const CheckDocument& document, Findings& findings);

}  // namespace ormel::tools
