#include "DocumentMutator.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <ormel/Parameter.h>
#include <ormel/ValueSetter.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace ormel::fuzz {

namespace {

struct XmlDeleter {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
    void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
    void operator()(xmlChar* text) const { xmlFree(text); }
};
using Document = std::unique_ptr<xmlDoc, XmlDeleter>;
using Buffer = std::unique_ptr<xmlBuffer, XmlDeleter>;
using Text = std::unique_ptr<xmlChar, XmlDeleter>;

const xmlChar* toXml(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

std::string toString(const xmlChar* text) {
    return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

/** The part of a document that can be read; null if there is none. */
Document read(const std::string& text) {
    if (text.size() > static_cast<size_t>(std::numeric_limits<int>::max())) {
        return nullptr;
    }
    constexpr int kOptions =
            XML_PARSE_RECOVER | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET;
    return Document(
            xmlReadMemory(text.data(), static_cast<int>(text.size()), "", nullptr, kOptions));
}

/** Random numbers that are the same on every platform for the same seed. */
class Random {
  public:
    explicit Random(uint32_t seed) : mState(seed) {}

    /** A number from 0 to @p end - 1; 0 for an end of 0. */
    size_t below(size_t end) {
        mState += 0x9e3779b97f4a7c15;
        uint64_t mixed = (mState ^ (mState >> 30)) * 0xbf58476d1ce4e5b9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
        mixed ^= mixed >> 31;
        return end == 0 ? 0 : static_cast<size_t>(mixed % end);
    }

    bool oneIn(size_t count) { return below(count) == 0; }

    template <typename Items>
    auto oneOf(const Items& items) -> decltype(*std::begin(items)) {
        return *std::next(std::begin(items), static_cast<ptrdiff_t>(below(std::size(items))));
    }

  private:
    uint64_t mState;
};

// Names and values of elements and attributes. In a construct, '#' is replaced by a value.

constexpr const char* kSectionNames[] = {
        "format_version", "tool_version", "authorized_technologies",
        "global_setting", "preset",       "profile",
        "tuning",         "device_id",    "endpoint_type",
        "include",        "data",         "band_ieq",
        "band_geq",       "output-mode",  "other"};

constexpr const char* kAttributeNames[] = {"id",
                                           "name",
                                           "type",
                                           "value",
                                           "row",
                                           "group",
                                           "endpoint_port",
                                           "endpoint_type",
                                           "mono_device",
                                           "orientation",
                                           "output_channels",
                                           "preset",
                                           "ieq_preset",
                                           "major",
                                           "minor",
                                           "maintenance",
                                           "device_name",
                                           "device_index",
                                           "tuning_version",
                                           "virtual_bass_process",
                                           "altivo_game_system_gain",
                                           "xml:lang",
                                           "q:id",
                                           "q:value"};

constexpr const char* kPlainValues[] = {
        "0",           "1",       "2",    "3",      "-1",    "4294967296", "-2147483649",
        "99999999999", "+5",      "0x10", "1.5",    "1,2,3", "1 2",        "1,,2",
        "-",           "007",     "",     "true",   "false", "mobility",   "ieq",
        "geq",         "default", "a b",  "&#233;", "&#38;", "&lt;",       "3.4.0"};

/** Names for entities and processing instructions; some are names of elements. */
constexpr const char* kOtherNames[] = {"e",
                                       "f",
                                       "profile",
                                       "endpoint_type",
                                       "tuning",
                                       "preset",
                                       "include",
                                       "device_id",
                                       "output-mode",
                                       "ieq",
                                       "geq",
                                       "volmax-boost",
                                       "audio-optimizer-bands"};

constexpr const char* kSections[] = {
        "<format_version major='3' minor='2' maintenance='2'/>",
        "<format_version major='3' minor='3' maintenance='0'/>",
        "<format_version major='3' minor='4' maintenance='0'/>",
        "<tool_version major='#' minor='#' maintenance='#'/>",
        "<authorized_technologies>\n<global_setting device_name='#'/>\n<global_setting "
        "virtual_bass_process='#' device_index='#'/>\n</authorized_technologies>",
        "<preset type='ieq' id='1' name='#'>\n<data>\n<ieq-bands>\n<band_ieq frequency='#' "
        "target='#'/>\n</ieq-bands>\n</data>\n</preset>",
        "<preset type='ieq' id='warm'/>",
        "<preset type='geq' id='1'>\n<data>\n<geq-bands>\n<band_geq frequency='#' gain='#'/>\n"
        "</geq-bands>\n</data>\n</preset>",
        "<profile id='1' name='#' group='mobility'>\n<include preset='warm'/>\n<ieq-enable "
        "value='1'/>\n<endpoint_type id='speaker'>\n<include ieq_preset='1'/>\n</endpoint_type>\n"
        "</profile>",
        "<profile id='1'>\n<endpoint_type id='headphone'>\n<dialog-enhancer-enable value='1'/>\n"
        "</endpoint_type>\n</profile>",
        "<profile/>",
        "<tuning name='t' output_channels='4' endpoint_type='speaker'>\n<device_id "
        "id='default_internal_speaker' endpoint_port='internal_speaker'/>\n<data>\n<output-mode>\n"
        "<m>\n<r v='#'/>\n</m>\n</output-mode>\n</data>\n</tuning>",
        "<tuning name='t' mono_device='true'>\n<device_id id='#' endpoint_port='usb'/>\n</tuning>",
        "<tuning/>"};

constexpr const char* kParts[] = {
        "<include preset='#' ieq_preset='#'/>",
        "<endpoint_type id='headphone'>\n<include ieq_preset='1'/>\n</endpoint_type>",
        "<endpoint_type id='#'/>",
        "<device_id id='#' endpoint_port='headphone'/>",
        "<global_setting device_name='#' tuning_version='#' altivo_game_system_gain='#'/>",
        "<data>\n</data>",
        "<output-mode>\n<m>\n<r v='#'/>\n<r v='#'/>\n</m>\n</output-mode>",
        "<virtual-bass-subgains a='#' b='#' a1='#'/>"};

template <typename Names>
std::string bandOf(const char* element, const Names& names) {
    std::string band = std::string("<") + element;
    for (const char* const name : names) {
        band += std::string(" ") + name + "='#'";
    }
    return band + "/>";
}

/** Every parameter's element, and its child elements. */
const std::vector<std::string>& parameterConstructs() {
    static const auto& constructs = *new std::vector<std::string>([] {
        std::vector<std::string> all(std::begin(kParts), std::end(kParts));
        for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
            all.push_back("<" + setter->getNodeName() + " value='#'/>");
        }
        all.push_back(bandOf("band_ieq", IeqValueSetter::kAttrNames));
        all.push_back(bandOf("band_geq", GeqValueSetter::kAttrNames));
        all.push_back(bandOf("virtual-bass-mix-freqs", VirtualBassValueSetter::kAttrNames));
        const std::string optimizer = bandOf("band", AudioOptimizerValueSetter::kAttrNames);
        const std::string regulator = bandOf("band", RegulatorTuningValueSetter::kAttrNames);
        all.push_back("<audio-optimizer-bands>\n" + optimizer + "\n</audio-optimizer-bands>");
        all.push_back("<regulator-tuning>\n" + regulator + "\n</regulator-tuning>");
        return all;
    }());
    return constructs;
}

std::string elementName(Random& random) {
    if (random.oneIn(3)) {
        return random.oneOf(kSectionNames);
    }
    return random.oneOf(SetterCollection::kAllValueSetters)->getNodeName();
}

std::string longRow(Random& random) {
    std::string row;
    for (size_t count = random.below(70); count > 0; --count) {
        row += std::to_string(random.below(20)) + ',';
    }
    return row;
}

/** An attribute value, escaped as in a document. */
std::string value(Random& random) {
    switch (random.below(8)) {
        case 0:
            return random.oneOf(kIeqPresetNames);
        case 1:
            return random.oneOf(kEndpointNames);
        case 2:
            return random.oneOf(kPortNames);
        case 3:
            return std::string("default_") + random.oneOf(kPortNames);
        case 4:
            return longRow(random);
        case 5:
            return std::to_string(random.below(100));
        default:
            return random.oneOf(kPlainValues);
    }
}

std::string withValues(std::string construct, Random& random) {
    for (size_t at = 0; (at = construct.find('#', at)) != std::string::npos;) {
        const std::string text = value(random);
        construct.replace(at, 1, text);
        at += text.size();
    }
    return construct;
}

bool isElement(const xmlNode* node) {
    return node->type == XML_ELEMENT_NODE;
}

bool isBlank(const xmlNode* node) {
    return node->type == XML_TEXT_NODE && xmlIsBlankNode(node) == 1;
}

/** Whether @p node is @p other or inside it. */
bool isWithin(const xmlNode* node, const xmlNode* other) {
    while (node != nullptr && node != other) {
        node = node->parent;
    }
    return node != nullptr;
}

/** Changes a document that has a root. */
class Editor {
  public:
    Editor(Document document, uint32_t seed)
        : mDocument(std::move(document)),
          mRoot(xmlDocGetRootElement(mDocument.get())),
          mRandom(seed) {}

    /** Makes one edit, or none if the chosen one does not apply. */
    void edit();

    /** Makes an edit that shortens the document. */
    void shorten() { remove(); }

    /** Inserts a copy of an element of @p other. */
    void splice(xmlDoc& other) {
        if (const xmlNode* const root = xmlDocGetRootElement(&other); root != nullptr) {
            insert(xmlDocCopyNode(anyOf(elementsOf(const_cast<xmlNode*>(root))), mDocument.get(),
                                  1));
        }
    }

    std::string text() {
        if (mDocument->encoding != nullptr) {
            xmlChar* memory = nullptr;
            int size = 0;
            xmlDocDumpMemoryEnc(mDocument.get(), &memory, &size,
                                reinterpret_cast<const char*>(mDocument->encoding));
            if (const Text owned(memory); size > 0) {
                return {reinterpret_cast<const char*>(owned.get()), static_cast<size_t>(size)};
            }
        }
        const Buffer buffer(xmlBufferCreate());
        for (xmlNode* node = mDocument->children; node != nullptr; node = node->next) {
            xmlNodeDump(buffer.get(), mDocument.get(), node, 0, 0);
        }
        return toString(xmlBufferContent(buffer.get()));
    }

  private:
    /** The node after @p node in document order, within the root. */
    static xmlNode* following(xmlNode* node, const xmlNode* root) {
        if (isElement(node) && node->children != nullptr) {
            return node->children;
        }
        while (node != root && node->next == nullptr) {
            node = node->parent;
        }
        return node == root ? nullptr : node->next;
    }

    static std::vector<xmlNode*> nodesOf(xmlNode* root) {
        std::vector<xmlNode*> nodes;
        for (xmlNode* node = root; node != nullptr; node = following(node, root)) {
            nodes.push_back(node);
        }
        return nodes;
    }

    static std::vector<xmlNode*> elementsOf(xmlNode* root) {
        std::vector<xmlNode*> nodes = nodesOf(root);
        nodes.erase(std::remove_if(nodes.begin(), nodes.end(),
                                   [](const xmlNode* node) { return !isElement(node); }),
                    nodes.end());
        return nodes;
    }

    xmlNode* anyOf(const std::vector<xmlNode*>& nodes) { return mRandom.oneOf(nodes); }

    xmlNode* anyElement() { return anyOf(elementsOf(mRoot)); }

    /** Any node but the root; null if there is none. */
    xmlNode* anyBelow() {
        std::vector<xmlNode*> nodes = nodesOf(mRoot);
        nodes.erase(nodes.begin());
        return nodes.empty() ? nullptr : anyOf(nodes);
    }

    /** Like anyBelow(), but mostly an element. */
    xmlNode* anyPart() {
        xmlNode* const element = anyElement();
        return element == mRoot || mRandom.oneIn(4) ? anyBelow() : element;
    }

    /** An attribute of an element; null if a few tries find none. */
    xmlAttr* anyAttribute() {
        const std::vector<xmlNode*> elements = elementsOf(mRoot);
        std::vector<xmlAttr*> attributes;
        for (int tries = 0; attributes.empty() && tries < 4; ++tries) {
            for (xmlAttr* attr = anyOf(elements)->properties; attr != nullptr; attr = attr->next) {
                attributes.push_back(attr);
            }
        }
        return attributes.empty() ? nullptr : mRandom.oneOf(attributes);
    }

    std::string attributeName() {
        switch (mRandom.below(6)) {
            case 0:
                return mRandom.oneOf(AudioOptimizerValueSetter::kAttrNames);
            case 1:
                return mRandom.oneOf(RegulatorTuningValueSetter::kAttrNames);
            case 2:
                return mRandom.oneOf(VirtualBassValueSetter::kAttrNames);
            default:
                return mRandom.oneOf(kAttributeNames);
        }
    }

    /** A value, or one with a reference to a declared entity. */
    std::string valueOrReference() {
        const bool refers = mDocument->intSubset != nullptr && mRandom.oneIn(3);
        return refers ? value(mRandom) + "&" + declaredName() + ";" : value(mRandom);
    }

    /** The name of one of the document's entities; another name only if it has none. */
    std::string declaredName() {
        std::vector<std::string> names;
        for (const xmlNode* node = mDocument->intSubset->children; node != nullptr;
             node = node->next) {
            if (node->type == XML_ENTITY_DECL) {
                names.push_back(toString(node->name));
            }
        }
        return names.empty() ? mRandom.oneOf(kOtherNames) : mRandom.oneOf(names);
    }

    /** Inserts an unlinked node before @p place or, if that is null, at the end of the root. */
    void put(xmlNode* node, xmlNode* place) {
        if (node == nullptr) {
            return;
        }
        if (place == nullptr) {
            xmlAddChild(mRoot, node);
        } else {
            xmlAddPrevSibling(place, node);
        }
    }

    /** Inserts an unlinked node anywhere. */
    void insert(xmlNode* node) {
        if (mRandom.oneIn(3)) {
            put(node, anyBelow());
        } else if (node != nullptr) {
            xmlAddChild(anyElement(), node);
        }
    }

    /** Adds the nodes of a construct to @p parent, mostly after a line break. */
    void insertConstruct(const std::string& construct, xmlNode* parent) {
        const Document made = read("<d>" + withValues(construct, mRandom) + "</d>");
        xmlNode* const root = xmlDocGetRootElement(made.get());
        if (root == nullptr || root->children == nullptr) {
            return;
        }
        if (!mRandom.oneIn(4)) {
            xmlAddChild(parent, xmlNewDocText(mDocument.get(), toXml("\n")));
        }
        xmlAddChildList(parent, xmlDocCopyNodeList(mDocument.get(), root->children));
    }

    /** Gives an element of another document namespaces that live as long as it does. */
    void declareNamespaces(xmlNode* node) {
        if (isElement(node)) {
            xmlReconciliateNs(mDocument.get(), node);
        }
    }

    xmlDtd* subset() {
        if (mDocument->intSubset == nullptr) {
            xmlCreateIntSubset(mDocument.get(), mRoot->name, nullptr, nullptr);
        }
        return mDocument->intSubset;
    }

    // The edits.

    void duplicate() {
        xmlNode* const node = anyPart();
        for (size_t copies = mRandom.oneIn(4) ? 4 : 1; node != nullptr && copies > 0; --copies) {
            put(xmlDocCopyNode(node, mDocument.get(), 1), node);
        }
    }

    void remove() {
        if (xmlNode* const node = anyPart(); node != nullptr) {
            xmlUnlinkNode(node);
            xmlFreeNode(node);
        }
    }

    void move() {
        xmlNode* const node = anyPart();
        xmlNode* const place = anyBelow();
        if (node == nullptr || isWithin(place, node)) {
            return;
        }
        xmlUnlinkNode(node);
        const bool isPart = isElement(node);
        put(node, place);
        if (isPart) {
            declareNamespaces(node);
        }
    }

    void swap() {
        xmlNode* const one = anyPart();
        xmlNode* const other = anyPart();
        if (one == nullptr || other == nullptr || isWithin(one, other) || isWithin(other, one)) {
            return;
        }
        xmlReplaceNode(one, xmlDocCopyNode(other, mDocument.get(), 1));
        xmlReplaceNode(other, one);
        xmlFreeNode(other);
        declareNamespaces(one);
    }

    void addSection() { insertConstruct(mRandom.oneOf(kSections), mRoot); }

    void addParameter() { insertConstruct(mRandom.oneOf(parameterConstructs()), anyElement()); }

    /** Adds a parameter to a section that can have one, if there is any. */
    void addParameterToSection() {
        std::vector<xmlNode*> sections = elementsOf(mRoot);
        const auto takesNone = [](const xmlNode* element) {
            const std::string name = toString(element->name);
            return name != "data" && name != "profile" && name != "endpoint_type";
        };
        sections.erase(std::remove_if(sections.begin(), sections.end(), takesNone), sections.end());
        if (!sections.empty()) {
            insertConstruct(mRandom.oneOf(parameterConstructs()), anyOf(sections));
        }
    }

    void renameElement() { xmlNodeSetName(anyElement(), toXml(elementName(mRandom))); }

    void changeValue() {
        if (xmlAttr* const attr = anyAttribute(); attr != nullptr) {
            xmlNodeSetContent(reinterpret_cast<xmlNode*>(attr), toXml(valueOrReference()));
        }
    }

    void addAttribute() {
        xmlNode* const element = anyElement();
        const std::string name = attributeName();
        if (xmlHasProp(element, toXml(name)) != nullptr) {
            return;
        }
        xmlAttr* const attr = xmlNewProp(element, toXml(name), nullptr);
        xmlNodeSetContent(reinterpret_cast<xmlNode*>(attr), toXml(valueOrReference()));
    }

    /** Adds an attribute whose local name may equal that of another one. */
    void addPrefixedAttribute() {
        xmlNode* const element = anyElement();
        const std::string prefix = "p" + std::to_string(mRandom.below(3));
        xmlNs* const space = xmlNewNs(element, toXml("urn:" + prefix), toXml(prefix));
        if (space != nullptr) {
            xmlNewNsProp(element, space, toXml(attributeName()), toXml(longRow(mRandom)));
        }
    }

    void removeAttribute() {
        if (xmlAttr* const attr = anyAttribute(); attr != nullptr) {
            xmlRemoveProp(attr);
        }
    }

    void renameAttribute() {
        xmlAttr* const attr = anyAttribute();
        const std::string name = attributeName();
        if (attr != nullptr && xmlHasProp(attr->parent, toXml(name)) == nullptr) {
            xmlNodeSetName(reinterpret_cast<xmlNode*>(attr), toXml(name));
        }
    }

    void addComment() { insert(xmlNewDocComment(mDocument.get(), toXml("c"))); }

    void addCdata() {
        const std::string text = mRandom.oneIn(2) ? "" : "1";
        insert(xmlNewCDataBlock(mDocument.get(), toXml(text), static_cast<int>(text.size())));
    }

    void addText() {
        insert(xmlNewDocText(mDocument.get(), toXml(mRandom.oneIn(2) ? "\n" : "a&b")));
    }

    void addInstruction() {
        insert(xmlNewDocPI(mDocument.get(), toXml(mRandom.oneOf(kOtherNames)), toXml("x")));
    }

    void addReference() {
        const std::string name =
                mDocument->intSubset != nullptr ? declaredName() : mRandom.oneOf(kOtherNames);
        if (mDocument->intSubset == nullptr) {
            declareEntity(name);
        }
        insert(xmlNewReference(mDocument.get(), toXml(name)));
    }

    void declareEntity(const std::string& name) {
        subset();
        std::string content = value(mRandom);
        if (mRandom.oneIn(3)) {
            content = "<" + elementName(mRandom) + "/>";
        } else if (mRandom.oneIn(3)) {
            const std::string other = declaredName();
            content = other == name ? "" : "&" + other + ";&" + other + ";";
        }
        xmlAddDocEntity(mDocument.get(), toXml(name), XML_INTERNAL_GENERAL_ENTITY, nullptr, nullptr,
                        toXml(content));
    }

    void addDeclaration() { declareEntity(mRandom.oneOf(kOtherNames)); }

    void declareDefault() {
        const std::string element = toString(anyElement()->name);
        xmlAddAttributeDecl(nullptr, subset(), toXml(element), toXml(attributeName()), nullptr,
                            XML_ATTRIBUTE_CDATA, XML_ATTRIBUTE_NONE, toXml(value(mRandom)),
                            nullptr);
    }

    void wrap() {
        xmlNode* const node = anyPart();
        if (node == nullptr) {
            return;
        }
        xmlNode* const outer =
                xmlNewDocNode(mDocument.get(), nullptr, toXml(elementName(mRandom)), nullptr);
        xmlReplaceNode(node, outer);
        xmlAddChild(outer, node);
    }

    void unwrap() {
        xmlNode* const element = anyElement();
        if (element == mRoot) {
            return;
        }
        while (element->children != nullptr) {
            xmlNode* const child = element->children;
            const bool isPart = isElement(child);
            xmlUnlinkNode(child);
            xmlAddPrevSibling(element, child);
            if (isPart) {
                declareNamespaces(child);
            }
        }
        xmlUnlinkNode(element);
        xmlFreeNode(element);
    }

    void removeChildren() {
        xmlNode* const element = anyElement();
        if (element != mRoot) {
            xmlNodeSetContent(element, nullptr);
        }
    }

    void indent() {
        for (xmlNode* const element : elementsOf(mRoot)) {
            if (element != mRoot && (element->prev == nullptr || !isBlank(element->prev))) {
                xmlAddPrevSibling(element, xmlNewDocText(mDocument.get(), toXml("\n")));
            }
        }
    }

    void minify() {
        for (xmlNode* const node : nodesOf(mRoot)) {
            if (isBlank(node)) {
                xmlUnlinkNode(node);
                xmlFreeNode(node);
            }
        }
    }

    void changeEncoding() {
        constexpr const char* kEncodings[] = {"UTF-8", "UTF-16", "ISO-8859-1"};
        if (mDocument->encoding != nullptr) {
            xmlFree(const_cast<xmlChar*>(mDocument->encoding));
            mDocument->encoding = nullptr;
        } else if (mRandom.oneIn(4)) {
            mDocument->encoding = xmlStrdup(toXml(mRandom.oneOf(kEncodings)));
        }
    }

    Document mDocument;
    xmlNode* mRoot;
    Random mRandom;
};

void Editor::edit() {
    // clang-format off
    using Edit = void (Editor::*)();
    constexpr Edit kEdits[] = {
            &Editor::duplicate,
            &Editor::remove,
            &Editor::move,
            &Editor::swap,
            &Editor::addSection,
            &Editor::addParameter,
            &Editor::addParameterToSection,
            &Editor::addParameterToSection,
            &Editor::renameElement,
            &Editor::changeValue,
            &Editor::changeValue,
            &Editor::changeValue,
            &Editor::addAttribute,
            &Editor::addPrefixedAttribute,
            &Editor::removeAttribute,
            &Editor::renameAttribute,
            &Editor::addComment,
            &Editor::addCdata,
            &Editor::addText,
            &Editor::addInstruction,
            &Editor::addReference,
            &Editor::addDeclaration,
            &Editor::declareDefault,
            &Editor::wrap,
            &Editor::unwrap,
            &Editor::removeChildren,
            &Editor::indent,
            &Editor::minify,
            &Editor::changeEncoding,
    };
    // clang-format on
    (this->*mRandom.oneOf(kEdits))();
}

std::optional<std::string> mutate(const std::string& text, const std::string* other, size_t maxSize,
                                  uint32_t seed) {
    Document document = read(text);
    if (document == nullptr || xmlDocGetRootElement(document.get()) == nullptr) {
        return {};
    }
    constexpr size_t kMaxEdits = 4;
    constexpr int kMaxRemovals = 16;
    Random random(seed);
    Editor editor(std::move(document), seed ^ 0x55555555);
    if (other != nullptr) {
        if (const Document source = read(*other); source != nullptr) {
            editor.splice(*source);
        }
    }
    for (size_t edits = 1 + random.below(kMaxEdits); edits > 0; --edits) {
        editor.edit();
    }
    std::string changed = editor.text();
    for (int i = 0; changed.size() > maxSize && i < kMaxRemovals; ++i) {
        editor.shorten();
        changed = editor.text();
    }
    if (changed.size() > maxSize) {
        return {};
    }
    return changed;
}

}  // namespace

std::optional<std::string> mutateDocument(const std::string& text, size_t maxSize, uint32_t seed) {
    return mutate(text, nullptr, maxSize, seed);
}

std::optional<std::string> crossDocuments(const std::string& text, const std::string& other,
                                          size_t maxSize, uint32_t seed) {
    return mutate(text, &other, maxSize, seed);
}

}  // namespace ormel::fuzz
