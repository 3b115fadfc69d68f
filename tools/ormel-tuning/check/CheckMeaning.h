// The layer of `check` that goes by what the reader made of a document.
#pragma once

#include <ormel/VersionRules.h>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "CheckRules.h"
#include "document/PackedEntries.h"
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
    const XmlElements& document;
    const ReadTrace& trace;
    const DeviceData& data;
    const std::string formatVersion;
    Findings& findings;

    const ReadElement& read(size_t element) const { return trace.getElements()[element]; }
    const ReadSection& section(size_t element) const {
        return trace.getSections()[read(element).section];
    }
    /** What a section's object holds of a parameter; none where nothing came of the section. */
    const std::vector<int>& valuesOf(const ReadSection& section, Parameter param) const {
        static const std::vector<int> none;
        if (section.object == nullptr || section.owner == ParameterOwner::NONE) {
            return none;
        }
        return tools::valuesOf(*static_cast<const ParameterValues*>(section.object), param);
    }
    bool has(VersionRuleKind rule) const { return findVersionRule(formatVersion, rule) != nullptr; }
    /** Whether the reader was at the element at all, other than to look at its name. */
    bool isUsed(size_t element) const {
        const ReadElement& record = read(element);
        return record.as != ReadElement::As::NOTHING || record.isEntered || record.isChildless;
    }
    /** Whether the reader skipped the element because no node comes before it in its parent. */
    bool isLostFirst(size_t element) const {
        return element != 0 && document.nodesBefore(element) == 0 &&
               read(document.parent(element)).isEntered && !isUsed(element);
    }
    bool isNamed(size_t element, DocumentElement kind) const {
        return document.name(element) == rowOf(kind).name;
    }
    /** The elements below one that meet a condition. */
    template <typename Condition>
    std::vector<size_t> below(size_t element, Condition condition) const {
        std::vector<size_t> places;
        for (size_t i = element + 1; i < document.end(element); ++i) {
            if (condition(i)) {
                places.push_back(i);
            }
        }
        return places;
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
        findings.add({rule, 0, concat(what...), element, "", std::string(attribute)});
    }
    /** The same about it and all that is below it. */
    template <typename... Parts>
    void addWhole(Rule rule, size_t element, const Parts&... what) const {
        findings.add({rule, 0, concat(what...), element, "", "", true});
    }
};

/** What is left unread, and what is read in the wrong place. */
void checkStructure(const CheckContext& context);

/** The texts of attributes, and attributes that are missing or ignored. */
void checkAttributes(const CheckContext& context);

/** What the objects of the document come to, each and together. */
void checkObjects(const CheckContext& context);

/** Sections, rows, values and bands that differ from others of their kind; rows of matrices. */
void checkConsistency(const CheckContext& context);

}  // namespace ormel::tools
