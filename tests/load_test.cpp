// Loading tuning documents into the store.
#include <sched.h>
#include <sys/wait.h>

#include <filesystem>
#include <memory>
#include <sstream>

#include "support/Documents.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

/** The lines of a list that begin with @p beginning; if that is empty, all with values. */
std::string entriesIn(const Values& list, const std::string& beginning) {
    std::string found;
    std::istringstream lines(listText(list));
    for (std::string line; std::getline(lines, line);) {
        const bool hasValues = line.find(' ') != line.npos;
        const bool isFound = beginning.empty() ? hasValues : line.rfind(beginning, 0) == 0;
        found += isFound ? line + '\n' : "";
    }
    return found;
}

/** The speaker's output mode with the default mix matrix. */
Values defaultMode() {
    Values values = {1, 0, 1};
    values.insert(values.end(), SpatializerParamArray::kDefaultMixMatrix.begin(),
                  SpatializerParamArray::kDefaultMixMatrix.end());
    return values;
}

// The child process has its own root folder, so the test does not touch the machine's.
TEST(DefaultPath, IsLoadedByTheConstructor) {
    constexpr int kForbidden = 77;
    std::string root = ::testing::TempDir() + "ormel-root-XXXXXX";
    ASSERT_NE(::mkdtemp(root.data()), nullptr);
    std::filesystem::create_directories(root + "/vendor/etc/ormel");
    std::ofstream(root + "/vendor/etc/ormel/qsx-default-spatializer.xml") << document(
            "<tuning name='t'> <device_id id='phones' endpoint_port='headphone'/><data/></tuning>");
    const pid_t child = ::fork();
    if (child == 0) {
        if (::chroot(root.c_str()) != 0 &&
            (::unshare(CLONE_NEWUSER) != 0 || ::chroot(root.c_str()) != 0)) {
            ::_exit(kForbidden);
        }
        ::_exit(SpatializerParamArray().getAvailableTuningDevices(3) == "phones" ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    std::filesystem::remove_all(root);
    if (WIFEXITED(status) && WEXITSTATUS(status) == kForbidden) {
        GTEST_SKIP() << "the kernel does not allow another root folder";
    }
    EXPECT_EQ(status, 0);
}

using LoadTest = StoreTest;

/** What a load logs. */
std::string messagesOf(SpatializerParamArray& array, const std::string& path, LogCapture& log) {
    log.take();
    array.loadSpatializerXMLFile(path);
    return text(log.take());
}

TEST_F(LoadTest, MakesOneListOfAProfileWithItsEqualizersAndEndpoints) {
    load(document(R"(
<preset type='ieq' id='2'> <data> <b> <band_ieq frequency='500' target='9'/></b></data></preset>
<preset type='geq' id='1'> <data> <b> <band frequency='32' gain='10'/></b></data></preset>
<preset type='geq' id='0'> <data> <b> <band frequency='64' gain='20'/></b></data></preset>
<preset type='geq' id='1'> <data> <b> <band frequency='99' gain='-3'/></b></data></preset>
<profile id='1'> <headphone-virtualizer-mode value='2'/><drc-metadata value='1, 2'/>
  <endpoint_type id='headphone'> <include ieq_preset='2'/><dialog-enhancer-enable value='true'/>
    <virtualizer-enable value='true'/></endpoint_type>
  <endpoint_type id='other'> <include ieq_preset='2'/><volmax-boost value='1'/></endpoint_type>
  <endpoint_type id='speaker'> <include ieq_preset='2'/><dialog-enhancer-amount value='14'/>
    <virtualizer-enable value='true'/><virtual-bass-process-enable value='true'/></endpoint_type>
</profile>)"));
    // The profile's 12 entries, its 2 equalizers, and for each of 4 devices 28 and the preset's 2.
    std::string expected = entry(kAll, "list", {12 + 2 + 4 * (28 + 2)}) + R"(all:drcm 1 2
all:hvm 2
all:gebs 1 32 10
all:gebs 1 99 -3
)";
    for (const std::string device : {"8", "128", "16384"}) {
        for (const char* const line :
             {"ieid 2", "iebs 1 500 9", "mdee 1", "deon 1", "vbm 0", "vbon 1", "dom 1 1 2"}) {
            expected += device + ":" + line + '\n';
        }
    }
    expected += "2:ieid 2\n2:iebs 1 500 9\n2:dea 12\n2:vbm 3\n2:vbon 1\n" +
                entry(2, "dom", defaultMode());
    EXPECT_EQ(entriesIn(mArray.getXMLProfileParams(1), ""), expected);
    EXPECT_EQ(mArray.getTuningCount(), 0);
}

TEST_F(LoadTest, KeepsTheFirstOfProfilesOrPresetsWithOneId) {
    mArray.setProfileGeqGains(0, {42});
    load(document(R"(
<preset type='ieq' id='2'> <data> <b> <band_ieq frequency='200' target='2'/></b></data></preset>
<preset type='ieq' id='2'> <data> <b> <band_ieq frequency='300' target='3'/></b></data></preset>
<preset type='geq' id='0'> <data> <b> <band frequency='32' gain='1'/></b></data></preset>
<preset type='geq' id='1'> <data> <b> <band frequency='32' gain='2'/></b></data></preset>
<preset type='geq' id='1'> <data> <b> <band frequency='32' gain='4'/></b></data></preset>
<profile id='1'> <headphone-virtualizer-mode value='2'/>
  <endpoint_type id='speaker'> <include ieq_preset='2'/></endpoint_type></profile>
<profile id='1'> <headphone-virtualizer-mode value='3'/>
  <endpoint_type id='speaker'> <calibration-boost value='6'/></endpoint_type></profile>
<profile id='0'> </profile>)"));
    const Values& list = mArray.getXMLProfileParams(1);
    EXPECT_EQ(entriesIn(list, "all:hvm"), "all:hvm 2\n");
    EXPECT_EQ(entriesIn(list, "2:iebs"), "2:iebs 1 200 2\n2:iebs 1 200 2\n");
    // Endpoints belong to the id, so the first profile's list has the second one's endpoints too.
    EXPECT_EQ(entriesIn(list, "2:plb"), "2:plb\n2:plb 6\n");
    EXPECT_EQ(mArray.getTuningProfileCount(), 3);
    EXPECT_EQ(mArray.getProfileGeqGains(0), Values{42});
    EXPECT_EQ(mArray.getProfileGeqGains(1), Values{2});
}

// That may be a preset of another profile.
TEST_F(LoadTest, UsesThePresetSelectedBeforeIfAnEndpointsIsMissing) {
    const TempFile file(document(R"(
<preset type='ieq' id='1'> <data> <b> <band_ieq frequency='100' target='1'/></b></data></preset>
<preset type='ieq' id='2'> <data> <b> <band_ieq frequency='200' target='2'/></b></data></preset>
<profile id='0'> <endpoint_type id='headphone'> <include ieq_preset='7'/></endpoint_type>
  <endpoint_type id='speaker'> <include ieq_preset='2'/></endpoint_type></profile>
<profile id='1'> <endpoint_type id='speaker'> <include ieq_preset='9'/></endpoint_type>
  <endpoint_type id='other'> <include ieq_preset='1'/></endpoint_type>
  <endpoint_type id='headphone'> <include ieq_preset='8'/></endpoint_type></profile>
<profile id='0'> </profile><profile id='1'> </profile><profile id='0'> </profile>
<profile id='3'> <endpoint_type id='speaker'> <a/></endpoint_type></profile>)"));
    std::vector<int> counts;
    std::istringstream said(messagesOf(mArray, file.path(), log));
    for (std::string line; std::getline(said, line);) {
        if (line.rfind("D Array: Profile", 0) == 0) {
            counts.push_back(std::stoi(line.substr(line.find('=') + 1)));
        }
    }
    // For each of its devices, an endpoint gives 28 entries, and its preset 2 more.
    const Values lists[] = {mArray.getXMLProfileParams(0), mArray.getXMLProfileParams(1),
                            mArray.getXMLProfileParams(3)};
    EXPECT_EQ(entriesIn(lists[0], "all:list"), entry(kAll, "list", {12 + 4 * 28 + 2}));
    EXPECT_EQ(entriesIn(lists[1], "all:list"), entry(kAll, "list", {12 + 4 * (28 + 2)}));
    EXPECT_EQ(entriesIn(lists[2], "all:list"), entry(kAll, "list", {12 + 28 + 2}));
    // The list of a repeated profile uses the presets selected by then: three devices of profile 0
    // had none at first.
    const int first = lists[0][1], second = lists[1][1], last = lists[2][1];
    EXPECT_EQ(counts, (Values{first, second, first + 6, second, first + 6, last}));
    EXPECT_EQ(entriesIn(mArray.getXMLProfileParams(0), "8:ie"), "8:ieon\n8:iea\n");
    EXPECT_EQ(entriesIn(mArray.getXMLProfileParams(0), "2:iebs"), "2:iebs 1 200 2\n");
    EXPECT_EQ(entriesIn(mArray.getXMLProfileParams(1), "2:iebs"), "2:iebs 1 200 2\n");
    EXPECT_EQ(entriesIn(mArray.getXMLProfileParams(1), "8:iebs"), "8:iebs 1 100 1\n");
    // Profile 0 was repeated last, so its preset is the one selected last.
    EXPECT_EQ(entriesIn(mArray.getXMLProfileParams(3), "2:iebs"), "2:iebs 1 200 2\n");
    EXPECT_EQ(mArray.getTuningProfileCount(), 6);
}

TEST_F(LoadTest, TakesMixMatrixAndBassModeFromTheInternalSpeakersTuning) {
    const std::string own = "default_internal_speaker";
    const std::string mode = "<data> <virtual-bass-mode value='2'/></data>";
    const std::string four = tuning("name='a' output_channels='4'", own, mixMatrix("7, 8"));
    const std::string others = tuning("name='a' output_channels='4'", "x", mixMatrix("7, 8"));
    const std::string six = tuning("name='a' output_channels='6'", "x", mode);
    const std::string bare = tuning("name='b'", own, mode);
    const std::string lost = tuning("name='b'", own, "");
    const std::string none = entry(2, "dom", defaultMode());
    const std::string matrix = "2:dom 1 0 1 7 8\n";
    // Stress amounts start with the number of channels, which tells which tuning was stored.
    // clang-format off
    const struct { std::string tunings, outputMode, bassMode; int32_t channels, tuningCount; std::string stored; } cases[] = {
        {"",            none,   "2:vbm 3\n", 2, 0, ""},
        {four,          matrix, "2:vbm 3\n", 4, 1, "2:arsa 4\n"},
        {bare,          none,   "2:vbm 2\n", 0, 1, "2:arsa 0 0 0\n"},
        {others,        none,   "2:vbm 3\n", 2, 1, ""},
        {four + bare,   matrix, "2:vbm 3\n", 4, 2, "2:arsa 0 0 0\n"},
        {six + four,    none,   "2:vbm 2\n", 6, 2, "2:arsa 6\n"},
        {others + lost, none,   "2:vbm 3\n", 2, 1, ""},
    };
    // clang-format on
    for (const auto& [tunings, outputMode, bassMode, channels, tuningCount, stored] : cases) {
        SCOPED_TRACE(tunings);
        const TempFile file(document(
                "<profile id='0'> <endpoint_type id='speaker'> <virtualizer-enable value='1'/>"
                "<virtual-bass-process-enable value='1'/></endpoint_type></profile>" +
                tunings));
        SpatializerParamArray array;
        const std::string said = messagesOf(array, file.path(), log);
        const auto says = [&said](const char* what) { return said.find(what) != said.npos; };
        EXPECT_EQ(says("D Array: use the default mix matrix\n"), outputMode == none);
        EXPECT_EQ(says("D Array: use the default vb mode\n"), bassMode == "2:vbm 3\n");
        EXPECT_EQ(array.getOutputChannelCount(), channels);
        EXPECT_EQ(array.getTuningCount(), tuningCount);
        EXPECT_EQ(entriesIn(array.getXMLProfileParams(0), "2:dom"), outputMode);
        EXPECT_EQ(entriesIn(array.getXMLProfileParams(0), "2:vbm"), bassMode);
        EXPECT_EQ(array.isXMLTuningValid(own), !stored.empty());
        if (!stored.empty()) {
            EXPECT_EQ(entriesIn(array.getXMLTuningParams(own), "2:arsa"), stored);
        }
    }
}

TEST_F(LoadTest, AddsASecondDocumentToTheFirst) {
    const std::string own = "default_internal_speaker";
    const auto profile = [](int id, int mode) {
        return "<profile id='" + std::to_string(id) + "'> <headphone-virtualizer-mode value='" +
               std::to_string(mode) + "'/></profile>";
    };
    load(document(profile(0, 2) +
                  "<tuning name='t' output_channels='4'> <device_id id='d' "
                  "endpoint_port='usb'/><device_id id='" +
                  own + "' endpoint_port='internal_speaker'/>" + mixMatrix("7, 8") + "</tuning>"));
    load(document(profile(0, 3) + profile(1, 4) +
                  tuning("name='t' output_channels='6'", "d", mixMatrix("9"))));
    EXPECT_EQ(mArray.getTuningProfileCount(), 3);
    EXPECT_EQ(mArray.getTuningCount(), 3);
    EXPECT_EQ(mArray.getOutputChannelCount(), 4);
    EXPECT_EQ(entriesIn(mArray.getXMLProfileParams(0), "all:hvm"), "all:hvm 2\n");
    EXPECT_EQ(entriesIn(mArray.getXMLProfileParams(1), "all:hvm"), "all:hvm 4\n");
    EXPECT_EQ(entriesIn(mArray.getXMLTuningParams(own), "2:arsa"), "2:arsa 4\n");
    EXPECT_EQ(entriesIn(mArray.getXMLTuningParams("d"), "2:arsa"), "2:arsa 6\n");
    EXPECT_EQ(mArray.getXMLTuningMixMatrix(own), (Values{7, 8}));
    EXPECT_EQ(mArray.getXMLTuningMixMatrix("d"), Values{9});
    EXPECT_EQ(mArray.getAvailableTuningDevices(0), "d " + own);
    EXPECT_EQ(mArray.getAvailableTuningDevices(5), "");
}

TEST_F(LoadTest, AddressesATuningToTheDeviceOfItsPort) {
    // clang-format off
    const struct { std::string name; int32_t device; std::string endpoint; } ports[] = {
        {"internal_speaker", 2,      "0"},
        {"hdmi",             0,      "2"},
        {"miracast",         0,      "2"},
        {"headphone",        8,      "1"},
        {"bluetooth",        0x80,   "1"},
        {"usb",              0x4000, "1"},
        {"other",            0,      "2"},
        {"nowhere",          0,      "0"},
    };
    // clang-format on
    std::string text =
            "<tuning name='t' endpoint_type='other' orientation='3'> "
            "<device_id id='nowhere' endpoint_port='replaced'/>";
    for (const auto& port : ports) {
        text += "<device_id id='" + port.name + "' endpoint_port='" + port.name + "'/>";
    }
    const TempFile file(document(text + R"(<data> <bass-enhancer-boost value='7'/>
  <regulator-stress-amount value='5, 6, 7'/><output-mode> <m> <row v='1, 2'/></m></output-mode>
</data></tuning>)"));
    const std::string said = messagesOf(mArray, file.path(), log);
    for (const auto& [name, device, endpoint] : ports) {
        SCOPED_TRACE(name);
        // Without output channels, no optimizer bands and two stress amounts are sent.
        EXPECT_EQ(entriesIn(mArray.getXMLTuningParams(name), ""),
                  "all:list 36\n" + entry(device, "beb", {7}) + entry(device, "arsa", {0, 5, 6}) +
                          entry(device, "arbs", {0}));
        EXPECT_EQ(mArray.getXMLTuningMixMatrix(name), (Values{1, 2}));
        EXPECT_NE(said.find("Tuning id(" + name + "): endpoint " + endpoint +
                            ", orientation 3, mix matrices length 2\n"),
                  std::string::npos);
    }
    EXPECT_EQ(mArray.getTuningCount(), 9);
    for (int port = 0; port < 7; ++port) {
        EXPECT_EQ(mArray.getAvailableTuningDevices(port), kPortNames[port]);
    }
    // The lookups added the names that they did not find.
    EXPECT_EQ(kPortNameToEndpoint.count("nowhere"), 1U);
    EXPECT_EQ(kPortNameToEndpoint.count("replaced"), 1U);
    EXPECT_EQ(kPortNameToAndroidDevice.count("hdmi"), 1U);
}

TEST_F(LoadTest, LogsWhatItLoadsAndWhatIsMissing) {
    const TempFile file(document(R"(
<profile id='4'> <endpoint_type id='speaker'> <a/></endpoint_type></profile>
<tuning name='t' orientation='3'> <device_id id='default_headphone' endpoint_port='headphone'/><b/>
</tuning>
<tuning name='gone'> <device_id id='x' endpoint_port='usb'/></tuning>
<profile id='5'> </profile>)"));
    const std::string messages = messagesOf(mArray, file.path(), log);
    const std::string profileCount = std::to_string(mArray.getXMLProfileParams(4)[1]);
    const auto& tuningList = mArray.getXMLTuningParams("default_headphone");
    EXPECT_EQ(messages, "D Array: loadSpatializerXMLFile(" + file.path() + R"()
D TuningFileParser: xml version: 3.4.0
D TuningFileParser: parseProfileEndpoint(): speaker, parse the include ieq preset
E TuningFileParser: There is no <data> in Tuning section
D Array: use the default mix matrix
D Array: use the default vb mode
D Array: Profile 4, numParameters = )" +
                                profileCount + R"(
D Array: Tuning id(default_headphone), tuningName(t) numParameters = )" +
                                std::to_string(tuningList[1]) +
                                R"(
D Array: Tuning id(default_headphone): endpoint 1, orientation 3, mix matrices length 0
W Array: Tuning id(x): no tuning gone
E Array: loadSpatializerXMLFile() default tuningDevice default_internal_speaker )"
                                R"(is not available for port internal_speaker.
E Array: loadSpatializerXMLFile() default tuningDevice default_bluetooth )"
                                R"(is not available for port bluetooth.
E Array: loadSpatializerXMLFile() default tuningDevice default_usb )"
                                R"(is not available for port usb.
)");
    EXPECT_FALSE(mArray.isXMLTuningValid("x"));
    EXPECT_EQ(mArray.getAvailableTuningDevices(5), "");
    EXPECT_EQ(mArray.getSelectedTuningDevice(5), "default_usb");
}

/** The state that a load can change: the first profiles, the ports, their selected devices. */
std::string stateOf(SpatializerParamArray& array) {
    std::string state;
    const auto put = [&state](const Values& values) { state += entry(0, "", values); };
    put({array.getTuningProfileCount(), array.getTuningCount(), array.getOutputChannelCount()});
    for (int profile = 0; profile < 4; ++profile) {
        put(array.isXMLProfileValid(profile) ? array.getXMLProfileParams(profile) : Values{-1});
        put(array.getProfileGeqGains(profile));
    }
    for (int port : kSupportedPorts) {
        const std::string device = array.getSelectedTuningDevice(port);
        state += array.getAvailableTuningDevices(port) + device;
        put(array.isXMLTuningValid(device) ? array.getXMLTuningParams(device) : Values{-1});
        put(array.getXMLTuningMixMatrix(device));
    }
    return state;
}

TEST_F(LoadTest, ChangesNothingIfItFails) {
    SpatializerParamArray fresh;
    mArray.loadSpatializerXMLFile(ORMEL_EXAMPLES "/tablet-quad.xml");
    const std::pair<SpatializerParamArray*, std::string> arrays[] = {{&fresh, stateOf(fresh)},
                                                                     {&mArray, stateOf(mArray)}};
    EXPECT_NE(arrays[0].second, arrays[1].second);
    for (const auto& [array, state] : arrays) {
        for (const char* const rest : {"<d>", "</d>", "<d/>"}) {
            const TempFile file(document("<profile id='7'> </profile>") + rest);
            EXPECT_EQ(messagesOf(*array, file.path(), log),
                      "D Array: loadSpatializerXMLFile(" + file.path() +
                              ")\nE TagIterator: fail to call xmlReadFile,  63\n"
                              "E Array: Spatializer Tuning XML parses error!\n");
        }
        array->loadSpatializerXMLFile("/nonexistent/document.xml");
        EXPECT_EQ(stateOf(*array), state);
        EXPECT_FALSE(array->isXMLProfileValid(7));
    }
}

TEST_F(LoadTest, LoadsTextsIntoACallersOwnStore) {
    using Outcome = SpatializerParamArray::LoadOutcome;
    SpatializerParamArray store{SpatializerParamArray::Empty()};
    EXPECT_TRUE(log.take().empty());
    EXPECT_EQ(store.getLoadOutcome(), Outcome::NOT_READ);
    std::string endless;
    for (int i = 0; i < 1100; ++i) {
        endless += "<tuning/>";
    }
    const std::pair<std::string, Outcome> texts[] = {
            {document("<profile id='7'> </profile>"), Outcome::LOADED},
            {"<d>", Outcome::NOT_READ},
            {"", Outcome::NOT_READ},
            {document(endless), Outcome::OVER_BOUND}};
    for (const auto& [text, outcome] : texts) {
        EXPECT_EQ(store.loadSpatializerXMLText(text), outcome) << text.substr(0, 50);
        EXPECT_EQ(store.getLoadOutcome(), outcome);
        EXPECT_EQ(store.getLoadError().empty(), outcome == Outcome::LOADED);
        EXPECT_TRUE(store.isXMLProfileValid(7));
    }
    EXPECT_FALSE(mArray.isXMLProfileValid(7));
}

TEST_F(LoadTest, MakesTheSameListsForAnyHeapLayout) {
    const std::string path = ORMEL_EXAMPLES "/phone-multi-tuning.xml";
    mArray.loadSpatializerXMLFile(path);
    const std::string expected = stateOf(mArray);
    ASSERT_TRUE(mArray.isXMLTuningValid("default_usb"));
    std::vector<std::unique_ptr<char[]>> blocks(20000);
    uint32_t random = 1;
    for (int round = 0; round < 8; ++round) {
        // Holes of many sizes, at different places in each round.
        for (size_t i = 0; i < 3 * blocks.size(); ++i) {
            random = random * 1664525 + 1013904223;
            auto& block = blocks[(random >> 8) % blocks.size()];
            block = i % 3 == 0 ? nullptr : std::make_unique<char[]>(random % 701 + 1);
        }
        SpatializerParamArray array;
        array.loadSpatializerXMLFile(path);
        EXPECT_EQ(stateOf(array), expected);
    }
}

}  // namespace
}  // namespace ormel::test
