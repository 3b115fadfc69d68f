// What the tools know about the elements of a document.
#include <gtest/gtest.h>

#include <sstream>

#include "document/ReadTrace.h"

namespace ormel::tools {
namespace {

// For each element: name, line, parent, one past its last descendant's number, nodes before it and
// in it.
std::string outlineOf(const std::string& text) {
    const XmlErrorScope heldBack;
    const XmlElements elements(text);
    std::ostringstream out;
    for (size_t i = 0; elements.isReadable() && i < elements.size(); ++i) {
        out << elements.name(i) << ':' << elements.line(i) << ' ' << elements.parent(i) << '-'
            << elements.end(i) << ' ' << elements.nodesBefore(i) << '/' << elements.nodes(i) << ' ';
    }
    return out.str();
}

std::string inUtf16(const std::string& text) {
    std::string wide = "\xff\xfe";
    for (const char letter : text) {
        wide += {letter, '\0'};
    }
    return wide;
}

TEST(XmlElements, HavePositionsAndLines) {
    const std::string longTag = "<r\n x='" + std::string(70000, 'y') + ">'\n><a/></r>";
    const std::pair<std::string, std::string> documents[] = {
            {"<r/>", "r:1 0-1 0/0 "},
            {"<r><a></a><b/></r>", "r:1 0-3 0/2 a:1 0-2 0/0 b:1 0-3 1/0 "},
            {"<!-- \n -->\n<r\n>\n<a\n x='1'\n><b/>\n</a> <a/></r>",
             "r:3 0-4 0/4 a:5 0-3 1/2 b:7 1-3 0/0 a:8 0-4 3/0 "},
            // Adjacent texts are one node, as are adjacent CDATA sections; references are nodes.
            {"<!DOCTYPE r [<!ENTITY e '<z/>'>]>\n<r>a&#66;&lt;c<![CDATA[d]]><![CDATA[e]]>\n<a/>&e;f"
             "<?p?><!----><b/></r>",
             "r:2 0-3 0/9 a:3 0-2 3/0 b:3 0-3 8/0 "},
            {longTag, "r:1 0-2 0/1 a:3 0-2 0/0 "},
            {inUtf16("<r\n>\n <a/></r>"), "r:1 0-2 0/2 a:3 0-2 1/0 "},
            {"<r>", ""}};
    for (const auto& [text, outline] : documents) {
        EXPECT_EQ(outlineOf(text), outline) << text.substr(0, 100);
    }
}

// For each element: what it was read as, and whether it was named, entered or found childless.
std::string readingOf(const std::string& text) {
    const XmlElements elements(text);
    const ReadTrace trace("document", text, elements);
    std::string out;
    for (const ReadElement& element : trace.getElements()) {
        const bool isSection = element.as == ReadElement::As::SECTION;
        out += isSection ? rowOf(element.kind).name
                         : std::string(1, "-sPBR"[static_cast<int>(element.as)]);
        out += std::string(element.isNamed ? "n" : "") + (element.isEntered ? "e" : "") +
               (element.isChildless ? "c" : "") + " ";
    }
    return out;
}

TEST(ReadTrace, FindsBandsAndRowsWhereTheReaderLooks) {
    const std::pair<const char*, const char*> documents[] = {
            {"<r> <x/></r>", "- -n "},
            {"<r> <tuning> <d> <audio-optimizer-bands> <band/> <band/> </audio-optimizer-bands>"
             "</d> <e/> </tuning> </r>",
             "- tuningne -ne Pne Bn Bn - "},
            {"<r> <tuning> <d> <audio-optimizer-bands><band/><band/></audio-optimizer-bands>"
             "<regulator-tuning/> <x/> </d> </tuning> </r>",
             "- tuningne -ne Pne - Bn Bnc Bn "},
            {"<r> <tuning> <d> <output-mode> <m> <row/> <row/> </m> </output-mode> <output-mode>"
             "<!----><m/> </output-mode> <output-mode/> </d> </tuning> </r>",
             "- tuningne -ne Pne -e Rn Rn Pne - Pnc "},
            {"<r> <preset type='ieq'> <d> <b> <band_ieq/> <band_ieq/> <x/> <band_ieq/> </b> </d>"
             "</preset> <preset type='geq'> <d> <b> <any/> </b> </d> </preset> <preset/> </r>",
             "- presetne -e -e Bn Bn -n - presetne -e -e Bn presetn "}};
    for (const auto& [text, reading] : documents) {
        EXPECT_EQ(readingOf(text), reading) << text;
    }
}

// For each parameter: the line that gives its value, in the first object of a kind.
TEST(ReadTrace, FindsTheLineThatGaveAValue) {
    const std::string text =
            "<r>\n<format_version major='3' minor='2' maintenance='2'/>\n"
            "<preset id='off' type='ieq'>\n<d>\n<b>\n<band_ieq/>\n</b>\n</d>\n</preset>\n"
            "<profile>\n<ieq-enable value='1'/>\n<peak-value/>\n<endpoint_type id='speaker'>\n"
            "<dialog-enhancer-enable/>\n<ieq-enable/>\n<virtualizer-start-band/>\n<peak-value/>\n"
            "<peak-value/>\n</endpoint_type>\n<ieq-enable/>\n</profile>\n</r>";
    const XmlElements elements(text);
    const ReadTrace trace("document", text, elements);
    const DeviceData& data = trace.getDocument();
    const ParameterValues& preset = **data.getIeqPresets().begin();
    const ParameterValues& profile = **data.getProfiles().begin();
    const ParameterValues& endpoint = **data.getProfileEndpoints().begin();
    EXPECT_EQ(trace.lineOf(&endpoint), 13);
    const std::tuple<const ParameterValues*, Parameter, long> values[] = {
            {&preset, IEQ_TARGET, 5},
            {&profile, PEAK_VALUE, 12},
            {&profile, IEQ_ENABLE, 0},
            {&endpoint, PEAK_VALUE, 18},
            {&endpoint, DIALOG_ENHANCER_ENABLE, 14},
            {&endpoint, MI_DIALOG_ENHANCER_STEERING_ENABLE, 14},
            // Values from version rules.
            {&endpoint, IEQ_ENABLE, 11},
            {&endpoint, VIRTUALIZER_START_BAND, 0},
            {&endpoint, VIRTUAL_BASS_TYPE, 0}};
    for (const auto& [object, param, line] : values) {
        EXPECT_EQ(trace.lineOf(*object, param), line) << kParameterNames[param];
    }
}

}  // namespace
}  // namespace ormel::tools
