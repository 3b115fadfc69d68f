#define LOG_TAG "TagIterator"

#include <ormel/TagIterator.h>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <log/log.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <map>

namespace ormel {

namespace {

const char* toText(const xmlChar* characters) {
    return characters == nullptr ? "" : reinterpret_cast<const char*>(characters);
}

bool isElement(const xmlNode* node) {
    return node != nullptr && node->type == XML_ELEMENT_NODE;
}

struct XmlDeleter {
    void operator()(xmlChar* characters) const { xmlFree(characters); }
};
using XmlText = std::unique_ptr<xmlChar, XmlDeleter>;

/**
 * An attribute, read by its local name. All of one local name have the text of the first, which may
 * be long: readers fetch it once for each name.
 */
class Attribute {
  public:
    Attribute(const xmlNode* element, const xmlAttr* attr, bool isUnique)
        : mElement(element), mAttr(attr), mIsUnique(isUnique) {}

    const char* name() const { return toText(mAttr->name); }
    bool isNamed(const char* other) const { return std::strcmp(name(), other) == 0; }

    /**
     * What xmlGetProp finds, taken straight from the tree where that is the same, and else put into
     * @p made.
     */
    std::string_view text(std::string& made) const {
        if (mIsUnique && mAttr->children == nullptr) {
            return "";
        }
        if (mIsUnique && isInOnePiece()) {
            return toText(mAttr->children->content);
        }
        made = toText(XmlText(xmlGetProp(mElement, mAttr->name)).get());
        return made;
    }

  private:
    bool isInOnePiece() const {
        return mAttr->children->type == XML_TEXT_NODE && mAttr->children->next == nullptr;
    }

