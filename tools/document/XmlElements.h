// The elements of a document, without a tree of them, and what the tools ask of libxml2 otherwise.
#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace ormel::tools {

/** What handlers of errors get: a const one from libxml2 2.12 on. */
using XmlError = std::conditional_t<(LIBXML_VERSION >= 21200), const xmlError, xmlError>;

inline std::string_view toText(const xmlChar* characters) {
    return characters == nullptr ? "" : reinterpret_cast<const char*>(characters);
}

struct XmlDeleter {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
    void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
    void operator()(xmlDict* names) const { xmlDictFree(names); }
    void operator()(xmlChar* text) const { xmlFree(text); }
};

template <typename Handle>
using XmlPointer = std::unique_ptr<Handle, XmlDeleter>;

/**
 * Takes what libxml2 says while it lives, and so keeps it from writing to stderr. Whoever took that
 * before gets it again afterwards.
 */
class XmlErrorScope {
  public:
    using Handler = std::function<void(XmlError&)>;

    /** @param handler gets every error but those about namespaces, and no warnings */
    explicit XmlErrorScope(Handler handler = nullptr)
        : mHandler(std::move(handler)),
          mOuter(xmlStructuredError),
          mOuterContext(xmlStructuredErrorContext) {
        xmlSetStructuredErrorFunc(this, take);
    }
    XmlErrorScope(const XmlErrorScope&) = delete;
    XmlErrorScope& operator=(const XmlErrorScope&) = delete;
    ~XmlErrorScope() { xmlSetStructuredErrorFunc(mOuterContext, mOuter); }

    /** ":LINE: what" of the first error; empty if there was none. */
    const std::string& first() const { return mFirst; }

  private:
    static void take(void* self, XmlError* error) {
        auto& scope = *static_cast<XmlErrorScope*>(self);
        // A prefix that stands for nothing keeps no document from being read.
        if (error->level < XML_ERR_ERROR || error->domain == XML_FROM_NAMESPACE) {
            return;
        }
        if (scope.mFirst.empty() && error->message != nullptr) {
            scope.mFirst = ":" + std::to_string(error->line) + ": " + error->message;
            scope.mFirst.erase(scope.mFirst.find_last_not_of('\n') + 1);
        }
        if (scope.mHandler != nullptr) {
            scope.mHandler(*error);
        }
    }

    const Handler mHandler;
    const xmlStructuredErrorFunc mOuter;
    void* const mOuterContext;
    std::string mFirst;
};

/** Calls @p visit with an element and every one below in document order, entities left closed. */
template <typename Visitor>
void forEachElement(xmlNode* element, const Visitor& visit) {
    visit(element);
    for (xmlNode* child = xmlFirstElementChild(element); child != nullptr;
         child = xmlNextElementSibling(child)) {
        forEachElement(child, visit);
    }
}

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

/** Elements that follow one another, seen from the first or from a node in front of it. */
struct XmlSiblings {
    size_t first;
    size_t end;
    bool isOnFirst;
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

    /** Where TagIterator::childrenNext() leads from there. */
    XmlSiblings childrenNext(const XmlSiblings& from) const;

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
