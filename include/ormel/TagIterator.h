// A cursor over an XML document, and the reading of numbers from its text.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/**
 * Reads one decimal integer from the start of @p text as formatted stream extraction in the classic
 * locale does: leading whitespace and a sign are taken, reading stops at the first other character.
 *
 * @return the number; 0 when there is none; the nearest limit of int when it is out of range
 */
int string2Int(std::string_view text);

/**
 * Appends the integers of @p text to @p out. Numbers are separated by whitespace, by a comma right
 * behind a number, or by the next one's sign; whatever else stands there ends the row, as does a
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
 * first child element of every element, and the cursor relies on it: see childrenNext(). A
 * reference to an entity is a node named after the entity, without children; in an attribute it
 * stands for the entity's text.
 *
 * The operations are virtual so that another walker can stand in for this one.
 *
 * An iterator belongs to one thread at a time; since the count of live iterators is a plain
 * integer, all iterators of a process must be made and destroyed under one lock. The last one to go
 * tears down libxml2's global state, which the next load sets up again. Messages are errors with
 * the tag "TagIterator".
 */
class TagIterator {
  public:
    TagIterator();
    TagIterator(const TagIterator&) = delete;
    TagIterator& operator=(const TagIterator&) = delete;
    virtual ~TagIterator();

    /**
     * Loads a document in place of an earlier one and puts the cursor on the first child node of
     * its root. A failure leaves no document, but for an empty source, which changes nothing.
     *
     * No other file is opened. The document may have at most 16 MiB. Where it declares entities,
     * the text and nodes that they come to are bounded by its size: see DocumentBudget.
     *
     * @param source     path of the document, a regular file, or the document's text when
     *                   @p fromMemory
     * @param fromMemory says which
     * @return 0;
     *         -22 with "Invalide xml file path/data, 52" when the source is empty,
     *         -22 with "fail to call xmlReadFile,  63" when it cannot be read, is malformed or
     *         exceeds a bound;
     *         -19 with "fail to call xmlDocGetRootElement, 69" when it has no root
     */
    virtual int init(const std::string& source, bool fromMemory);

    /** Moves to the next sibling node, off the end if there is none. Does nothing off the end. */
    virtual void next();

    /**
     * Moves to the current node's second child node: with indentation, its first child element.
     * With one child only, moves off the end. Without children, stays.
     */
    virtual void childrenNext();

    virtual bool isChildrenValid();
    virtual bool isNextValid();
    virtual bool isCurValid();
    virtual bool isElementNode();

    /** Remembers the current position. */
    virtual void pushNode();

    /**
     * Returns to the position remembered last. With none left, says "It's empty in node stack!" and
     * stays. A position in a document that has been freed since is off the end.
     */
    virtual void popNode();

    /** The current node's name; empty off the end. Text nodes are named "text". */
    virtual std::string getNodeName();

    /** The current element's attribute names in document order; empty for any other node. */
    virtual std::vector<std::string> getAttrsName();

    /**
     * Appends the integer of every attribute of the current element to @p out, in document order.
     * Any other node adds nothing; off the end says "Invalid node when parsing String vector.".
     */
    virtual void parseNodeIntVector(std::vector<int>& out);

    /** Appends the text of every attribute of the element, as parseNodeWithName({}, out) does. */
    virtual void parseNodeAll(std::vector<std::string>& out);

    /**
     * Reads attributes of the current element by name. @p out gets as many entries as there are
     * names, each the text of the attribute of that name, or what stood there when the element
     * lacks it. Without names, every attribute's text is appended in document order. Attributes of
     * one local name in several namespaces all have the text of the first.
     *
     * Any other node leaves @p out as it is; off the end says
     * "Invalid node when parsing String vector.".
     */
    virtual void parseNodeWithName(const std::vector<std::string>& names,
                                   std::vector<std::string>& out);

    /**
     * The name that this class's getNodeName() gives, without a copy. Stands as long as the
     * document.
     */
    std::string_view readName();

    /** Frees the document. The remembered positions stay on the stack, all of them off the end. */
    void clearAll();

    /** Why init() failed last: the line and the parser's words, or what else; empty if it did not.
     */
    const std::string& getError() const { return mError; }

    /**
     * Room for the texts of one element, for readers that read many elements one by one. Its
     * content is of no meaning between two readings.
     */
    std::vector<std::string>& getTextBuffer() { return mTextBuffer; }

    /** Number of live iterators, but for those of document parsers. */
    static int32_t mInstanceCount;

  private:
    friend class TuningFileParser;

    /** An iterator that pays with @p budget for what it is asked, and is not counted. */
    [[gnu::visibility("hidden")]] explicit TagIterator(DocumentBudget& budget);

    /** Number of elements that begin before the current node does; 0 off the end. */
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
    /** The node under the cursor; the root, where the cursor never is, stands for none. */
    uint32_t mCurrent = 0;
    std::deque<uint32_t> mNodeStack;
    /** Null for a cursor that somebody uses alone: it may do what it likes. */
    DocumentBudget* mBudget = nullptr;
    const bool mIsCounted;
    std::string mError;
    std::vector<std::string> mTextBuffer;
};

}  // namespace ormel
