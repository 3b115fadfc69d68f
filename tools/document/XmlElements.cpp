#include "XmlElements.h"

#include <libxml/SAX2.h>

#include <algorithm>

namespace ormel::tools {

/**
 * Takes a document in while libxml2 parses it, and builds no tree. The content of entities is no
 * part of the document here and goes to libxml2's own handlers.
 */
class XmlElements::Reader {
    enum class Node : uint8_t { NONE, TEXT, CDATA, OTHER };

  public:
    Reader(XmlElements& document, XmlListener* listener)
        : mDocument(document), mListener(listener), mParser(xmlNewParserCtxt()) {
        mParser->_private = this;
        xmlSAXHandler& handlers = *mParser->sax;
        handlers.startElementNs = handle<xmlSAX2StartElementNs, &Reader::startElement>;
        handlers.endElementNs = handle<xmlSAX2EndElementNs, &Reader::endElement>;
        handlers.characters = handle<xmlSAX2Characters, &Reader::addText<Node::TEXT>>;
        handlers.ignorableWhitespace = handlers.characters;
        handlers.cdataBlock = handle<xmlSAX2CDataBlock, &Reader::addText<Node::CDATA>>;
        handlers.comment = handle<xmlSAX2Comment, &Reader::addOther<const xmlChar*>>;
        handlers.processingInstruction = handle<xmlSAX2ProcessingInstruction,
                                                &Reader::addOther<const xmlChar*, const xmlChar*>>;
        handlers.reference = handle<xmlSAX2Reference, &Reader::addReference>;
        xmlDictReference(mParser->dict);
        document.mNames.reset(mParser->dict);
    }

    void read(std::string_view text) {
        // By callback, since libxml2 makes a copy of a document in memory.
        const XmlPointer<xmlDoc> tree(xmlCtxtReadIO(mParser.get(), readOn, nullptr, &text,
                                                    "noname.xml", nullptr, XML_PARSE_BIG_LINES));
        mDocument.mIsReadable = tree != nullptr;
        if (tree != nullptr) {
            mDocument.mEncoding = toText(tree->encoding);
        }
    }

  private:
    static const xmlChar* toXml(std::string_view text) {
        return reinterpret_cast<const xmlChar*>(text.data());
    }

    static int readOn(void* source, char* buffer, int room) {
        auto& rest = *static_cast<std::string_view*>(source);
        const size_t size = rest.copy(buffer, static_cast<size_t>(room));
        rest.remove_prefix(size);
        return static_cast<int>(size);
    }

    /** The reader of the document; null while the content of an entity is parsed. */
    static Reader* readerOf(void* parser) {
        auto* const self = static_cast<Reader*>(static_cast<xmlParserCtxt*>(parser)->_private);
        // That has another parser, or from libxml2 2.13 on another input.
        const bool isDocument = self->mParser.get() == parser && self->mParser->inputNr == 1;
        return isDocument ? self : nullptr;
    }

    /** Gives what libxml2 comes across to the reader, or to libxml2's own handler. */
    template <auto kTreeBuilder, auto kOwn, typename... Arguments>
    static void handle(void* parser, Arguments... arguments) {
        if (Reader* const self = readerOf(parser)) {
            (self->*kOwn)(arguments...);
        } else {
            kTreeBuilder(parser, arguments...);
        }
    }

    void startElement(const xmlChar* localName, const xmlChar* prefix, const xmlChar* uri,
                      int namespaceCount, const xmlChar** namespaces, int attributeCount,
                      int defaultedCount, const xmlChar** attributes) {
        const xmlChar* const name = fullName(localName, prefix, uri);
        std::deque<Element>& elements = mDocument.mElements;
        const uint32_t nodesBefore = elements.empty() ? 0 : elements[mCurrent].nodes;
        addNode(Node::OTHER);
        mLastNode = Node::NONE;
        elements.push_back({name, static_cast<uint32_t>(mCurrent), 0, startTagLine(), nodesBefore,
                            0, static_cast<uint32_t>(mDocument.mAttributes.size())});
        mCurrent = elements.size() - 1;
        // Those that stand in the element, as in a tree; defaults of the document type come last.
        const int writtenCount = attributeCount - defaultedCount;
        addAttributes(attributes, writtenCount);
        pass(&xmlSAXHandler::startElementNs, passedName(name), nullptr, uri, namespaceCount,
             namespaces, writtenCount, 0, mEvents.data());
    }

    void endElement(const xmlChar* /* name */, const xmlChar* /* prefix */, const xmlChar* uri) {
        Element& element = mDocument.mElements[mCurrent];
        element.end = static_cast<uint32_t>(mDocument.size());
        pass(&xmlSAXHandler::endElementNs, passedName(element.name), nullptr, uri);
        mCurrent = element.parent;
        mLastNode = Node::OTHER;
    }

    /** Text or a CDATA section. */
    template <Node kKind>
    void addText(const xmlChar* characters, int length) {
        constexpr bool kIsText = kKind == Node::TEXT;
        addNode(kKind);
        const std::string_view text(reinterpret_cast<const char*>(characters),
                                    static_cast<size_t>(length));
        const size_t begin = text.find_first_not_of(" \t\r\n");
        const bool isBlank = begin == std::string_view::npos;
        // Elements have no text, so that the first that has is where something is wrong.
        if (kIsText && !isBlank && mListener != nullptr) {
            const auto breaks = std::count(text.begin() + begin, text.end(), '\n');
            mListener->textLines.try_emplace(mCurrent,
                                             xmlSAX2GetLineNumber(mParser.get()) - breaks);
        }
        // Blanks are as harmless in CDATA as in text, but validation has no other rule for them.
        if (kIsText || !isBlank) {
            pass(kIsText ? &xmlSAXHandler::characters : &xmlSAXHandler::cdataBlock, characters,
                 length);
        }
    }

