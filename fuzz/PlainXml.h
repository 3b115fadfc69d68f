// libxml2's tree of a document, for the fuzz targets.
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

/** The tree of a document; null if it is malformed. */
inline Tree readTree(const std::string& text) {
    return Tree(
            xmlReadMemory(text.data(), static_cast<int>(text.size()), "noname.xml", nullptr, 0));
}

/** The root element; null if there is no tree or no root. */
inline const xmlNode* rootOf(const Tree& tree) {
    return tree == nullptr ? nullptr : xmlDocGetRootElement(tree.get());
}

inline std::string_view toText(const xmlChar* characters) {
    return characters == nullptr ? "" : reinterpret_cast<const char*>(characters);
}

/** Whether a cursor finds children. A reference has none: they belong to the entity. */
inline bool hasChildren(const xmlNode* node) {
    return node->type == XML_ELEMENT_NODE && node->children != nullptr;
}

/** The text for an attribute's name: that of the first attribute with this local name. */
inline std::string textOf(const xmlNode* element, const xmlAttr* attr) {
    const std::unique_ptr<xmlChar, XmlDeleter> text(xmlGetProp(element, attr->name));
    return std::string(toText(text.get()));
}

}  // namespace ormel::fuzz
