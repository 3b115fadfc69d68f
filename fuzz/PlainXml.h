// libxml2's tree of a document, as the fuzz targets look at it.
#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>
#include <string>
#include <string_view>

namespace ormel::fuzz {

struct XmlDeleter {
    void operator()(xmlDoc* tree) const { xmlFreeDoc(tree); }
    void operator()(xmlChar* text) const { xmlFree(text); }
};
using Tree = std::unique_ptr<xmlDoc, XmlDeleter>;

/** The tree of a document's text; null for a malformed one. */
inline Tree readTree(const std::string& text) {
    return Tree(
            xmlReadMemory(text.data(), static_cast<int>(text.size()), "noname.xml", nullptr, 0));
}

/** The root element; null for no tree or none with a root. */
inline const xmlNode* rootOf(const Tree& tree) {
    return tree == nullptr ? nullptr : xmlDocGetRootElement(tree.get());
}

inline std::string_view toText(const xmlChar* characters) {
    return characters == nullptr ? "" : reinterpret_cast<const char*>(characters);
}

/** Whether a cursor finds children: those of a reference are the entity's. */
inline bool hasChildren(const xmlNode* node) {
    return node->type == XML_ELEMENT_NODE && node->children != nullptr;
}

/** The text that an attribute's name gives, which is that of the first one of this local name. */
inline std::string textOf(const xmlNode* element, const xmlAttr* attr) {
    const std::unique_ptr<xmlChar, XmlDeleter> text(xmlGetProp(element, attr->name));
    return std::string(toText(text.get()));
}

}  // namespace ormel::fuzz
