#include "tuning/DocumentReader.h"

#include <libxml/SAX2.h>
#include <libxml/entities.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tuning/DocumentSource.h"

namespace ormel {

namespace {

/** The argument of error handlers: const since libxml2 2.12. */
using XmlError = std::conditional_t<(LIBXML_VERSION >= 21200), const xmlError, xmlError>;

constexpr std::string_view kEscapedAmpersand = "&#38;";

/** libxml2 passes an attribute as name, prefix, namespace, and the begin and end of its text. */
constexpr size_t kPartsOfAttribute = 5;

std::string_view toText(const xmlChar* characters) {
    return characters == nullptr ? "" : reinterpret_cast<const char*>(characters);
}

/** Receives libxml2's errors on this thread during its lifetime. */
class XmlErrors {
  public:
    explicit XmlErrors(DocumentBudget& budget)
        : mBudget(budget), mHandler(xmlStructuredError), mContext(xmlStructuredErrorContext) {
        xmlSetStructuredErrorFunc(this, note);
    }
    XmlErrors(const XmlErrors&) = delete;
    XmlErrors& operator=(const XmlErrors&) = delete;
    ~XmlErrors() { xmlSetStructuredErrorFunc(mContext, mHandler); }

    /** Ends @p parser when libxml2 reports a loop of entities. */
    void watch(xmlParserCtxt* parser) { mParser = parser; }

    /** Whether there was an error that a sound document does not cause. */
    bool areFatal() const { return mAreFatal; }

    /** The first error, as "line N: what" if it has a line. */
    const std::string& text() const { return mText; }

  private:
    static constexpr size_t kMaxMessage = 200;

    static void note(void* self, XmlError* error) {
        auto& errors = *static_cast<XmlErrors*>(self);
        const char* const message = error->message == nullptr ? "out of memory" : error->message;
        // Non-fatal errors may quote one long name any number of times. Messages are cut; the texts
        // inserted in them are not.
        const char* const texts[] = {message, error->str1, error->str2, error->str3};
        for (const char* const text : texts) {
            errors.mBudget.chargeText(text == nullptr ? 0 : std::strlen(text));
        }
        // After a failed allocation, a part of the document may be missing and the rest
        // well-formed.
        if (error->level == XML_ERR_FATAL || error->code == XML_ERR_NO_MEMORY ||
            errors.mBudget.isSpent()) {
            errors.mAreFatal = true;
        }
        if (error->code == XML_ERR_ENTITY_LOOP) {
            errors.endParser();
        }
        if (!errors.mText.empty() || error->level < XML_ERR_ERROR) {
            return;
        }
        const std::string_view words = std::string_view(message).substr(0, kMaxMessage);
        if (error->line > 0) {
            errors.mText = "line " + std::to_string(error->line) + ": ";
        }
        errors.mText.append(words.substr(0, words.find_last_not_of('\n') + 1));
    }

    /**
     * After too many references to parameter entities, libxml2 may never finish by itself. It may
     * also loop where it skips blanks at what it takes for the end, so every input is moved to its
     * end. xmlStopParser() would free what the callers of an error handler still use.
     */
    void endParser() {
        if (mParser == nullptr) {
            return;
        }
        mParser->instate = XML_PARSER_EOF;
        for (int i = 0; i < mParser->inputNr; ++i) {
            mParser->inputTab[i]->cur = mParser->inputTab[i]->end;
        }
    }

    DocumentBudget& mBudget;
    xmlParserCtxt* mParser = nullptr;
    bool mAreFatal = false;
    std::string mText;
    xmlStructuredErrorFunc mHandler;
    void* mContext;
};

struct ParserDeleter {
    void operator()(xmlParserCtxt* parser) const {
        xmlFreeDoc(parser->myDoc);
        xmlFreeParserCtxt(parser);
    }
};
using Parser = std::unique_ptr<xmlParserCtxt, ParserDeleter>;

/**
 * Stores the names of a document, most of them once: libxml2 keeps all copies of a name at one
 * address.
 */
class NameStore {
  public:
    explicit NameStore(DocumentBuilder& builder) : mBuilder(builder) {}

    /** Stores a name that keeps its address during this object's lifetime. */
    Document::Piece store(const xmlChar* name) {
        Stored& stored = mStored[reinterpret_cast<uintptr_t>(name) % mStored.size()];
        if (stored.name != name) {
            stored = {name, mBuilder.store(toText(name))};
        }
        return stored.piece;
    }

