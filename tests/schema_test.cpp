// The schema of tuning documents: what it accepts and rejects, and that it has exactly the
// library's parameters.
#include <gmock/gmock.h>
#include <libxml/xmlschemas.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>
#include <ormel/GeqPreset.h>
#include <ormel/ValueSetter.h>

#include <filesystem>
#include <memory>
#include <regex>

#include "support/RecordingEffect.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using Names = std::set<std::string>;

const std::string kFaulty = "faulty.xml";

template <typename Object, void (*kFree)(Object*)>
struct Freeing {
    void operator()(Object* object) const { kFree(object); }
};
template <typename Object, void (*kFree)(Object*)>
using Owned = std::unique_ptr<Object, Freeing<Object, kFree>>;
using Xml = Owned<xmlDoc, xmlFreeDoc>;

Xml parse(const std::string& path) {
    return Xml(::xmlReadFile(path.c_str(), nullptr, 0));
}

std::string textOf(xmlChar* text) {
    std::string copy = text == nullptr ? "" : reinterpret_cast<char*>(text);
    ::xmlFree(text);
    return copy;
}

const xmlChar* toXml(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

std::vector<std::filesystem::path> documentsIn(const std::string& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        if (file.path().extension() == ".xml" && file.path().filename() != kFaulty) {
            paths.push_back(file.path());
        }
    }
    return paths;
}

class SchemaTest : public StoreTest {
  protected:
    /** A document's errors, each as "LINE: MESSAGE". */
    std::vector<std::string> validate(const std::string& path) {
        const Owned<xmlSchemaValidCtxt, xmlSchemaFreeValidCtxt> context(
                ::xmlSchemaNewValidCtxt(mCompiled.get()));
        std::vector<std::string> errors;
        const xmlStructuredErrorFunc collect = [](void* to, auto error) {
            const std::string line = std::to_string(error->line) + ": " + error->message;
            static_cast<std::vector<std::string>*>(to)->push_back(line);
        };
        ::xmlSchemaSetValidStructuredErrors(context.get(), collect, &errors);
        const int status = ::xmlSchemaValidateDoc(context.get(), parse(path).get());
        EXPECT_EQ(status != 0, !errors.empty());
        return errors;
    }

    /** The texts of the schema's nodes at an XPath, with whitespace normalised. */
    std::vector<std::string> query(const std::string& path) {
        const Owned<xmlXPathContext, xmlXPathFreeContext> context(
                ::xmlXPathNewContext(mSource.get()));
        ::xmlXPathRegisterNs(context.get(), toXml("xs"), toXml("http://www.w3.org/2001/XMLSchema"));
        const Owned<xmlXPathObject, xmlXPathFreeObject> result(
                ::xmlXPathEval(toXml(path), context.get()));
        std::vector<std::string> texts;
        const xmlNodeSet* const nodes = result->nodesetval;
        for (int i = 0; nodes != nullptr && i < nodes->nodeNr; ++i) {
            texts.push_back(textOf(::xmlNodeGetContent(nodes->nodeTab[i])));
        }
        return texts;
    }

    /** The XPath of a parameter in the schema, or of all parameters. */
    static std::string parameterPath(const std::string& name = "") {
        return "//xs:group[contains(@name, 'Parameters')]/*/xs:element" +
               (name.empty() ? "" : "[@name = '" + name + "']");
    }

    Xml mSource = parse(ORMEL_SCHEMA);
    Owned<xmlSchemaParserCtxt, xmlSchemaFreeParserCtxt> mParser{
            ::xmlSchemaNewParserCtxt(ORMEL_SCHEMA)};
    Owned<xmlSchema, xmlSchemaFree> mCompiled{::xmlSchemaParse(mParser.get())};
};

