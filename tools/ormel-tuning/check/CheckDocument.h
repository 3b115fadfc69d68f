// A document under check: its elements, and what is wrong with it as XML and by the schema.
#pragma once

#include <libxml/xmlschemas.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "CheckRules.h"
#include "document/XmlElements.h"

namespace ormel::tools {

/** A schema, ready for use. */
struct CheckSchema {
    /** @param file path of a schema; empty for the one built in. Throws std::runtime_error. */
    explicit CheckSchema(const std::string& file);

    /** The root's name, whatever a document calls it; null where documents are held to it. */
    const char* rootName;
    std::shared_ptr<xmlSchema> schema;
};

/** The elements of a well-formed document, and findings about them. */
class CheckDocument : public XmlElements {
  public:
    using XmlElements::XmlElements;

    const XmlElements& elements() const { return *this; }

    /** Whether nothing precedes it in its parent, not even whitespace. */
    bool isFirstNode(size_t element) const { return nodesBefore(element) == 0; }

    /** A finding about an element or one of its attributes. */
    Finding finding(Rule rule, size_t element, std::string what, std::string attribute = "") const {
        return {rule,
                line(element),
                std::move(what),
                element,
                std::string(name(element)),
                std::move(attribute)};
    }
};

/**
 * Parses a document's bytes, and holds it to a schema meanwhile. None if it cannot be read.
 *
 * @param findings gets what keeps it from being read, here or on a device
 * @param faults   gets what it does not keep to of the schema, an element's or attribute's first
 *                 fault each, without the element's name; the line is 0 where it is the element's
 */
std::optional<CheckDocument> parseForCheck(const std::string& text, const CheckSchema& schema,
                                           Findings& findings, Findings& faults);

}  // namespace ormel::tools
