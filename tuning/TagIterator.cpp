#define LOG_TAG "TagIterator"

#include <log/log.h>
#include <ormel/DocumentBudget.h>
#include <ormel/TagIterator.h>

#include <algorithm>
#include <cerrno>

#include "tuning/Document.h"
#include "tuning/DocumentReader.h"

namespace ormel {

int32_t TagIterator::mInstanceCount = 0;

TagIterator::TagIterator() : mIsCounted(true) {
    ++mInstanceCount;
}

TagIterator::TagIterator(DocumentBudget& budget) : mBudget(&budget), mIsCounted(false) {}

TagIterator::~TagIterator() {
    mDocument.reset();
    if (mIsCounted && --mInstanceCount == 0) {
        cleanUpXmlParser();
    }
}

int TagIterator::init(const std::string& source, bool fromMemory) {
    // The numbers in the messages are fixed: field logs identify each failure by its number.
    if (source.empty()) {
        mError = "no path or text";
        ALOGE("Invalide xml file path/data, %d", 52);
        return -EINVAL;
    }
    clearAll();
    DocumentBudget ownBudget;
    mDocument = readDocument(source, fromMemory, mBudget == nullptr ? ownBudget : *mBudget, mError);
    if (mDocument == nullptr) {
        ALOGE("fail to call xmlReadFile,  %d", 63);
        return -EINVAL;
    }
    if (!mDocument->hasRoot()) {
        clearAll();
        mError = "no root element";
        ALOGE("fail to call xmlDocGetRootElement, %d", 69);
        return -ENODEV;
    }
    mCurrent = mDocument->firstChildOf(Document::kRoot);
    return 0;
}

void TagIterator::clearAll() {
    mDocument.reset();
    mCurrent = Document::kNone;
    std::fill(mNodeStack.begin(), mNodeStack.end(), Document::kNone);
}

void TagIterator::moveTo(uint32_t node) {
    mCurrent = node;
    chargeSteps(1);
}

/** Once the budget is spent, the cursor goes off the end and stays there. */
void TagIterator::chargeSteps(size_t count) {
    if (mBudget != nullptr) {
        mBudget->chargeSteps(count);
        mCurrent = mBudget->isSpent() ? Document::kNone : mCurrent;
    }
}

void TagIterator::chargeText(size_t bytes) {
    if (mBudget != nullptr) {
        mBudget->chargeText(bytes);
        mCurrent = mBudget->isSpent() ? Document::kNone : mCurrent;
    }
}

void TagIterator::report(const char* message) {
    ALOGE("%s", message);
    if (mBudget != nullptr) {
        mBudget->chargeMessage(0);
    }
}

void TagIterator::next() {
    if (isOnNode()) {
        moveTo(mDocument->node(mCurrent).next);
    }
}

void TagIterator::childrenNext() {
    const uint32_t first = isOnNode() ? mDocument->firstChildOf(mCurrent) : Document::kNone;
    moveTo(first == Document::kNone ? mCurrent : mDocument->node(first).next);
}

bool TagIterator::isChildrenValid() {
    return isOnNode() && mDocument->node(mCurrent).hasChildren != 0;
}

bool TagIterator::isNextValid() {
    return isOnNode() && mDocument->node(mCurrent).next != Document::kNone;
}

bool TagIterator::isCurValid() {
    return isOnNode();
}

bool TagIterator::isElementNode() {
    return isOnElement();
}

bool TagIterator::isOnNode() const {
    return mCurrent != Document::kNone;
}

bool TagIterator::isOnElement() const {
    return isOnNode() && mDocument->node(mCurrent).isElement != 0;
}

void TagIterator::pushNode() {
    mNodeStack.push_back(mCurrent);
    chargeSteps(1);
}

void TagIterator::popNode() {
    if (mNodeStack.empty()) {
        report("It's empty in node stack!");
        return;
    }
    const uint32_t node = mNodeStack.back();
    mNodeStack.pop_back();
    moveTo(node);
}

std::string TagIterator::getNodeName() {
    return std::string(readName());
}

std::string_view TagIterator::readName() {
    if (!isOnNode()) {
        return "";
    }
    const std::string_view name = mDocument->text(mDocument->node(mCurrent).name);
    chargeText(name.size());
    return name;
}

uint32_t TagIterator::getElementsBefore() const {
    return isOnNode() ? mDocument->node(mCurrent).elementsBefore : 0;
}

bool TagIterator::isElementToRead() {
    if (!isOnNode()) {
        report("Invalid node when parsing String vector.");
    }
    return isOnElement();
}

/** Calls @p visit with name and text of every attribute of the current element. */
template <typename Visitor>
void TagIterator::forEachAttribute(Visitor visit) {
    const Document::Node& element = mDocument->node(mCurrent);
    const Document::Attribute* attribute = mDocument->attributesOf(element);
    chargeSteps(element.attributeCount);
    for (uint32_t i = 0; i < element.attributeCount && isOnNode(); ++i, ++attribute) {
        visit(mDocument->text(attribute->name), mDocument->text(attribute->text));
    }
}

std::vector<std::string> TagIterator::getAttrsName() {
    std::vector<std::string> names;
    if (isOnElement()) {
        forEachAttribute([&](std::string_view name, std::string_view /* text */) {
            chargeText(name.size());
            names.emplace_back(name);
        });
    }
    return names;
}

void TagIterator::parseNodeIntVector(std::vector<int>& out) {
    if (isElementToRead()) {
        forEachAttribute([&](std::string_view /* name */, std::string_view text) {
            chargeText(text.size());
            out.push_back(string2Int(text));
        });
    }
}

void TagIterator::parseNodeAll(std::vector<std::string>& out) {
    parseNodeWithName({}, out);
}

void TagIterator::parseNodeWithName(const std::vector<std::string>& names,
                                    std::vector<std::string>& out) {
    if (!isElementToRead()) {
        return;
    }
    if (names.empty()) {
        forEachAttribute([&](std::string_view /* name */, std::string_view text) {
            chargeText(text.size());
            out.emplace_back(text);
        });
        return;
    }
    out.resize(names.size());
    forEachAttribute([&](std::string_view name, std::string_view text) {
        for (size_t i = 0; i < names.size(); ++i) {
            if (names[i] == name) {
                chargeText(text.size());
                out[i] = text;
            }
        }
    });
}

}  // namespace ormel
