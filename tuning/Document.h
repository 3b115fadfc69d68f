// A tuning document in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ormel {

/**
 * The nodes and attributes of one document and their texts, each in one array. Immutable once
 * built. Nodes are in document order, so a node's first child is the node after it.
 *
 * Nodes are only as detailed as a reader of tuning documents needs: elements and others. The others
 * have a name ("text", "comment", the target of a processing instruction, the entity of a
 * reference; none for a CDATA section), but no content and no children.
 */
class Document {
  public:
    /** A range of the text that holds all names and values. */
    struct Piece {
        uint32_t begin = 0;
        uint32_t size = 0;
    };

    struct Node {
        Piece name;
        /** The next sibling; kNone if there is none. */
        uint32_t next = kNone;
        uint32_t firstAttribute = 0;
        uint32_t attributeCount = 0;
        /** Number of elements that begin before this node. */
        uint32_t elementsBefore : 30;
        uint32_t isElement : 1;
        uint32_t hasChildren : 1;
    };

    struct Attribute {
        Piece name;
        Piece text;
    };

    static constexpr uint32_t kRoot = 0;
    /** No node. Shares the root's index, because the root is no node's sibling or child. */
    static constexpr uint32_t kNone = 0;
    static constexpr uint32_t kMaxElements = (uint32_t{1} << 30) - 1;

    bool hasRoot() const { return !mNodes.empty(); }
    size_t getNodeCount() const { return mNodes.size(); }
    const Node& node(uint32_t index) const { return mNodes[index]; }
    uint32_t firstChildOf(uint32_t index) const {
        return mNodes[index].hasChildren != 0 ? index + 1 : kNone;
    }
    const Attribute* attributesOf(const Node& node) const {
        return mAttributes.data() + node.firstAttribute;
    }
    std::string_view text(const Piece& piece) const {
        return {mText.data() + piece.begin, piece.size};
    }

  private:
    friend class DocumentBuilder;

    std::vector<Node> mNodes;
    std::vector<Attribute> mAttributes;
    std::string mText;
};

static_assert(sizeof(Document::Node) == 24 && sizeof(Document::Attribute) == 16);

/** Builds a document, node by node in document order. */
class DocumentBuilder {
  public:
    explicit DocumentBuilder(Document& document);

    /** Whether an element is open. Nodes added then are its children. */
    bool isInElement() const { return !mOpen.empty(); }

    void beginElement(Document::Piece name);
    void endElement();

    /** Adds an attribute to the element begun last. */
    void addAttribute(Document::Piece name, Document::Piece text);

    /**
     * Adds @p size bytes of text. Consecutive texts are one node.
     *
     * @return bytes of the node so far
     */
    size_t addText(size_t size);

    /** Adds a piece of a CDATA section. Consecutive sections are one node. */
    void addCdata();

    /** Adds a comment, a processing instruction or a reference. */
    void addOther(std::string_view name);

    /** Stores a name or text. */
    Document::Piece store(std::string_view text) {
        beginText();
        appendText(text);
        return endText();
    }

    /** The same for a text in pieces: everything appended until endText(). */
    void beginText() { mTextBegin = mDocument.mText.size(); }
    void appendText(std::string_view text) { mDocument.mText.append(text); }
    Document::Piece endText() const {
        return {static_cast<uint32_t>(mTextBegin),
                static_cast<uint32_t>(mDocument.mText.size() - mTextBegin)};
    }

  private:
    enum class Kind : uint8_t { NONE, ELEMENT, TEXT, CDATA, OTHER };

    struct Open {
        uint32_t node;
        uint32_t lastChild;
        Kind lastKind;
    };

    void addNode(Kind kind, Document::Piece name);

    Document& mDocument;
    std::vector<Open> mOpen;
    uint32_t mElementCount = 0;
    Document::Piece mTextName;
    size_t mTextNodeSize = 0;
    size_t mTextBegin = 0;
};

}  // namespace ormel
