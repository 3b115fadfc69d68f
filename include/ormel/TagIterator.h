// A cursor over an XML document, and the reading of numbers from its text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// libxml2's own names.
struct _xmlDoc;   // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
struct _xmlNode;  // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

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

/**
 * Loads one XML document and moves a cursor over its nodes.
 *
 * Text and comment nodes count like elements. An indented document has whitespace text before the
 * first child element of every element, and the cursor relies on it: see childrenNext().
 *
 * The operations are virtual so that another walker can stand in for this one. One that moves
 * without these operations must see to it itself that its walk ends, since isExhausted() knows of
 * the steps that are made here.
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
     * @param source     path of the document, or the document's text when @p fromMemory
     * @param fromMemory says which
     * @return 0;
     *         -22 with "Invalide xml file path/data, 52" when the source is empty,
     *         -22 with "fail to call xmlReadFile,  63" when it cannot be read or is malformed;
     *         -19 with "fail to call xmlDocGetRootElement, 69" when it has no root
     */
    virtual int init(const std::string& source, bool fromMemory);

    /** Moves to the next sibling node, off the end if there is none. Does nothing off the end. */
    virtual void next();

    /**
     * Moves to the current node's second child node: with indentation, its first child element.
     * With one child only, moves off the end.
     *
     * Without children, stays. What follows then reads on from the element itself through its
     * siblings, so a document of many such elements would be walked over and over. The steps that
     * are made from there, until popNode() leads back out, are counted; see isExhausted().
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
     * lacks it. Without names, every attribute's text is appended in document order.
     *
     * Any other node leaves @p out as it is; off the end says
     * "Invalid node when parsing String vector.".
     */
    virtual void parseNodeWithName(const std::vector<std::string>& names,
                                   std::vector<std::string>& out);

    /**
     * An iterator of this very class. It says and gives the same as any other, but what is read by
     * the operations below is no copy, since nobody overrides what they stand for.
     */
    static std::unique_ptr<TagIterator> createInPlace();

    // What parser and setters read with. An iterator that is derived from is asked through the
    // operations above, which must not call these. The texts stand until the next call of the kind,
    // name or text, and no longer than the document.

    /** The current node's name, as getNodeName() gives it. */
    std::string_view readName();

    /** The text that parseNodeWithName() finds for @p name at the current node; empty without one.
     */
    std::string_view readText(const char* name);

    /** The first of the texts that parseNodeAll() finds at the current node; empty without one. */
    std::string_view readFirstText();

    /**
     * The texts that parseNodeWithName() finds for @p names, which must differ: one for each, or
     * none for a node that is no element.
     */
    const std::vector<std::string_view>& readTexts(const std::vector<std::string>& names);

    /** Frees the document. The remembered positions stay on the stack, all of them off the end. */
    void clearAll();

    /**
     * Whether the walk was given up after kMaxStraySteps steps from elements without children, with
     * "Too many steps from elements without children, 100000". The cursor stays off the end then,
     * and what was read is incomplete.
     */
    bool isExhausted() const { return mStraySteps >= kMaxStraySteps; }

    /** Far more than a document takes that was not made to be walked for hours. */
    static constexpr int32_t kMaxStraySteps = 100000;

    /** Number of live iterators. */
    static int32_t mInstanceCount;

  protected:
    /** For a walker that parses with options of libxml2's, xmlParserOption; none by default. */
    explicit TagIterator(int parserOptions);

    /** The node under the cursor, null off the end. It is the document's, and goes with it. */
    const _xmlNode* getCurrentNode() const { return mCurrent; }

  private:
    struct DocumentDeleter {
        void operator()(_xmlDoc* document) const;
    };

    static constexpr size_t kNotStray = std::numeric_limits<size_t>::max();

    TagIterator(int parserOptions, bool readsInPlace);

    void countStep();
    bool isElementToRead();
    void readTextsInPlace(const std::vector<std::string>& names);

    std::unique_ptr<_xmlDoc, DocumentDeleter> mDocument;
    _xmlNode* mRoot = nullptr;
    _xmlNode* mCurrent = nullptr;
    std::deque<_xmlNode*> mNodeStack;
    const int mParserOptions;
    const bool mReadsInPlace;
    std::vector<std::string_view> mTexts;
    // What the texts and the name that were read last refer to where that is not the document.
    std::vector<std::string> mTextBuffer;
    std::string mNameBuffer;
    /** Depth of the stack where the cursor stayed on an element without children. */
    size_t mStrayDepth = kNotStray;
    int32_t mStraySteps = 0;
};

}  // namespace ormel
