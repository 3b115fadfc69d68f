#include "tuning/Document.h"

namespace ormel {

using Piece = Document::Piece;

DocumentBuilder::DocumentBuilder(Document& document) : mDocument(document) {}

void DocumentBuilder::addNode(Kind kind, Piece name) {
    const auto index = static_cast<uint32_t>(mDocument.mNodes.size());
    if (isInElement()) {
        Open& parent = mOpen.back();
        if (parent.lastKind == Kind::NONE) {
            mDocument.mNodes[parent.node].hasChildren = 1;
        } else {
            mDocument.mNodes[parent.lastChild].next = index;
        }
        parent.lastChild = index;
        parent.lastKind = kind;
    }
    Document::Node node = {};
    node.name = name;
    node.firstAttribute = static_cast<uint32_t>(mDocument.mAttributes.size());
    node.elementsBefore = mElementCount & Document::kMaxElements;
    node.isElement = kind == Kind::ELEMENT ? 1 : 0;
    mDocument.mNodes.push_back(node);
}

void DocumentBuilder::beginElement(Piece name) {
    const auto index = static_cast<uint32_t>(mDocument.mNodes.size());
    addNode(Kind::ELEMENT, name);
    ++mElementCount;
    mOpen.push_back({index, Document::kNone, Kind::NONE});
}

void DocumentBuilder::endElement() {
    mOpen.pop_back();
}

void DocumentBuilder::addAttribute(Piece name, Piece text) {
    mDocument.mAttributes.push_back({name, text});
    ++mDocument.mNodes[mOpen.back().node].attributeCount;
}

size_t DocumentBuilder::addText(size_t size) {
    if (mOpen.back().lastKind != Kind::TEXT) {
        if (mTextName.size == 0) {
            mTextName = store("text");
        }
        addNode(Kind::TEXT, mTextName);
        mTextNodeSize = 0;
    }
    mTextNodeSize += size;
    return mTextNodeSize;
}

void DocumentBuilder::addCdata() {
    if (mOpen.back().lastKind != Kind::CDATA) {
        addNode(Kind::CDATA, {});
    }
}

void DocumentBuilder::addOther(std::string_view name) {
    addNode(Kind::OTHER, store(name));
}

}  // namespace ormel
