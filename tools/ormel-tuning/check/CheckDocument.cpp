#include "CheckDocument.h"

#include <libxml/SAX2.h>

#include <algorithm>
#include <utility>

#include "document/ReadTrace.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

using namespace std::string_view_literals;

constexpr std::pair<std::string_view, const char*> kPackers[] = {{"\x1f\x8b", "gzip"},
                                                                 {"\xfd"
                                                                  "7zXZ\0"sv,
                                                                  "xz"},
                                                                 {"BZh", "bzip2"},
                                                                 {"\x28\xb5\x2f\xfd", "zstd"},
                                                                 {"PK\x03\x04", "zip"},
                                                                 {"\x5d\0\0"sv, "lzma"},
                                                                 {"\x04\x22\x4d\x18", "lz4"}};

/** What libxml2 reads however it was built. */
constexpr std::string_view kEncodings[] = {"utf-8",    "utf-16", "utf-16le",   "utf-16be",
                                           "us-ascii", "ascii",  "iso-8859-1", "iso-latin-1"};

std::string firstLine(const char* message) {
    const std::string_view text = message == nullptr ? "" : message;
    return std::string(text.substr(0, text.find('\n')));
}

const xmlChar* toXml(std::string_view text) {
    return reinterpret_cast<const xmlChar*>(text.data());
}

}  // namespace

/**
 * Takes a document in while libxml2 parses it, and builds no tree. The content of entities is no
 * part of the document here and goes to libxml2's own handlers.
 */
class CheckDocument::Reader {
  public:
    Reader(CheckDocument& document, SchemaValidation& validation)
        : mDocument(document), mValidation(validation), mParser(xmlNewParserCtxt()) {
        mParser->_private = this;
        xmlSAXHandler& handlers = *mParser->sax;
        handlers.startElementNs = handle<xmlSAX2StartElementNs, &Reader::startElement>;
        handlers.endElementNs = handle<xmlSAX2EndElementNs, &Reader::endElement>;
        handlers.characters = handle<xmlSAX2Characters, &Reader::addText>;
        handlers.ignorableWhitespace = handlers.characters;
        handlers.cdataBlock = handle<xmlSAX2CDataBlock, &Reader::addData>;
        handlers.comment = handle<xmlSAX2Comment, &Reader::addComment>;
        handlers.processingInstruction =
                handle<xmlSAX2ProcessingInstruction, &Reader::addInstruction>;
        handlers.reference = handle<xmlSAX2Reference, &Reader::addReference>;
        xmlDictReference(mParser->dict);
        document.mNames.reset(mParser->dict);
    }

    /** Whether the document is well-formed. */
    bool read(const std::string& text, Findings& findings) {
        const XmlErrorScope errors([&findings](const xmlError& error) {
            findings.add({Rule::NOT_WELL_FORMED, error.line, firstLine(error.message)});
        });
        // By callback, since libxml2 makes a copy of a document in memory.
        std::string_view rest = text;
        mTree.reset(xmlCtxtReadIO(mParser.get(), readOn, nullptr, &rest, "noname.xml", nullptr,
                                  XML_PARSE_BIG_LINES));
        return mTree != nullptr;
    }

    /** What is not read everywhere. */
    void findOddities(Findings& findings) {
        const std::string encoding(toText(mTree->encoding));
        if (!encoding.empty() && std::find(std::begin(kEncodings), std::end(kEncodings),
                                           lowered(encoding)) == std::end(kEncodings)) {
            findings.add({Rule::ENCODING, 1,
                          "the encoding " + encoding + " is not read everywhere; write UTF-8"});
        }
        std::stable_sort(mReferences.begin(), mReferences.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        for (const auto& [element, name] : mReferences) {
            findings.add(mDocument.finding(Rule::ENTITY_REFERENCE, element,
                                           "what &" + std::string(toText(name)) +
                                                   "; stands for is not read; write it out"));
        }
    }

  private:
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
        const bool isFirst = elements.empty() || !elements[mCurrent].hasNodes;
        noteNode();
        elements.push_back({name, static_cast<uint32_t>(mCurrent), 0,
                            static_cast<uint32_t>(xmlSAX2GetLineNumber(mParser.get())),
                            static_cast<uint32_t>(mDocument.mAttributes.size()), isFirst, false});
        mCurrent = elements.size() - 1;
        // Those that stand in the element, as in a tree; defaults of the document type come last.
        const int writtenCount = attributeCount - defaultedCount;
        addAttributes(attributes, writtenCount);
        mValidation.pass(mCurrent, &xmlSAXHandler::startElementNs, name, nullptr, uri,
                         namespaceCount, namespaces, writtenCount, 0, mEvents.data());
    }