    /** Stores a local name, with its prefix only if no namespace is bound to the prefix. */
    Document::Piece store(const xmlChar* name, const xmlChar* prefix, const xmlChar* uri) {
        if (prefix == nullptr || uri != nullptr) {
            return store(name);
        }
        return mBuilder.store(std::string(toText(prefix)).append(":").append(toText(name)));
    }

  private:
    struct Stored {
        const xmlChar* name = nullptr;
        Document::Piece piece;
    };

    DocumentBuilder& mBuilder;
    /** By address. Of names that share a place, the last one is here. */
    std::array<Stored, 512> mStored;
};

/** Texts by name. Attributes of an element with one local name all have the first one's text. */
class FirstTexts {
  public:
    /** @param mayRepeat whether names can repeat, as attributes in namespaces can */
    explicit FirstTexts(bool mayRepeat) : mMayRepeat(mayRepeat) {}

    /** The text of @p name: an earlier one, or else what @p make stores. */
    template <typename Make>
    Document::Piece get(std::string_view name, Make make) {
        if (!mMayRepeat) {
            return make();
        }
        const auto [text, isFirst] = mTexts.try_emplace(std::string(name));
        if (isFirst) {
            text->second = make();
        }
        return text->second;
    }

  private:
    const bool mMayRepeat;
    std::map<std::string, Document::Piece> mTexts;
};

/** Builds a document from the parser's events. */
class EventReader {
  public:
    EventReader(Document& document, DocumentBudget& budget, xmlParserCtxt*& parser)
        : mDocument(document), mBuilder(document), mBudget(budget), mParser(parser) {}

    static xmlSAXHandler handler() {
        xmlSAXHandler handler = {};
        handler.initialized = XML_SAX2_MAGIC;
        handler.internalSubset = onDocumentType;
        handler.startElementNs = onStart;
        handler.endElementNs = onEnd;
        handler.characters = onText;
        handler.ignorableWhitespace = onText;
        handler.cdataBlock = onCdata;
        handler.comment = onComment;
        handler.processingInstruction = onInstruction;
        return handler;
    }

    /** Whether the document has a DOCTYPE, where reading stops. */
    bool hasDocumentType() const { return mHasDocumentType; }
    bool hasTooLongText() const { return mHasTooLongText; }

  private:
    static EventReader& of(void* self) { return *static_cast<EventReader*>(self); }

    static void onDocumentType(void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
        of(self).mHasDocumentType = true;
        xmlStopParser(of(self).mParser);
    }

    static void onStart(void* self, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                        int, const xmlChar**, int attributeCount, int, const xmlChar** attributes) {
        EventReader& reader = of(self);
        reader.mBudget.chargeAttributes(static_cast<size_t>(attributeCount));
        reader.mBuilder.beginElement(reader.mNames.store(name, prefix, uri));
        const xmlChar** const end =
                attributes + static_cast<size_t>(attributeCount) * kPartsOfAttribute;
        bool hasNamespaces = false;
        for (const xmlChar** at = attributes; at != end; at += kPartsOfAttribute) {
            hasNamespaces = hasNamespaces || at[2] != nullptr;
        }
        FirstTexts texts(hasNamespaces);
        for (const xmlChar** at = attributes; at != end; at += kPartsOfAttribute) {
            const Document::Piece attribute = reader.mNames.store(at[0], at[1], at[2]);
            const std::string_view text(reinterpret_cast<const char*>(at[3]),
                                        static_cast<size_t>(at[4] - at[3]));
            const Document::Piece piece = texts.get(reader.mDocument.text(attribute), [&] {
                return storeUnescaped(reader.mBuilder, text);
            });
            reader.mBuilder.addAttribute(attribute, piece);
        }
    }

    /** Stores an attribute's text, in which only ampersands are still escaped. */
    static Document::Piece storeUnescaped(DocumentBuilder& builder, std::string_view text) {
        builder.beginText();
        for (size_t at = text.find(kEscapedAmpersand); at != std::string_view::npos;
             at = text.find(kEscapedAmpersand)) {
            builder.appendText(text.substr(0, at + 1));
            text.remove_prefix(at + kEscapedAmpersand.size());
        }
        builder.appendText(text);
        return builder.endText();
    }

    static void onEnd(void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
        of(self).mBuilder.endElement();
    }

