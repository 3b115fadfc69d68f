// A document under check: its bytes, its elements, and what is wrong with it as XML.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "CheckRules.h"
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
    /** Takes a document's bytes. What keeps it from being read is appended to @p findings. */
    CheckDocument(const std::string& text, Findings& findings);

    /** Whether it is well-formed. If it is not, there is nothing to be asked below. */
    bool isReadable() const { return mDocument != nullptr; }

    xmlDoc* getTree() const { return mDocument.get(); }
    size_t size() const { return mElements.size(); }
    std::string_view name(size_t element) const { return toText(mElements[element].node->name); }
    long line(size_t element) const { return mElements[element].line; }
    /** Place of the parent; the root is its own. */
    size_t parent(size_t element) const { return mElements[element].parent; }
    /** Place behind the last element below. */
    size_t end(size_t element) const { return mElements[element].end; }
    /** Whether nothing precedes it in its parent, not even whitespace. */
    bool isFirstNode(size_t element) const { return mElements[element].node->prev == nullptr; }
    std::vector<DocumentAttribute> attributes(size_t element) const;
    /** The text of an attribute by its local name. */
    std::optional<std::string> attribute(size_t element, std::string_view name) const;

    /** Place of a node's element, or of its nearest one above; of null the root's. */
    size_t placeOf(const xmlNode* node) const;

    /** A finding about an element or one of its attributes. */
    Finding finding(Rule rule, size_t element, std::string what, std::string attribute = "") const;

  private:
    struct Element {
        xmlNode* node;
        size_t parent;
        size_t end;
        long line;
    };
    struct TreeDeleter {
        void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
    };

    void number(const std::string& text);
    void findOddities(Findings& findings) const;

    std::unique_ptr<xmlDoc, TreeDeleter> mDocument;
    std::vector<Element> mElements;
};

}  // namespace ormel::tools
