// The elements of a document, without a tree of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "XmlTree.h"

namespace ormel::tools {

/** The bytes of a document, as regularFile() finds it. Throws as that does. */
std::string readDocument(const std::string& path);

struct DocumentAttribute {
    std::string_view name;
    std::string text;
    /** Whether it is in a namespace, and so no attribute of tuning documents. */
    bool isQualified;
};

/** A SAX2 handler that gets what a parser comes across, and the number of the current element. */
struct XmlListener {
    xmlSAXHandler* handlers = nullptr;
    void* context = nullptr;
    size_t element = 0;
    /** By element, the line of its first text that is more than blanks. */
    std::map<size_t, long> textLines = {};
    /** What it gets for the root's name, which the reader does not look at; null for that name. */
    const char* rootName = nullptr;
};

/** A node among its siblings. */
struct XmlPosition {
    /** Number of nodes before it. */
    size_t node;
    /** The first element that is not before it, at @p end if there is none. */
    size_t element;
    size_t end;
};

/** The elements of a document by their numbers in document order, the root's being 0. */
class XmlElements {
  public:
    /** Parses a document's bytes. What libxml2 says of them goes where it does. */
    explicit XmlElements(std::string_view text, XmlListener* listener = nullptr);

    /** Whether the document is well-formed. If it is not, there is nothing to be asked below. */
    bool isReadable() const { return mIsReadable; }

    /** The encoding that the document says it has. */
    const std::string& getEncoding() const { return mEncoding; }

    size_t size() const { return mElements.size(); }
    std::string_view name(size_t element) const { return toText(mElements[element].name); }
    /** The line on which the start tag begins. */
    long line(size_t element) const { return mElements[element].line; }
    /** Number of the parent; the root is its own. */
    size_t parent(size_t element) const { return mElements[element].parent; }
    /** Number behind the last element below. */
    size_t end(size_t element) const { return mElements[element].end; }
    /** Number of its nodes, text and comments included. */
    size_t nodes(size_t element) const { return mElements[element].nodes; }
    /** Number of nodes that precede it in its parent. */
    size_t nodesBefore(size_t element) const { return mElements[element].nodesBefore; }
    std::vector<DocumentAttribute> attributes(size_t element) const;
    /** The text of an attribute by its local name. */
    std::optional<std::string> attribute(size_t element, std::string_view name) const;

    XmlPosition positionOf(size_t element) const;
    bool isOnElement(const XmlPosition& position) const;
    /** Where TagIterator::childrenNext() leads from there. */
    XmlPosition childrenNext(const XmlPosition& position) const;

    /** Elements, and the entities that their content refers to. */
    const std::vector<std::pair<size_t, std::string>>& getReferences() const { return mReferences; }

  private:
    class Reader;

    // A document of 16 MiB has a million of each.
    struct Element {
        const xmlChar* name;
        uint32_t parent;
        uint32_t end;
        uint32_t line;
        uint32_t nodesBefore;
        uint32_t nodes;
        uint32_t firstAttribute;
    };
    struct Attribute {
        const xmlChar* name;
        /** Where its text ends in that of all attributes. */
        uint32_t textEnd;
        bool isQualified;
    };

    bool mIsReadable = false;
    std::string mEncoding;
    XmlPointer<xmlDict> mNames;
    std::deque<Element> mElements;
    std::deque<Attribute> mAttributes;
    std::string mTexts;
    std::vector<std::pair<size_t, std::string>> mReferences;
};

}  // namespace ormel::tools
