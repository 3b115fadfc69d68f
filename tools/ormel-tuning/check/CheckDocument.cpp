#include "CheckDocument.h"

#include <libxml/parser.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "document/ReadTrace.h"

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
constexpr std::string_view kEncodings[] = {"UTF-8",    "UTF-16", "UTF-16LE",   "UTF-16BE",
                                           "US-ASCII", "ASCII",  "ISO-8859-1", "ISO-LATIN-1"};

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
    const auto lower = [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [lower](char a, char b) { return lower(a) == lower(b); });
}

std::string firstLine(const char* message) {
    const std::string_view text = message == nullptr ? "" : message;
    return std::string(text.substr(0, text.find('\n')));
}

/** Gathers what libxml2 complains of, while it lives. */
class ErrorCollector {
  public:
    explicit ErrorCollector(Findings& findings) : mFindings(findings) {
        xmlSetStructuredErrorFunc(this, keep);
    }
    ErrorCollector(const ErrorCollector&) = delete;
    ErrorCollector& operator=(const ErrorCollector&) = delete;
    ~ErrorCollector() { xmlSetStructuredErrorFunc(nullptr, nullptr); }

  private:
    static void keep(void* self, XmlError* error) {
        if (error->level >= XML_ERR_ERROR) {
            static_cast<ErrorCollector*>(self)->mFindings.add(
                    {Rule::NOT_WELL_FORMED, error->line, firstLine(error->message)});
        }
    }

    Findings& mFindings;
};

xmlDoc* parse(const std::string& text, Findings& findings) {
    const ErrorCollector collector(findings);
    const bool fits = text.size() <= static_cast<size_t>(std::numeric_limits<int>::max());
    xmlDoc* const document = !fits ? nullptr
                                   : xmlReadMemory(text.data(), static_cast<int>(text.size()),
                                                   "noname.xml", nullptr, XML_PARSE_BIG_LINES);
    if (document == nullptr && findings.all().empty()) {
        findings.add({Rule::NOT_WELL_FORMED, 1,
                      text.empty() ? "Document is empty" : "Document cannot be read"});
    }
    return document;
}

}  // namespace

CheckDocument::CheckDocument(const std::string& text, Findings& findings) {
    for (const auto& [mark, packer] : kPackers) {
        if (text.compare(0, mark.size(), mark) == 0) {
            findings.add({Rule::COMPRESSED, 1,
                          std::string("the file is packed with ") + packer + "; ship it unpacked"});
            return;
        }
    }
    mDocument.reset(parse(text, findings));
    if (mDocument != nullptr && xmlDocGetRootElement(mDocument.get()) == nullptr) {
        mDocument.reset();
    }
    if (mDocument != nullptr) {
        number(text);
        findOddities(findings);
    }
}

void CheckDocument::number(const std::string& text) {
    forEachElement(xmlDocGetRootElement(mDocument.get()), [this](xmlNode* node) {
        size_t parent = mElements.empty() ? 0 : mElements.size() - 1;
        while (parent != 0 && mElements[parent].node != node->parent) {
            parent = mElements[parent].parent;
        }
        mElements.push_back({node, parent, mElements.size() + 1, 0});
    });
    for (size_t i = mElements.size(); i-- > 1;) {
        size_t& end = mElements[mElements[i].parent].end;
        end = std::max(end, mElements[i].end);
    }
    const std::vector<long> lines = startTagLines(text);
    for (size_t i = 0; i < mElements.size(); ++i) {
        Element& element = mElements[i];
        element.node->_private = &element;
        element.line = lines.size() == mElements.size() ? lines[i] : xmlGetLineNo(element.node);
    }
}

void CheckDocument::findOddities(Findings& findings) const {
    const std::string_view encoding = toText(mDocument->encoding);
    const bool isKnown =
            encoding.empty() ||
            std::any_of(std::begin(kEncodings), std::end(kEncodings), [&](std::string_view known) {
                return equalsIgnoringCase(encoding, known);
            });
    if (!isKnown) {
        findings.add(
                {Rule::ENCODING, 1,
                 "the encoding " + std::string(encoding) + " is not read everywhere; write UTF-8"});
    }
    for (size_t i = 0; i < size(); ++i) {
        for (const xmlNode* node = mElements[i].node->children; node != nullptr;
             node = node->next) {
            if (node->type == XML_ENTITY_REF_NODE) {
                findings.add(finding(Rule::ENTITY_REFERENCE, i,
                                     "what &" + std::string(toText(node->name)) +
                                             "; stands for is not read; write it out"));
            }
        }
    }
}

std::vector<DocumentAttribute> CheckDocument::attributes(size_t element) const {
    std::vector<DocumentAttribute> all;
    for (const xmlAttr* attr = mElements[element].node->properties; attr != nullptr;
         attr = attr->next) {
        const xmlNode* const content = attr->children;
        DocumentAttribute attribute = {toText(attr->name), "", attr->ns != nullptr};
        if (content != nullptr && content->type == XML_TEXT_NODE && content->next == nullptr) {
            attribute.text = toText(content->content);
        } else if (xmlChar* const text = xmlNodeListGetString(mDocument.get(), attr->children, 1)) {
            attribute.text = toText(text);
            xmlFree(text);
        }
        all.push_back(std::move(attribute));
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

size_t CheckDocument::placeOf(const xmlNode* node) const {
    while (node != nullptr && node->type != XML_ELEMENT_NODE) {
        node = node->parent;
    }
    const auto* const element =
            node == nullptr ? nullptr : static_cast<const Element*>(node->_private);
    return element == nullptr ? 0 : static_cast<size_t>(element - mElements.data());
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