    static void onText(void* self, const xmlChar*, int size) {
        EventReader& reader = of(self);
        if (reader.mBuilder.isInElement() &&
            reader.mBuilder.addText(static_cast<size_t>(size)) > kMaxTextBytes) {
            reader.mHasTooLongText = true;
            xmlStopParser(reader.mParser);
        }
    }

    static void onCdata(void* self, const xmlChar*, int) {
        if (of(self).mBuilder.isInElement()) {
            of(self).mBuilder.addCdata();
        }
    }

    static void onComment(void* self, const xmlChar*) { of(self).addOther("comment"); }

    static void onInstruction(void* self, const xmlChar* target, const xmlChar*) {
        of(self).addOther(toText(target));
    }

    void addOther(std::string_view name) {
        if (mBuilder.isInElement()) {
            mBuilder.addOther(name);
        }
    }

    const Document& mDocument;
    DocumentBuilder mBuilder;
    NameStore mNames{mBuilder};
    DocumentBudget& mBudget;
    xmlParserCtxt*& mParser;
    bool mHasDocumentType = false;
    bool mHasTooLongText = false;
};

/**
 * Keeps libxml2 from doing more for a document's declarations than the budget allows. A long
 * parameter entity is read again at each reference, and an element's default attributes are
 * compared with one another at each occurrence of the element.
 */
class DeclarationGuard {
  public:
    explicit DeclarationGuard(DocumentBudget& budget) : mBudget(budget) {}

    /** libxml2's tree-building handler. The parser's private pointer must be a DeclarationGuard. */
    static xmlSAXHandler handler() {
        xmlSAXHandler handler = {};
        xmlSAXVersion(&handler, 2);
        handler.getParameterEntity = onParameterEntity;
        handler.attributeDecl = onAttributeDecl;
        handler.startElementNs = onStart;
        handler.comment = onComment;
        handler.processingInstruction = onInstruction;
        return handler;
    }

  private:
    static xmlEntity* onParameterEntity(void* self, const xmlChar* name) {
        auto* const parser = static_cast<xmlParserCtxt*>(self);
        xmlEntity* const entity = xmlSAX2GetParameterEntity(parser, name);
        const size_t length = entity == nullptr ? 0 : static_cast<size_t>(entity->length);
        return of(parser).pay(parser, 1, length) ? entity : nullptr;
    }

    static void onAttributeDecl(void* self, const xmlChar* element, const xmlChar* name, int type,
                                int kind, const xmlChar* text, xmlEnumeration* values) {
        auto* const parser = static_cast<xmlParserCtxt*>(self);
        xmlSAX2AttributeDecl(parser, element, name, type, kind, text, values);
        if (text != nullptr) {
            DeclarationGuard& guard = of(parser);
            guard.pay(parser, static_cast<size_t>(++guard.mDefaults[std::string(toText(element))]),
                      0);
        }
    }

    static void onStart(void* self, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                        int namespaceCount, const xmlChar** namespaces, int attributeCount,
                        int defaultCount, const xmlChar** attributes) {
        auto* const parser = static_cast<xmlParserCtxt*>(self);
        xmlSAX2StartElementNs(parser, name, prefix, uri, namespaceCount, namespaces, attributeCount,
                              defaultCount, attributes);
        // Charged only after the call, because ending the parser frees the attributes' texts.
        DeclarationGuard& guard = of(parser);
        guard.mBudget.chargeAttributes(static_cast<size_t>(attributeCount));
        if (const size_t count = guard.countDefaults(toText(name), toText(prefix)); count > 0) {
            const size_t others =
                    static_cast<size_t>(namespaceCount) + static_cast<size_t>(attributeCount);
            guard.pay(parser, count * (count + others), 0);
        }
    }

    // Dropped among declarations: libxml2 would keep them, and nothing reads them.

    static void onComment(void* self, const xmlChar* text) {
        if (static_cast<xmlParserCtxt*>(self)->inSubset == 0) {
            xmlSAX2Comment(self, text);
        }
    }

    static void onInstruction(void* self, const xmlChar* target, const xmlChar* data) {
        if (static_cast<xmlParserCtxt*>(self)->inSubset == 0) {
            xmlSAX2ProcessingInstruction(self, target, data);
        }
    }

    static DeclarationGuard& of(xmlParserCtxt* parser) {
        return *static_cast<DeclarationGuard*>(parser->_private);
    }