TEST_F(SchemaTest, AcceptsDocumentsThatAreReadEntirely) {
    for (const std::string folder : {ORMEL_EXAMPLES, ORMEL_SCHEMA_DOCUMENTS "/accept"}) {
        for (const auto& path : documentsIn(folder)) {
            EXPECT_THAT(validate(path), IsEmpty()) << path;
        }
    }
    EXPECT_THAT(validate(ORMEL_EXAMPLES "/" + kFaulty), Not(IsEmpty()));
}

// Each document's first comment has the line of its fault and part of the expected message.
TEST_F(SchemaTest, RejectsEachKindOfFault) {
    const auto paths = documentsIn(ORMEL_SCHEMA_DOCUMENTS "/reject");
    EXPECT_THAT(paths, Not(IsEmpty()));
    for (const auto& path : paths) {
        SCOPED_TRACE(path.filename());
        std::string head;
        std::getline(std::ifstream(path), head);
        std::smatch expected;
        ASSERT_TRUE(std::regex_match(head, expected, std::regex("<!-- (\\d+): (.*) -->")));
        const auto errors = validate(path);
        ASSERT_THAT(errors, Not(IsEmpty()));
        EXPECT_THAT(errors[0], ::testing::StartsWith(expected.str(1) + ": "));
        EXPECT_THAT(errors[0], HasSubstr(expected.str(2)));
    }
}

TEST_F(SchemaTest, HasTheLibrarysParameters) {
    const std::pair<const char*, ParameterOwner> sections[] = {
            {"profileParameters", ParameterOwner::PROFILE},
            {"endpointParameters", ParameterOwner::PROFILE_ENDPOINT},
            {"tuningParameters", ParameterOwner::TUNING},
    };
    for (const auto& [group, owner] : sections) {
        Names elements;
        for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
            if (parametersOf(owner).count(setter->getParams().front()) != 0) {
                elements.insert(setter->getNodeName());
            }
        }
        EXPECT_THAT(query("//xs:group[@name = '" + std::string(group) + "']/*/xs:element/@name"),
                    ::testing::UnorderedElementsAreArray(elements));
    }
}

/** The values that a setter reads from an element that could be a row, a number or neither. */
std::vector<int> readOf(ValueSetter& setter) {
    TagIterator iterator;
    iterator.init("<r> <" + setter.getNodeName() + " value='1,2' b='3'/></r>", true);
    iterator.next();
    GeqPreset values(0);
    setter.set(values, iterator);
    return values.getValues()[setter.getParams().front()];
}

TEST_F(SchemaTest, HasTheLibrarysForms) {
    const auto expectAttributes = [this](const std::string& type, const auto& names) {
        EXPECT_THAT(query("//xs:complexType[@name = '" + type +
                          "']//xs:attribute[@type != "
                          "'xs:string']/@name"),
                    ::testing::ElementsAreArray(names.begin(), names.end()));
    };
    expectAttributes("frequencyRange", VirtualBassValueSetter::kAttrNames);
    expectAttributes("ieqBands", IeqValueSetter::kAttrNames);
    expectAttributes("geqBands", GeqValueSetter::kAttrNames);
    expectAttributes("optimizerBands", AudioOptimizerValueSetter::kAttrNames);
    expectAttributes("regulatorBands", RegulatorTuningValueSetter::kAttrNames);

    const auto expectValues = [this](const std::string& type, const auto& names) {
        EXPECT_THAT(query("//xs:simpleType[@name = '" + type + "']//xs:enumeration/@value"),
                    ::testing::ElementsAreArray(std::begin(names), std::end(names)));
    };
    expectValues("endpointText", kEndpointNames);
    expectValues("portText", kPortNames);
    expectValues("presetName", kIeqPresetNames);

    for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
        const auto types = query(parameterPath(setter->getNodeName()) + "/@type");
        const std::vector<int> read = readOf(*setter);
        for (const std::string& type : types) {
            const bool isNumber = type == "number" || type == "switch";
            EXPECT_EQ(type == "row", read == std::vector<int>({1, 2})) << setter->getNodeName();
            EXPECT_EQ(isNumber, read == std::vector<int>{1}) << setter->getNodeName();
        }
    }
}

