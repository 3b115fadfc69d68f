// A document under check: its elements, and what is wrong with it as XML.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "CheckRules.h"
#include "CheckSchema.h"
#include "document/XmlTree.h"

namespace ormel::tools {

struct DocumentAttribute {
    std::string_view name;
    std::string text;
    /** Whether it is in a namespace, and so no attribute of tuning documents. */
    bool isQualified;
};

/** The elements of a well-formed document by their places in document order, the root's being 0. */
class CheckDocument {
  public:
    /**
     * Parses a document's bytes, and has it validated meanwhile. What keeps it from being read is
     * appended to @p findings.
     */
    CheckDocument(const std::string& text, SchemaValidation& validation, Findings& findings);

    /** Whether it is well-formed. If it is not, there is nothing to be asked below. */
    bool isReadable() const { return mIsReadable; }

    size_t size() const { return mElements.size(); }
    std::string_view name(size_t element) const { return toText(mElements[element].name); }
    long line(size_t element) const { return mElements[element].line; }
    /** Place of the parent; the root is its own. */
    size_t parent(size_t element) const { return mElements[element].parent; }
    /** Place behind the last element below. */
    size_t end(size_t element) const { return mElements[element].end; }
    /** Whether nothing precedes it in its parent, not even whitespace. */
    bool isFirstNode(size_t element) const { return mElements[element].isFirstNode; }
    std::vector<DocumentAttribute> attributes(size_t element) const;
    /** The text of an attribute by its local name. */
    std::optional<std::string> attribute(size_t element, std::string_view name) const;

    /** A finding about an element or one of its attributes. */
    Finding finding(Rule rule, size_t element, std::string what, std::string attribute = "") const;

  private:
    class Reader;

    // A document of 16 MiB has a million of each.
    struct Element {
        const xmlChar* name;
        uint32_t parent;
        uint32_t end;
        uint32_t line;
        uint32_t firstAttribute;
        bool isFirstNode;
        bool hasNodes;
    };
    struct Attribute {
        const xmlChar* name;
        /** Where its text ends in that of all attributes. */
        uint32_t textEnd;
        bool isQualified;
    };

    void setLines(const std::string& text);

    bool mIsReadable = false;
    XmlPointer<xmlDict> mNames;
    std::deque<Element> mElements;
    std::deque<Attribute> mAttributes;
    std::string mTexts;
};

}  // namespace ormel::tools
