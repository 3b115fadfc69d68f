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
#include "document/XmlElements.h"

namespace ormel::tools {

/** The elements of a well-formed document by their places in document order, the root's being 0. */
class CheckDocument {
  public:
    /**
     * Parses a document's bytes, and has it validated meanwhile. What keeps it from being read is
     * appended to @p findings.
     */
    CheckDocument(const std::string& text, SchemaValidation& validation, Findings& findings);

    /** Whether it is well-formed. If it is not, there is nothing to be asked below. */
    bool isReadable() const { return mElements.has_value() && mElements->isReadable(); }

    /** The elements, whose numbers are their places. */
    const XmlElements& elements() const { return *mElements; }
    size_t size() const { return mElements->size(); }
    std::string_view name(size_t element) const { return mElements->name(element); }
    long line(size_t element) const { return mElements->line(element); }
    /** Place of the parent; the root is its own. */
    size_t parent(size_t element) const { return mElements->parent(element); }
    /** Place behind the last element below. */
    size_t end(size_t element) const { return mElements->end(element); }
    /** Whether nothing precedes it in its parent, not even whitespace. */
    bool isFirstNode(size_t element) const { return mElements->nodesBefore(element) == 0; }
    std::vector<DocumentAttribute> attributes(size_t element) const {
        return mElements->attributes(element);
    }
    /** The text of an attribute by its local name. */
    std::optional<std::string> attribute(size_t element, std::string_view name) const {
        return mElements->attribute(element, name);
    }

    /** A finding about an element or one of its attributes. */
    Finding finding(Rule rule, size_t element, std::string what, std::string attribute = "") const;

  private:
    void findOddities(Findings& findings) const;

    /** None of a file that is packed. */
    std::optional<XmlElements> mElements;
};

}  // namespace ormel::tools