    /** Comments and processing instructions. */
    template <typename... Texts>
    void addOther(Texts... /* texts */) {
        addNode(Node::OTHER);
    }

    void addReference(const xmlChar* name) {
        addNode(Node::OTHER);
        mDocument.mReferences.emplace_back(mCurrent, toText(name));
    }

    /** The current element's name for the listener, which may want the root to have another. */
    const xmlChar* passedName(const xmlChar* name) const {
        const bool isRenamed = mCurrent == 0 && mListener != nullptr && mListener->rootName;
        return isRenamed ? toXml(mListener->rootName) : name;
    }

    /** The name as libxml2's tree has it: with its prefix, if that stands for nothing. */
    const xmlChar* fullName(const xmlChar* name, const xmlChar* prefix, const xmlChar* uri) const {
        return prefix != nullptr && uri == nullptr ? xmlDictQLookup(mParser->dict, prefix, name)
                                                   : name;
    }

    /** libxml2 joins texts behind one another, and so it does CDATA sections. */
    void addNode(Node kind) {
        if (mDocument.size() != 0 && (kind != mLastNode || kind == Node::OTHER)) {
            ++mDocument.mElements[mCurrent].nodes;
        }
        mLastNode = kind;
    }

    /** libxml2's own is the line on which the start tag ends. The tag itself is still at hand. */
    uint32_t startTagLine() const {
        const xmlParserInput& input = *mParser->input;
        auto line = static_cast<uint32_t>(xmlSAX2GetLineNumber(mParser.get()));
        for (const xmlChar* at = input.cur; at > input.base && *(at - 1) != '<'; --at) {
            line -= *(at - 1) == '\n' ? 1 : 0;
        }
        return line;
    }

    template <typename Handler, typename... Arguments>
    void pass(Handler xmlSAXHandler::*handler, Arguments... arguments) {
        if (mListener != nullptr) {
            mListener->element = mCurrent;
            (mListener->handlers->*handler)(mListener->context, arguments...);
        }
    }

    /** @param attributes name, prefix, namespace, begin and end of the value, for each */
    void addAttributes(const xmlChar** attributes, int count) {
        constexpr ptrdiff_t kParts = 5;
        mEvents.assign(attributes, attributes + ptrdiff_t{count} * kParts);
        mExpanded.clear();
        for (auto parts = mEvents.begin(); parts != mEvents.end(); parts += kParts) {
            parts[0] = fullName(parts[0], parts[1], parts[2]);
            std::string_view text(reinterpret_cast<const char*>(parts[3]),
                                  static_cast<size_t>(parts[4] - parts[3]));
            if (text.find('&') != std::string_view::npos) {
                text = mExpanded.emplace_back(expanded(text));
                const std::string& escaped = mExpanded.emplace_back(withEscapes(mExpanded.back()));
                parts[3] = toXml(escaped);
                parts[4] = parts[3] + escaped.size();
            }
            mDocument.mTexts += text;
            mDocument.mAttributes.push_back({parts[0],
                                             static_cast<uint32_t>(mDocument.mTexts.size()),
                                             parts[2] != nullptr});
        }
    }

    /** What references in an attribute's value stand for. */
    std::string expanded(std::string_view value) const {
        xmlNode* const nodes = xmlStringLenGetNodeList(mParser->myDoc, toXml(value),
                                                       static_cast<int>(value.size()));
        const XmlPointer<xmlChar> text(xmlNodeListGetString(mParser->myDoc, nodes, 1));
        xmlFreeNodeList(nodes);
        return std::string(toText(text.get()));
    }

    /** SAX2 hands ampersands over as references. */
    static std::string withEscapes(std::string text) {
        for (size_t at = 0; (at = text.find('&', at)) != std::string::npos; ++at) {
            text.replace(at, 1, "&#38;");
        }
        return text;
    }

    XmlElements& mDocument;
    XmlListener* const mListener;
    const XmlPointer<xmlParserCtxt> mParser;
    size_t mCurrent = 0;
    std::vector<const xmlChar*> mEvents;
    std::deque<std::string> mExpanded;
    Node mLastNode = Node::NONE;
};

XmlElements::XmlElements(std::string_view text, XmlListener* listener) {
    Reader(*this, listener).read(text);
}

std::vector<DocumentAttribute> XmlElements::attributes(size_t element) const {
    const size_t begin = mElements[element].firstAttribute;
    const size_t end =
            element + 1 == size() ? mAttributes.size() : mElements[element + 1].firstAttribute;
    std::vector<DocumentAttribute> all;
    for (size_t i = begin; i < end; ++i) {
        const size_t textBegin = i == 0 ? 0 : mAttributes[i - 1].textEnd;
        all.push_back({toText(mAttributes[i].name),
                       mTexts.substr(textBegin, mAttributes[i].textEnd - textBegin),
                       mAttributes[i].isQualified});
    }
    return all;
}

std::optional<std::string> XmlElements::attribute(size_t element, std::string_view name) const {
    for (DocumentAttribute& attribute : attributes(element)) {
        if (attribute.name == name) {
            return std::move(attribute.text);
        }
    }
    return std::nullopt;
}

XmlSiblings XmlElements::childrenNext(const XmlSiblings& from) const {
    if (!from.isOnFirst || nodes(from.first) == 0) {
        return from;
    }
    const size_t childEnd = end(from.first);
    size_t child = from.first + 1;
    if (child < childEnd && nodesBefore(child) == 0) {
        child = end(child);
    }
    return {child, childEnd, child < childEnd && nodesBefore(child) == 1};
}

}  // namespace ormel::tools