    const xmlNode* mElement;
    const xmlAttr* mAttr;
    bool mIsUnique;
};

/** Calls @p visit with every attribute of @p element, in document order. */
template <typename Visitor>
void forEachAttribute(const xmlNode* element, Visitor visit) {
    bool isUnique = true;
    for (const xmlAttr* attr = element->properties; attr != nullptr; attr = attr->next) {
        // From the first attribute in a namespace on, a local name may be an earlier one's.
        isUnique = isUnique && attr->ns == nullptr;
        visit(Attribute(element, attr, isUnique));
    }
}

xmlDoc* readMemory(const std::string& document, int options) {
    if (document.size() > static_cast<size_t>(std::numeric_limits<int>::max())) {
        return nullptr;
    }
    return xmlReadMemory(document.data(), static_cast<int>(document.size()), "noname.xml", nullptr,
                         options);
}

}  // namespace

int32_t TagIterator::mInstanceCount = 0;

void TagIterator::DocumentDeleter::operator()(_xmlDoc* document) const {
    xmlFreeDoc(document);
}

TagIterator::TagIterator() : TagIterator(0) {}

TagIterator::TagIterator(int parserOptions) : TagIterator(parserOptions, false) {}

TagIterator::TagIterator(int parserOptions, bool readsInPlace)
    : mParserOptions(parserOptions), mReadsInPlace(readsInPlace) {
    ++mInstanceCount;
}

std::unique_ptr<TagIterator> TagIterator::createInPlace() {
    return std::unique_ptr<TagIterator>(new TagIterator(0, true));
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
    mDocument.reset(fromMemory ? readMemory(source, mParserOptions)
                               : xmlReadFile(source.c_str(), nullptr, mParserOptions));
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
    mStrayDepth = kNotStray;
    mStraySteps = 0;
}

void TagIterator::next() {
    if (mCurrent != nullptr) {
        mCurrent = mCurrent->next;
        countStep();
    }
}

void TagIterator::childrenNext() {
    if (isChildrenValid()) {
        mCurrent = mCurrent->children->next;
    } else if (mCurrent != nullptr) {
        mStrayDepth = std::min(mStrayDepth, mNodeStack.size());
    }
}

void TagIterator::countStep() {
    if (mStrayDepth == kNotStray || ++mStraySteps < kMaxStraySteps) {
        return;
    }
    if (mStraySteps == kMaxStraySteps) {
        ALOGE("Too many steps from elements without children, %d", kMaxStraySteps);
    }
    mCurrent = nullptr;
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
    countStep();
}

void TagIterator::popNode() {
    if (mNodeStack.empty()) {
        ALOGE("It's empty in node stack!");
        return;
    }
    mCurrent = isExhausted() ? nullptr : mNodeStack.back();
    mNodeStack.pop_back();
    if (mStrayDepth != kNotStray && mNodeStack.size() < mStrayDepth) {
        mStrayDepth = kNotStray;
    }
}

std::string TagIterator::getNodeName() {
    return mCurrent == nullptr ? "" : toText(mCurrent->name);
}

std::vector<std::string> TagIterator::getAttrsName() {
    std::vector<std::string> names;
    if (isElement(mCurrent)) {
        for (const xmlAttr* attr = mCurrent->properties; attr != nullptr; attr = attr->next) {
            names.emplace_back(toText(attr->name));
        }
    }
    return names;
}

bool TagIterator::isElementToRead() {
    if (mCurrent == nullptr) {
        ALOGE("Invalid node when parsing String vector.");
    }
    return isElement(mCurrent);
}

void TagIterator::parseNodeIntVector(std::vector<int>& out) {
    if (!isElementToRead()) {
        return;
    }
    std::string made;
    std::map<std::string_view, int> numbers;
    forEachAttribute(mCurrent, [&](const Attribute& attribute) {
        const auto [entry, isNew] = numbers.try_emplace(attribute.name());
        if (isNew) {
            entry->second = string2Int(attribute.text(made));
        }
        out.push_back(entry->second);
    });
}

void TagIterator::parseNodeAll(std::vector<std::string>& out) {
    parseNodeWithName({}, out);
}

void TagIterator::parseNodeWithName(const std::vector<std::string>& names,
                                    std::vector<std::string>& out) {
    if (!isElementToRead()) {
        return;
    }
    std::string made;
    if (names.empty()) {
        forEachAttribute(mCurrent, [&](const Attribute& attribute) {
            out.emplace_back(attribute.text(made));
        });
        return;
    }
    out.resize(names.size());
    std::vector<bool> isRead(names.size());
    forEachAttribute(mCurrent, [&](const Attribute& attribute) {
        for (size_t i = 0; i < names.size(); ++i) {
            if (!isRead[i] && names[i] == attribute.name()) {
                out[i] = attribute.text(made);
                isRead[i] = true;
            }
        }
    });
}

std::string_view TagIterator::readName() {
    if (mReadsInPlace) {
        return mCurrent == nullptr ? "" : toText(mCurrent->name);
    }
    mNameBuffer = getNodeName();
    return mNameBuffer;
}

std::string_view TagIterator::readText(const char* name) {
    if (!mReadsInPlace) {
        const std::vector<std::string_view>& texts = readTexts({name});
        return texts.empty() ? "" : texts.front();
    }
    std::string_view text;
    mTextBuffer.resize(1);
    if (isElementToRead()) {
        forEachAttribute(mCurrent, [&](const Attribute& attribute) {
            if (text.data() == nullptr && attribute.isNamed(name)) {
                text = attribute.text(mTextBuffer.front());
            }
        });
    }
    return text;
}

std::string_view TagIterator::readFirstText() {
    if (!mReadsInPlace) {
        mTextBuffer.clear();
        parseNodeAll(mTextBuffer);
        mTextBuffer.resize(1);
        return mTextBuffer.front();
    }
    if (!isElementToRead() || mCurrent->properties == nullptr) {
        return "";
    }
    mTextBuffer.resize(1);
    return Attribute(mCurrent, mCurrent->properties, true).text(mTextBuffer.front());
}

const std::vector<std::string_view>& TagIterator::readTexts(const std::vector<std::string>& names) {
    if (mReadsInPlace) {
        readTextsInPlace(names);
        return mTexts;
    }
    mTextBuffer.clear();
    parseNodeWithName(names, mTextBuffer);
    mTexts.assign(mTextBuffer.begin(), mTextBuffer.end());
    if (!mTexts.empty()) {
        mTexts.resize(names.size());
    }
    return mTexts;
}

void TagIterator::readTextsInPlace(const std::vector<std::string>& names) {
    mTexts.clear();
    if (!isElementToRead()) {
        return;
    }
    mTexts.resize(names.size());
    mTextBuffer.resize(names.size());
    // Attributes mostly stand in the order of the names.
    auto expected = names.begin();
    forEachAttribute(mCurrent, [&](const Attribute& attribute) {
        const auto isHere = [&](const std::string& name) {
            return attribute.isNamed(name.c_str());
        };
        const auto found = expected != names.end() && isHere(*expected)
                                   ? expected
                                   : std::find_if(names.begin(), names.end(), isHere);
        if (found == names.end()) {
            return;
        }
        expected = found + 1;
        const auto i = static_cast<size_t>(found - names.begin());
        if (mTexts[i].data() == nullptr) {
            mTexts[i] = attribute.text(mTextBuffer[i]);
        }
    });
}

}  // namespace ormel
