// A cursor over an XML document, and conversion of its text to numbers.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/**
 * Reads one decimal integer from the start of @p text, as formatted stream extraction in the
 * classic locale does: skips leading whitespace, accepts a sign, and stops at the first other
 * character.
 *
 * @return the number; 0 if there is none; the nearest limit of int if out of range
 */
int string2Int(std::string_view text);

/**
 * Appends the integers of @p text to @p out. Numbers are separated by whitespace, by a comma
 * directly after a number, or by the next number's sign. Anything else ends the row, as does a
 * number out of range.
 */
void string2IntVector(std::string_view text, std::vector<int>& out);

namespace ormel {

class Document;
class DocumentBudget;

/**
 * Loads one XML document and moves a cursor over its nodes.
 *
 * Text and comment nodes count like elements. An indented document has whitespace text before the
 * first child element of every element, and childrenNext() relies on it. An entity reference is a
 * node named after the entity, without children; in an attribute, the entity's text replaces it.
 *
 * The operations are virtual so that another walker can be substituted.
 *
 * An iterator belongs to one thread at a time. The count of live iterators is a plain integer, so
 * all iterators of a process must be made and destroyed under one lock. Destroying the last one
 * tears down libxml2's global state, which the next load sets up again. Nothing in the process may
 * use libxml2 at that time. This includes document loads, because their iterators are not counted.
 *
 * Messages are errors with the tag "TagIterator".
 */
class TagIterator {
  public:
    TagIterator();
    TagIterator(const TagIterator&) = delete;
    TagIterator& operator=(const TagIterator&) = delete;
    virtual ~TagIterator();

    /**
     * Loads a document, replacing an earlier one, and puts the cursor on the first child node of
     * its root. After a failure there is no document, except that an empty source changes nothing.
     *
     * Opens no other file. The document may have at most 16 MiB, and a text node in it at most
     * 10,000,000 bytes. The text and nodes that its entities expand to are bounded by its size: see
     * DocumentBudget.
     *
     * @param source     path of the document, a regular file, or the document's text if
     *                   @p fromMemory
     * @param fromMemory whether @p source is the text
     * @return 0;
     *         -22 with "Invalide xml file path/data, 52" if the source is empty,
     *         -22 with "fail to call xmlReadFile,  63" if it cannot be read, is malformed or
     *         exceeds a bound;
     *         -19 with "fail to call xmlDocGetRootElement, 69" if it has no root
     */
    virtual int init(const std::string& source, bool fromMemory);

    /** Moves to the next sibling node, or off the end if there is none. No effect off the end. */
    virtual void next();

    /**
     * Moves to the current node's second child node: with indentation, its first child element.
     * With only one child, moves off the end. Without children, stays.
     */
    virtual void childrenNext();

    virtual bool isChildrenValid();
    virtual bool isNextValid();
    virtual bool isCurValid();
    virtual bool isElementNode();

    /** Saves the current position. */
    virtual void pushNode();

    /**
     * Returns to the position saved last. If none is left, logs "It's empty in node stack!" and
     * stays. A position in a document that has been freed since is off the end.
     */
    virtual void popNode();

    /** The current node's name; empty off the end. Text nodes are named "text". */
    virtual std::string getNodeName();

    /** The current element's attribute names in document order; empty for any other node. */
    virtual std::vector<std::string> getAttrsName();

    /**
     * Appends the integer of every attribute of the current element to @p out, in document order.
     * Any other node adds nothing; off the end, logs "Invalid node when parsing String vector.".
     */
    virtual void parseNodeIntVector(std::vector<int>& out);

    /** The same as parseNodeWithName({}, out). */
    virtual void parseNodeAll(std::vector<std::string>& out);

    /**
     * Reads attributes of the current element by name. Resizes @p out to the number of names and
     * sets each entry to the text of the attribute of that name, or keeps the entry if the element
     * lacks the attribute. Without names, appends every attribute's text in document order.
     * Attributes with the same local name in several namespaces all have the text of the first.
     *
     * Other nodes change nothing; off the end, logs "Invalid node when parsing String vector.".
     */
    virtual void parseNodeWithName(const std::vector<std::string>& names,
                                   std::vector<std::string>& out);

    /** TagIterator::getNodeName() without a copy; valid as long as the document. */
    std::string_view readName();

    /** Frees the document. Saved positions stay on the stack, all of them off the end. */
    void clearAll();

    /** Why the last init() failed: line and libxml2's message, or another reason; else empty. */
    const std::string& getError() const { return mError; }

    /** Reusable buffer for one element's texts. Its content is unspecified between reads. */
    std::vector<std::string>& getTextBuffer() { return mTextBuffer; }

    /** Number of live iterators, except those of document parsers. */
    static int32_t mInstanceCount;

  private:
    friend class TuningFileParser;

    /** An iterator that charges @p budget for what it does, and is not counted. */
    [[gnu::visibility("hidden")]] explicit TagIterator(DocumentBudget& budget);

    /** Number of elements that begin before the current node; 0 off the end. */
    [[gnu::visibility("hidden")]] uint32_t getElementsBefore() const;
    bool isOnNode() const;
    bool isOnElement() const;
    bool isElementToRead();
    void moveTo(uint32_t node);
    void chargeSteps(size_t count);
    void chargeText(size_t bytes);
    void report(const char* message);
    template <typename Visitor>
    void forEachAttribute(Visitor visit);

    std::unique_ptr<Document> mDocument;
    /** The node under the cursor. The root stands for none: the cursor is never there. */
    uint32_t mCurrent = 0;
    std::deque<uint32_t> mNodeStack;
    /** Null for an iterator that is used alone: its moves and reads are not charged. */
    DocumentBudget* mBudget = nullptr;
    const bool mIsCounted;
    std::string mError;
    std::vector<std::string> mTextBuffer;
};

}  // namespace ormel