/** Flips every flag and raises every number in an element and all its descendants. */
void alter(xmlNode* element) {
    static const std::regex number("-?\\d+");
    for (xmlAttr* attribute = element->properties; attribute != nullptr;
         attribute = attribute->next) {
        const std::string old = textOf(::xmlNodeGetContent(attribute->children));
        std::string altered = old == "true" ? "false" : old == "false" ? "true" : "";
        for (std::sregex_iterator at(old.begin(), old.end(), number), end; at != end; ++at) {
            altered += std::to_string(std::stoi(at->str()) + 1) + " ";
        }
        ::xmlSetProp(element, attribute->name, toXml(altered));
    }
    for (xmlNode* child = ::xmlFirstElementChild(element); child != nullptr;
         child = ::xmlNextElementSibling(child)) {
        alter(child);
    }
}

void alterAll(xmlNode* parent, const std::string& name) {
    for (xmlNode* child = ::xmlFirstElementChild(parent); child != nullptr;
         child = ::xmlNextElementSibling(child)) {
        if (name == reinterpret_cast<const char*>(child->name)) {
            alter(child);
        } else {
            alterAll(child, name);
        }
    }
}

/** A list entry: list, device and code; values. */
using Entry = std::pair<std::array<std::string, 3>, std::vector<int32_t>>;

std::set<Entry> entriesOf(xmlDoc* document) {
    xmlChar* text = nullptr;
    int size = 0;
    ::xmlDocDumpMemory(document, &text, &size);
    SpatializerParamArray array;
    array.loadSpatializerXMLFile(TempFile(textOf(text)).path());
    std::set<Entry> entries;
    const auto add = [&entries](const std::string& list, const std::vector<int32_t>& words) {
        for (auto at = words.begin() + 2; at < words.end(); at += 3 + at[2]) {
            entries.insert(
                    {{list, std::to_string(at[0]), lettersOf(at[1])}, {at + 3, at + 3 + at[2]}});
        }
    };
    for (int profile = 0; profile < 4; ++profile) {
        add(std::to_string(profile), array.getXMLProfileParams(profile));
    }
    for (const char* const device : {"default_internal_speaker", "default_headphone"}) {
        add(device, array.getXMLTuningParams(device));
    }
    return entries;
}

/** The codes of the entries that change if an example's elements with this name change. */
Names codesOf(const std::string& name, const std::string& example) {
    const Xml document = parse(example);
    const std::set<Entry> before = entriesOf(document.get());
    alterAll(::xmlDocGetRootElement(document.get()), name);
    const std::set<Entry> after = entriesOf(document.get());
    std::vector<Entry> changed;
    std::set_symmetric_difference(before.begin(), before.end(), after.begin(), after.end(),
                                  std::back_inserter(changed));
    Names codes;
    for (const auto& [key, values] : changed) {
        codes.insert(key[2]);
    }
    return codes;
}

TEST_F(SchemaTest, NamesTheEffectParametersOfEachElement) {
    for (const std::string& name : query(parameterPath() + "/@name")) {
        SCOPED_TRACE(name);
        const auto effect = query(parameterPath(name) + "//xs:documentation[@source = 'effect']");
        ASSERT_THAT(effect, SizeIs(1));

        Names codes = codesOf(name, ORMEL_EXAMPLES "/tablet-quad.xml");
        if (codes.empty()) {
            codes = codesOf(name, ORMEL_EXAMPLES "/phone-stereo.xml");
        }
        static const std::regex code("\\b[a-z]{2,4}\\b");
        EXPECT_EQ(Names(std::sregex_token_iterator(effect[0].begin(), effect[0].end(), code), {}),
                  codes);
    }
}

}  // namespace
}  // namespace ormel::test