    /** Charges the budget; ends the parser if that is too much. @return whether it is not */
    bool pay(xmlParserCtxt* parser, size_t steps, size_t textBytes) {
        mBudget.chargeSteps(steps);
        mBudget.chargeText(textBytes);
        if (mBudget.isSpent()) {
            xmlStopParser(parser);
        }
        return !mBudget.isSpent();
    }

    /** Number of default attributes declared for an element. */
    size_t countDefaults(std::string_view name, std::string_view prefix) const {
        if (mDefaults.empty()) {
            return 0;
        }
        std::string qualified(prefix);
        qualified.append(prefix.empty() ? "" : ":").append(name);
        const auto found = mDefaults.find(qualified);
        return found == mDefaults.end() ? 0 : static_cast<size_t>(found->second);
    }

    DocumentBudget& mBudget;
    /** By the element's name, prefix included. */
    std::map<std::string, int> mDefaults;
};

/** Copies libxml2's tree, and expands entity references in attributes. */
class TreeCopy {
  public:
    TreeCopy(Document& document, DocumentBudget& budget) : mBuilder(document), mBudget(budget) {}

    /** Stops when the budget is spent. */
    void copy(const xmlNode* root) {
        const xmlNode* node = root;
        while (node != nullptr && !mBudget.isSpent()) {
            add(node);
            if (node->type == XML_ELEMENT_NODE && node->children != nullptr) {
                node = node->children;
                continue;
            }
            node = endAndAdvance(node, root);
        }
    }

  private:
    /** Ends a node and all ancestors that end with it. @return the next node in document order */
    const xmlNode* endAndAdvance(const xmlNode* node, const xmlNode* root) {
        end(node);
        while (node != root && node->next == nullptr) {
            node = node->parent;
            end(node);
        }
        return node == root ? nullptr : node->next;
    }

    void end(const xmlNode* node) {
        if (node->type == XML_ELEMENT_NODE) {
            mBuilder.endElement();
        }
    }

    void add(const xmlNode* node) {
        switch (node->type) {
            case XML_ELEMENT_NODE:
                mBuilder.beginElement(mNames.store(node->name));
                addAttributes(node);
                break;
            case XML_TEXT_NODE:
                mBuilder.addText(0);
                break;
            case XML_CDATA_SECTION_NODE:
                mBuilder.addCdata();
                break;
            default:
                mBuilder.addOther(toText(node->name));
                break;
        }
    }

    void addAttributes(const xmlNode* element) {
        bool hasNamespaces = false;
        for (const xmlAttr* attr = element->properties; attr != nullptr; attr = attr->next) {
            hasNamespaces = hasNamespaces || attr->ns != nullptr;
        }
        FirstTexts texts(hasNamespaces);
        for (const xmlAttr* attr = element->properties; attr != nullptr; attr = attr->next) {
            const Document::Piece text =
                    texts.get(toText(attr->name), [&] { return expand(attr); });
            mBuilder.addAttribute(mNames.store(attr->name), text);
        }
    }

    /**
     * The text of an attribute. Entities can nest deeply and repeat often, so there is no
     * recursion, and every node visited is charged.
     */
    Document::Piece expand(const xmlAttr* attr) {
        std::vector<const xmlNode*> outer;
        const xmlNode* node = attr->children;
        mBuilder.beginText();
        while ((node != nullptr || !outer.empty()) && !mBudget.isSpent()) {
            if (node == nullptr) {
                node = outer.back();
                outer.pop_back();
                continue;
            }
            mBudget.chargeSteps(1);
            const xmlNode* inner = nullptr;
            if (node->type == XML_ENTITY_REF_NODE) {
                const xmlEntity* const entity = xmlGetDocEntity(attr->doc, node->name);
                inner = entity == nullptr ? nullptr : entity->children;
            } else if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
                append(toText(node->content), !outer.empty());
            }
            if (inner != nullptr) {
                outer.push_back(node->next);
            }
            node = inner != nullptr ? inner : node->next;
        }
        return mBuilder.endText();
    }

    void append(std::string_view text, bool isFromEntity) {
        mBudget.chargeText(text.size());
        if (isFromEntity) {
            mBudget.chargeKeptText(text.size());
        }
        if (!mBudget.isSpent()) {
            mBuilder.appendText(text);
        }
    }

    DocumentBuilder mBuilder;
    NameStore mNames{mBuilder};
    DocumentBudget& mBudget;
};

class DocumentReader {
  public:
    DocumentReader(DocumentSource& source, DocumentBudget& budget)
        : mSource(source), mBudget(budget) {}

