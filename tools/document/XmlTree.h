// What the tools ask of libxml2 themselves.
#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

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

    /** @param handler gets every error, but no warnings */
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
        if (error->level >= XML_ERR_ERROR) {
            static_cast<XmlErrorScope*>(self)->take(*error);
        }
    }

    void take(XmlError& error) {
        if (mFirst.empty() && error.message != nullptr) {
            mFirst = ":" + std::to_string(error.line) + ": " + error.message;
            mFirst.erase(mFirst.find_last_not_of('\n') + 1);
        }
        if (mHandler != nullptr) {
            mHandler(error);
        }
    }

    const Handler mHandler;
    const xmlStructuredErrorFunc mOuter;
    void* const mOuterContext;
    std::string mFirst;
};

/** Calls @p visit with every element of a document in document order, entities left closed. */
template <typename Visitor>
void forEachElement(xmlNode* root, Visitor visit) {
    xmlNode* node = root;
    while (node != nullptr) {
        const bool isElement = node->type == XML_ELEMENT_NODE;
        if (isElement) {
            visit(node);
        }
        if (isElement && node->children != nullptr) {
            node = node->children;
            continue;
        }
        while (node != root && node->next == nullptr) {
            node = node->parent;
        }
        node = node == root ? nullptr : node->next;
    }
}

}  // namespace ormel::tools