    void endElement(const xmlChar* /* name */, const xmlChar* /* prefix */, const xmlChar* uri) {
        Element& element = mDocument.mElements[mCurrent];
        element.end = static_cast<uint32_t>(mDocument.size());
        mValidation.pass(mCurrent, &xmlSAXHandler::endElementNs, element.name, nullptr, uri);
        mCurrent = element.parent;
    }

    void addText(const xmlChar* text, int length) {
        noteNode();
        mValidation.pass(mCurrent, &xmlSAXHandler::characters, text, length);
    }

    void addData(const xmlChar* text, int length) {
        noteNode();
        mValidation.pass(mCurrent, &xmlSAXHandler::cdataBlock, text, length);
    }

    void addComment(const xmlChar* /* text */) { noteNode(); }

    void addInstruction(const xmlChar* /* target */, const xmlChar* /* data */) { noteNode(); }

    void addReference(const xmlChar* name) {
        noteNode();
        mReferences.emplace_back(mCurrent, xmlDictLookup(mParser->dict, name, -1));
    }

    /** The name as libxml2's tree has it: with its prefix, if that stands for nothing. */
    const xmlChar* fullName(const xmlChar* name, const xmlChar* prefix, const xmlChar* uri) const {
        return prefix != nullptr && uri == nullptr ? xmlDictQLookup(mParser->dict, prefix, name)
                                                   : name;
    }

    void noteNode() {
        if (mDocument.size() != 0) {
            mDocument.mElements[mCurrent].hasNodes = true;
        }
    }

    /** @param attributes name, prefix, namespace, begin and end of the value, for each */
    void addAttributes(const xmlChar** attributes, int count) {
        constexpr int kParts = 5;
        mEvents.assign(attributes, attributes + count * kParts);
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

    CheckDocument& mDocument;
    SchemaValidation& mValidation;
    const XmlPointer<xmlParserCtxt> mParser;
    /** Has the entities, but no elements. */
    XmlPointer<xmlDoc> mTree;
    size_t mCurrent = 0;
    std::vector<const xmlChar*> mEvents;
    std::deque<std::string> mExpanded;
    /** Elements, and the entities that their content refers to. */
    std::vector<std::pair<size_t, const xmlChar*>> mReferences;
};

CheckDocument::CheckDocument(const std::string& text, SchemaValidation& validation,
                             Findings& findings) {
    for (const auto& [mark, packer] : kPackers) {
        if (text.compare(0, mark.size(), mark) == 0) {
            findings.add({Rule::COMPRESSED, 1,
                          std::string("the file is packed with ") + packer + "; ship it unpacked"});
            return;
        }
    }
    Reader reader(*this, validation);
    mIsReadable = reader.read(text, findings);
    if (mIsReadable) {
        setLines(text);
        reader.findOddities(findings);
    } else if (findings.all().empty()) {
        findings.add({Rule::NOT_WELL_FORMED, 1,
                      text.empty() ? "Document is empty" : "Document cannot be read"});
    }
}

/** libxml2's own are those on which start tags end. */
void CheckDocument::setLines(const std::string& text) {
    const std::vector<long> lines = startTagLines(text);
    for (size_t i = 0; lines.size() == size() && i < lines.size(); ++i) {
        mElements[i].line = static_cast<uint32_t>(lines[i]);
    }
}

std::vector<DocumentAttribute> CheckDocument::attributes(size_t element) const {
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

std::optional<std::string> CheckDocument::attribute(size_t element, std::string_view name) const {
    for (DocumentAttribute& attribute : attributes(element)) {
        if (attribute.name == name) {
            return std::move(attribute.text);
        }
    }
    return std::nullopt;
}

Finding CheckDocument::finding(Rule rule, size_t element, std::string what,
                               std::string attribute) const {
    return {rule,
            line(element),
            std::move(what),
            element,
            std::string(name(element)),
            std::move(attribute)};
}

}  // namespace ormel::tools