    std::unique_ptr<Document> read() {
        auto document = std::make_unique<Document>();
        if (!mSource.getError().empty()) {
            return nullptr;
        }
        EventReader events(*document, mBudget, mRunning);
        const xmlSAXHandler handler = EventReader::handler();
        const bool isRead = parse(handler, &events, nullptr) != nullptr;
        mHasTooLongText = events.hasTooLongText();
        if (events.hasDocumentType()) {
            return readTree();
        }
        // A stopped parser does not report the document as malformed.
        return isRead && !mHasTooLongText ? std::move(document) : nullptr;
    }

    /** Why read() returned null. */
    std::string describeError() const {
        if (!mSource.getError().empty()) {
            return mSource.getError();
        }
        if (mBudget.isSpent()) {
            return mBudget.describe();
        }
        if (mHasTooLongText) {
            return "a text of more than " + std::to_string(kMaxTextBytes) + " bytes";
        }
        return mError.empty() ? "out of memory" : mError;
    }

  private:
    static int readMore(void* self, char* out, int room) {
        return static_cast<DocumentReader*>(self)->readMore(out, room);
    }

    /** Stops reading once the budget is spent. */
    int readMore(char* out, int room) {
        if (mRunning->instate == XML_PARSER_EOF) {
            return 0;
        }
        const int count = mSource.read(out, room);
        mBudget.setDocumentSize(mSource.getSize());
        predictAttributeCost();
        return mBudget.isSpent() ? -1 : count;
    }

    /**
     * Spends the budget if libxml2 is about to compare too many attributes of an element. It
     * reports them only after comparing them; the size of its attribute array, which doubles as
     * they come, tells earlier.
     */
    void predictAttributeCost() {
        DocumentBudget budget = mBudget;
        budget.chargeAttributes(static_cast<size_t>(mRunning->maxatts) / kPartsOfAttribute / 2);
        if (budget.isSpent()) {
            mBudget = budget;
        }
    }

    /**
     * Parses the source from its current position.
     *
     * @param handlerData first argument of the handler's functions; the parser if null
     * @param guard       the parser's private pointer
     * @return the parser if the document is sound, else null
     */
    Parser parse(const xmlSAXHandler& handler, EventReader* handlerData, DeclarationGuard* guard) {
        XmlErrors errors(mBudget);
        Parser parser(xmlNewParserCtxt());
        mRunning = parser.get();
        if (parser == nullptr) {
            return nullptr;
        }
        *parser->sax = handler;
        parser->userData = handlerData != nullptr ? static_cast<void*>(handlerData) : mRunning;
        parser->_private = guard;
        errors.watch(mRunning);
        parser->myDoc = xmlCtxtReadIO(mRunning, readMore, nullptr, this, nullptr, nullptr, 0);
        mRunning = nullptr;
        mError = errors.text();
        const bool isSound =
                parser->wellFormed != 0 && !errors.areFatal() && mSource.getError().empty();
        return isSound && !mBudget.isSpent() ? std::move(parser) : nullptr;
    }

    /** Declarations can change a document's attributes, so it is read through libxml2's tree. */
    std::unique_ptr<Document> readTree() {
        mSource.rewind();
        DeclarationGuard guard(mBudget);
        const xmlSAXHandler handler = DeclarationGuard::handler();
        const Parser parser = parse(handler, nullptr, &guard);
        if (parser == nullptr) {
            return nullptr;
        }
        auto document = std::make_unique<Document>();
        TreeCopy(*document, mBudget).copy(xmlDocGetRootElement(parser->myDoc));
        return mBudget.isSpent() ? nullptr : std::move(document);
    }

    DocumentSource& mSource;
    DocumentBudget& mBudget;
    /** The current parser; an earlier one is freed. */
    xmlParserCtxt* mRunning = nullptr;
    bool mHasTooLongText = false;
    std::string mError;
};

}  // namespace

std::unique_ptr<Document> readDocument(const std::string& source, bool fromMemory,
                                       DocumentBudget& budget, std::string& error) {
    xmlInitParser();
    DocumentSource bytes(source, fromMemory);
    DocumentReader reader(bytes, budget);
    std::unique_ptr<Document> document = reader.read();
    error = document == nullptr ? reader.describeError() : "";
    return document;
}

void cleanUpXmlParser() {
    xmlCleanupParser();
}

}  // namespace ormel
