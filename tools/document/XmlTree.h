// What the tools ask of libxml2 themselves.
#pragma once

#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <string_view>
#include <type_traits>

namespace ormel::tools {

/** What handlers of errors get: a const one from libxml2 2.12 on. */
using XmlError = std::conditional_t<(LIBXML_VERSION >= 21200), const xmlError, xmlError>;

inline std::string_view toText(const xmlChar* characters) {
    return characters == nullptr ? "" : reinterpret_cast<const char*>(characters);
}

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
