#define LOG_TAG "TagIterator"

#include <ormel/TagIterator.h>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <log/log.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace ormel {

namespace {

const char* toText(const xmlChar* characters) {
    return characters == nullptr ? "" : reinterpret_cast<const char*>(characters);
}

bool isElement(const xmlNode* node) {
    return node != nullptr && node->type == XML_ELEMENT_NODE;
}

/** The text of an attribute, owned by the document where it stands there in one piece. */
class AttributeText {
  public:
    AttributeText(const xmlNode* element, const xmlAttr* attribute) {
        const xmlAttr* first = element->properties;
        while (!xmlStrEqual(first->name, attribute->name)) {
            first = first->next;
        }
        // Attributes are found by local name, so of several the first one counts.
        const xmlNode* const content = first->children;
        if (content == nullptr) {
            return;
        }
        if (content->type == XML_TEXT_NODE && content->next == nullptr) {
            mText = toText(content->content);
            return;
        }
        mOwned.reset(xmlGetProp(element, attribute->name));
        mText = toText(mOwned.get());
    }

    std::string_view get() const { return mText; }

  private:
    struct Deleter {
        void operator()(xmlChar* characters) const { xmlFree(characters); }
    };

    std::unique_ptr<xmlChar, Deleter> mOwned;
    std::string_view mText;
};

/** Calls @p visit with the name and the text of every attribute of @p element, in document order. */
template <typename Visitor>
void forEachAttribute(const xmlNode* element, Visitor visit) {
    for (const xmlAttr* attr = element->properties; attr != nullptr; attr = attr->next) {
        visit(std::string_view(toText(attr->name)), AttributeText(element, attr).get());
    }
}

xmlDoc* readMemory(const std::string& document) {
    if (document.size() > static_cast<size_t>(std::numeric_limits<int>::max())) {
        return nullptr;
    }
    return xmlReadMemory(document.data(), static_cast<int>(document.size()), "noname.xml", nullptr,
                         0);
}

}  // namespace

int32_t TagIterator::mInstanceCount = 0;

void TagIterator::DocumentDeleter::operator()(_xmlDoc* document) const {
    xmlFreeDoc(document);
}

TagIterator::TagIterator() {
    ++mInstanceCount;
}

TagIterator::~TagIterator() {
    mDocument.reset();
    if (--mInstanceCount == 0) {
        xmlCleanupParser();
    }
}

int TagIterator::init(const std::string& source, bool fromMemory) {
    // The numbers in the messages are fixed: the field knows each failure by its number.
    if (source.empty()) {
        ALOGE("Invalide xml file path/data, %d", 52);
        return -EINVAL;
    }
    clearAll();
    mDocument.reset(fromMemory ? readMemory(source) : xmlReadFile(source.c_str(), nullptr, 0));
    if (mDocument == nullptr) {
        ALOGE("fail to call xmlReadFile,  %d", 63);
        return -EINVAL;
    }
    mRoot = xmlDocGetRootElement(mDocument.get());
    if (mRoot == nullptr) {
        ALOGE("fail to call xmlDocGetRootElement, %d", 69);
        return -ENODEV;
    }
    mCurrent = mRoot->children;
    return 0;
}

void TagIterator::clearAll() {
    mDocument.reset();
    mRoot = nullptr;
    mCurrent = nullptr;
    std::fill(mNodeStack.begin(), mNodeStack.end(), nullptr);
}

void TagIterator::next() {
    if (mCurrent != nullptr) {
        mCurrent = mCurrent->next;
    }
}

void TagIterator::childrenNext() {
    if (isChildrenValid()) {
        mCurrent = mCurrent->children->next;
    }
}

bool TagIterator::isChildrenValid() {
    return mCurrent != nullptr && mCurrent->children != nullptr;
}

bool TagIterator::isNextValid() {
    return mCurrent != nullptr && mCurrent->next != nullptr;
}

bool TagIterator::isCurValid() {
    return mCurrent != nullptr;
}

bool TagIterator::isElementNode() {
    return isElement(mCurrent);
}

void TagIterator::pushNode() {
    mNodeStack.push_back(mCurrent);
}

void TagIterator::popNode() {
    if (mNodeStack.empty()) {
        ALOGE("It's empty in node stack!");
        return;
    }
    mCurrent = mNodeStack.back();
    mNodeStack.pop_back();
}

std::string TagIterator::getNodeName() {
    return mCurrent == nullptr ? "" : toText(mCurrent->name);
}

std::vector<std::string> TagIterator::getAttrsName() {
    std::vector<std::string> names;
    if (isElement(mCurrent)) {
        forEachAttribute(mCurrent, [&names](std::string_view name, std::string_view) {
            names.emplace_back(name);
        });
    }
    return names;
}

void TagIterator::parseNodeIntVector(std::vector<int>& out) {
    if (mCurrent == nullptr) {
        ALOGE("Invalid node when parsing String vector.");
        return;
    }
    if (!isElement(mCurrent)) {
        return;
    }
    forEachAttribute(mCurrent, [&out](std::string_view, std::string_view value) {
        out.push_back(string2Int(value));
    });
}

void TagIterator::parseNodeAll(std::vector<std::string>& out) {
    parseNodeWithName({}, out);
}

void TagIterator::parseNodeWithName(const std::vector<std::string>& names,
                                    std::vector<std::string>& out) {
    if (mCurrent == nullptr) {
        ALOGE("Invalid node when parsing String vector.");
        return;
    }
    if (!isElement(mCurrent)) {
        return;
    }
    if (names.empty()) {
        forEachAttribute(mCurrent, [&out](std::string_view, std::string_view value) {
            out.emplace_back(value);
        });
        return;
    }
    out.resize(names.size());
    forEachAttribute(mCurrent, [&](std::string_view name, std::string_view value) {
        for (size_t i = 0; i < names.size(); ++i) {
            if (names[i] == name) {
                out[i] = value;
            }
        }
    });
}

}  // namespace ormel
