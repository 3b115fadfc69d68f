// What a document may cost: each price, and documents just below and above each bound.
#include <gtest/gtest.h>
#include <libxml/xmlmemory.h>
#include <ormel/SpatializerParamArray.h>
#include <ormel/TuningFileParser.h>

#include <cstdlib>
#include <cstring>

#include "support/Documents.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

std::string repeat(const std::string& text, size_t times) {
    std::string all;
    for (size_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

/** The cost of reading a document, not of loading it: "work payload holders". */
std::string costOf(const std::string& document) {
    TuningFileParser parser;
    EXPECT_EQ(parser.setTuningFile(document, true), 0) << document;
    const DocumentBudget& budget = parser.getBudget();
    return std::to_string(budget.getWork()) + ' ' + std::to_string(budget.getPayloadBytes()) + ' ' +
           std::to_string(budget.getHolderBytes());
}

std::string elementWith(int attributeCount) {
    std::string element = "<d";
    for (int i = 0; i < attributeCount; ++i) {
        element += " a" + std::to_string(i) + "=''";
    }
    return element + "/>";
}

TEST(DocumentBudget, ChargesForEachKindOfWork) {
    const LogCapture log;
    const struct {
        const char* what;
        std::string document;
        std::string cost;
    } cases[] = {
            {"between two passes, a push and a pop", "<d/>", "8 0 0"},
            {"in each pass a name of 4 bytes and a step", "<d> </d>", "24 0 0"},
            {"in each pass names of 4 and 1 bytes and two steps", "<d> <x/></d>", "34 0 0"},
            {"a profile: an object, its name and its mode", "<d> <profile/></d>", "329 4 256"},
            {"an attribute that is checked: 4", "<d> <profile a='1'/></d>", "333 4 256"},
            {"2 more bytes, read once and stored twice", "<d> <profile name='ab'/></d>",
             "335 8 256"},
            {"entity nodes of 4, and a stored text of 2 bytes",
             "<!DOCTYPE d [<!ENTITY e 'ab'>]><d x='&e;'/>", "18 2 0"},
            {"an empty entity costs its node", "<!DOCTYPE d [<!ENTITY e ''>]><d x='&e;&e;'/>",
             "16 0 0"},
            {"a message of 64 that quotes 1 byte, names of 23, 14 and 11, a text of 1",
             "<d> <authorized_technologies> <global_setting device_name='a'/>"
             "</authorized_technologies></d>",
             "193 0 0"},
            {"a thousand attributes that are never read", elementWith(1000), "8 0 0"},
            {"1600 attributes, compared with one another: 1600 * 1600 / 64", elementWith(1600),
             "40008 0 0"},
            {"after a document type, the node of each text too", "<!DOCTYPE d>" + elementWith(1600),
             "46408 0 0"},
    };
    for (const auto& [what, document, cost] : cases) {
        EXPECT_EQ(costOf(document), cost) << what;
    }
}

TEST(DocumentBudget, ChargesALoadForListsAndMaps) {
    const LogCapture log;
    const auto tuningOf = [](const std::string& devices) {
        return "<d> <tuning name='t'>" + devices +
               "<data> <peak-value value='1'/></data></tuning></d>";
    };
    const std::string device = " <device_id id='ab' endpoint_port='usb'/>";
    const std::string another = " <device_id id='cd' endpoint_port='usb'/>";
    SpatializerParamArray array;
    array.loadSpatializerXMLFile(TempFile(tuningOf(device)).path());
    const DocumentBudget one = array.getLoadBudget();
    array.loadSpatializerXMLFile(TempFile(tuningOf(device + another)).path());
    const DocumentBudget two = array.getLoadBudget();
    // An object, a map entry by its tuning, and five by its device.
    EXPECT_EQ(two.getHolderBytes() - one.getHolderBytes(), 128 + 64 + 5 * 64U);
    // The object's three names, the tuning's name, device and port three times each, and the words
    // of the list without its header.
    const size_t words = array.getXMLTuningParams("cd").size() - 2;
    EXPECT_EQ(two.getPayloadBytes() - one.getPayloadBytes(),
              2 + 3 + 1 + 1 + 3 * (2 + 3) + 4 * words);
}

/** Empty if the parser accepts the document, else the bound that it exceeds. */
std::string outcomeOf(const std::string& document) {
    TuningFileParser parser;
    const int status = parser.setTuningFile(document, true);
    EXPECT_EQ(status == 0, parser.getError().empty());
    return parser.getError().substr(0, parser.getError().find(':'));
}

TEST(DocumentBudget, RefusesOnlyDocumentsAboveABound) {
    constexpr char kWork[] = "too much work";
    constexpr char kPayload[] = "too many bytes of lists, values and names";
    constexpr char kHolders[] = "too many bytes of objects and map entries";
    const LogCapture log;

    // Blanks outside the root cost nothing, but raise the work bound, since the document is larger.
    const std::string profiles = "<d> " + repeat("<profile/>", 450) + "</d>";
    TuningFileParser unbounded;
    EXPECT_EQ(unbounded.setTuningFile(profiles + std::string(1 << 20, ' '), true), 0);
    const uint64_t work = unbounded.getBudget().getWork();
    const auto size = static_cast<size_t>((work - DocumentBudget::kWorkBase + 15) /
                                          DocumentBudget::kWorkPerByte);
    ASSERT_GT(size, profiles.size());
    EXPECT_EQ(outcomeOf(profiles + std::string(size - profiles.size(), ' ')), "");
    EXPECT_EQ(outcomeOf(profiles + std::string(size - profiles.size() - 1, ' ')), kWork);

    // Each number takes 4 bytes, including the id and the mode; a preset's name takes its length.
    const std::string row = repeat("1 ", (16 << 20) / sizeof(int32_t) - 3);
    const auto named = [&row](size_t nameSize) {
        return "<d> <profile> <drc-metadata v='" + row + "'/></profile> <preset type='ieq' name='" +
               std::string(nameSize, 'n') + "'> </preset></d>";
    };
    EXPECT_EQ(outcomeOf(named(8)), "");
    EXPECT_EQ(outcomeOf(named(9)), kPayload);

    // 16 times a text of 1 MiB.
    const std::string entities = "<!DOCTYPE d [<!ENTITY a '" + std::string(1 << 20, 'a') +
                                 "'><!ENTITY b 'b'>]><d x='" + repeat("&a;", 16);
    EXPECT_EQ(outcomeOf(entities + "'/>"), "");
    EXPECT_EQ(outcomeOf(entities + "&b;'/>").substr(0, 8), "too many");

    // An object takes 128 bytes, and its two lists 64 each.
    const std::string presets = "<d> " + repeat("<preset type='geq'> </preset>", 131072);
    EXPECT_EQ(outcomeOf(presets + "</d>"), "");
    EXPECT_EQ(outcomeOf(presets + "<preset type='geq'> </preset></d>"), kHolders);
}

TEST(DocumentBudget, LeavesTheParserUnchangedAfterARefusal) {
    const LogCapture log;
    TuningFileParser parser;
    const std::string head = "<d> <format_version major='3' minor='4' maintenance='";
    EXPECT_EQ(parser.setTuningFile(head + "0'/> <profile id='1' name='a'/></d>", true), 0);
    const DeviceData* const data = parser.getDeviceData();
    const std::string settings =
            "<authorized_technologies> <global_setting device_name='n' device_index='7' "
            "tuning_version='7' virtual_bass_process='7' altivo_game_system_gain='7'/>"
            "</authorized_technologies> <tool_version major='7'/>";
    const std::string expensive =
            head + "7'/> " + settings + repeat("<profile id='1' name='b'/>", 2000);
    EXPECT_EQ(parser.setTuningFile(expensive + "</d>", true), -22);
    EXPECT_EQ(parser.getDeviceData(), data);
    EXPECT_EQ(parser.getNumOfProfiles(), 1);
    EXPECT_EQ(parser.getProfileName(1), "a");
    EXPECT_EQ(parser.setTuningFile("<d> <profile> <endpoint_type/> </profile></d>", true), 0);
    const DeviceData& joined = *parser.getDeviceData();
    EXPECT_EQ(joined.getFormatVersion(), "3.4.0");
    EXPECT_EQ(joined.getToolVersion() + joined.getDeviceName(), "");
    EXPECT_EQ(joined.getDeviceIndex(), -1);
    EXPECT_EQ(joined.getTuningVersion(), -1);
    EXPECT_EQ(joined.getAltivoGameSystemGain(), 0);
    EXPECT_EQ(joined.getProfiles().size(), 2U);
    EXPECT_EQ((*joined.getProfileEndpoints().begin())->getValues().at(VIRTUAL_BASS_TYPE),
              Values{1});
}

int gAllocationsLeft = -1;

bool mayAllocate() {
    return gAllocationsLeft != 0 && (gAllocationsLeft < 0 || gAllocationsLeft-- > 0);
}

void* allocate(size_t size) {
    return mayAllocate() ? std::malloc(size) : nullptr;
}

void* reallocate(void* block, size_t size) {
    return mayAllocate() ? std::realloc(block, size) : nullptr;
}

char* duplicate(const char* text) {
    return mayAllocate() ? ::strdup(text) : nullptr;
}

TEST(DocumentBudget, RefusesADocumentIfLibxml2CannotAllocate) {
    ASSERT_EQ(xmlMemSetup(std::free, allocate, reallocate, duplicate), 0);
    const LogCapture log;
    const std::string body =
            "<d>&t;<profile id='1' name='a&amp;&e;b'><p:x xmlns:n='u' n:y='1'/> <?pi?><![CDATA[c]]>"
            "<peak-value value='1&e;'/> <!-- --> <drc-metadata v='&e;'/></profile></d>";
    const std::string plain =
            "<d> <profile id='1' name='a&amp;b'> <peak-value value='1'/></profile></d>";
    for (const std::string& document :
         {plain,
          "<!DOCTYPE d [<!ENTITY e '2&f;'><!ENTITY f '3'><!ENTITY t '<q>4</q>'>"
          "<!ATTLIST profile id CDATA '5' group CDATA 'mobility'>]>" +
                  body}) {
        const auto read = [&document](int allocations) {
            TuningFileParser parser;
            gAllocationsLeft = allocations;
            const int status = parser.setTuningFile(document, true);
            const bool isSpent = gAllocationsLeft == 0;
            gAllocationsLeft = -1;
            if (status != 0) {
                EXPECT_FALSE(parser.getError().empty());
                return std::pair(std::string("refused"), isSpent);
            }
            return std::pair((*parser.getDeviceData()->getProfiles().begin())->toString(), isSpent);
        };
        const std::string whole = read(-1).first;
        int allocations = 0;
        for (bool isSpent = true; isSpent; ++allocations) {
            const auto [outcome, allSpent] = read(allocations);
            isSpent = allSpent;
            EXPECT_THAT(outcome, ::testing::AnyOf("refused", whole)) << allocations;
        }
        EXPECT_GT(allocations, 10);
    }
}

}  // namespace
}  // namespace ormel::test
