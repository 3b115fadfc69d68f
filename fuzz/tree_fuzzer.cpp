// Compares the library's Document with libxml2's tree, node by node.
#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "DocumentCost.h"
#include "Fuzz.h"
#include "PlainXml.h"
#include "tuning/DocumentReader.h"

namespace ormel::fuzz {

namespace {

/** The nodes of a tree in document order, without the children of references. */
std::vector<const xmlNode*> nodesOf(const xmlNode* root) {
    std::vector<const xmlNode*> nodes;
    for (const xmlNode* node = root; node != nullptr;) {
        nodes.push_back(node);
        if (hasChildren(node)) {
            node = node->children;
            continue;
        }
        while (node != root && node->next == nullptr) {
            node = node->parent;
        }
        node = node == root ? nullptr : node->next;
    }
    return nodes;
}

void compareAttributes(const Document& document, const Document::Node& ours,
                       const xmlNode* theirs) {
    const Document::Attribute* attribute = document.attributesOf(ours);
    uint32_t count = 0;
    const xmlAttr* attr = theirs->type == XML_ELEMENT_NODE ? theirs->properties : nullptr;
    for (; attr != nullptr; attr = attr->next, ++attribute) {
        require(++count <= ours.attributeCount);
        require(document.text(attribute->name) == toText(attr->name));
        require(document.text(attribute->text) == textOf(theirs, attr));
    }
    require(count == ours.attributeCount);
}

void compare(const Document& document, const xmlNode* root) {
    const std::vector<const xmlNode*> nodes = nodesOf(root);
    std::map<const xmlNode*, uint32_t> indexes;
    for (const xmlNode* const node : nodes) {
        indexes.emplace(node, static_cast<uint32_t>(indexes.size()));
    }
    uint32_t elements = 0;
    for (uint32_t i = 0; i < nodes.size(); ++i) {
        const Document::Node& ours = document.node(i);
        const xmlNode* const theirs = nodes[i];
        const bool isElement = theirs->type == XML_ELEMENT_NODE;
        const bool isLast = i == 0 || theirs->next == nullptr;
        require((ours.isElement != 0) == isElement);
        require(document.text(ours.name) == toText(theirs->name));
        require((ours.hasChildren != 0) == hasChildren(theirs));
        require(ours.next == (isLast ? Document::kNone : indexes.at(theirs->next)));
        require(ours.elementsBefore == elements);
        elements += isElement ? 1 : 0;
        compareAttributes(document, ours, theirs);
    }
    require(document.getNodeCount() == nodes.size());
}

/** Whether libxml2 assembles a text longer than the limit. */
bool hasLongText(const xmlNode* root) {
    const std::vector<const xmlNode*> nodes = nodesOf(root);
    return std::any_of(nodes.begin(), nodes.end(), [](const xmlNode* node) {
        return node->type == XML_TEXT_NODE && toText(node->content).size() > kMaxTextBytes;
    });
}

}  // namespace

}  // namespace ormel::fuzz

extern "C" int LLVMFuzzerInitialize(int* /* argc */, char*** /* argv */) {
    ormel::fuzz::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace ormel;
    fuzz::Input input(data, size);
    // Inputs are the document target's, which start with a byte of settings.
    input.byte();
    const std::string text = input.rest();
    DocumentBudget budget;
    std::string error;
    std::unique_ptr<Document> document;
    const uint64_t bytes =
            fuzz::bytesAllocatedBy([&] { document = readDocument(text, true, budget, error); });
    const fuzz::Tree tree = fuzz::readTree(text);
    const xmlNode* const root = fuzz::rootOf(tree);
    fuzz::require((document == nullptr) == !error.empty());
    fuzz::requireLittleWork(text, budget, document != nullptr);
    fuzz::requireLittleMemory(text, budget, bytes);
    if (document != nullptr) {
        fuzz::require(root != nullptr && document->hasRoot());
        fuzz::compare(*document, root);
    } else if (root != nullptr) {
        fuzz::require(budget.isSpent() || text.size() > DocumentBudget::kMaxDocumentBytes ||
                      fuzz::hasLongText(root));
    }
    return 0;
}
