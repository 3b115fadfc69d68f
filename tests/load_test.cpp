#include <sched.h>
#include <sys/wait.h>

#include <filesystem>
#include <memory>
#include <sstream>

#include "support/Documents.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

// What a document's objects become, in order, but for what needs a channel count or a switch.
constexpr char kProfile[] = "mdle miee msce mave dvme drcm rvsa rvse hvm hvrc hlra sdfa";
constexpr char kEndpoint[] =
        "geon ieon iea mdee mvbe beon plb dea deon ded ngon dsb vbm vbon vmb dvla dvle dvli dvlo "
        "dom svsb vssd dplp hpon hptw hpat hpaa hpar";
constexpr char kTuning[] =
        "aoon beb becf bew arsa arbs ards aron arde arod artp rsse vbsf vbmf vbog vbsg vbhg vbbg "
        "vbct vbhm vbhb vbmx vbrg dvlc dvmc dhfm dfsa dsa dhsa drsa drha ceon bmde svm avsb svrc";

/** One entry per code for a device, without values but for those given. */
std::string rows(int32_t device, const char* codes, std::map<std::string, Values> values) {
    std::string lines;
    std::istringstream words(codes);
    for (std::string code; words >> code;) {
        lines += entry(device, code, values[code]);
    }
    return lines;
}

/** The entries of a list whose lines begin in a way. */
std::string entriesIn(const Values& list, const std::string& beginning) {
    std::string found;
    std::istringstream lines(listText(list));
    for (std::string line; std::getline(lines, line);) {
        found += line.rfind(beginning, 0) == 0 ? line + '\n' : "";
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

// The child sees a root folder of its own, so that nothing of the machine's is touched.
TEST(DefaultPath, AStoreBeginsWithTheDevicesDocument) {
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
        GTEST_SKIP() << "the kernel grants no root folder of one's own";
    }
    EXPECT_EQ(status, 0);
}

using LoadTest = StoreTest;

/** What a load says. */
std::string messagesOf(SpatializerParamArray& array, const std::string& path, LogCapture& log) {
    log.take();
    array.loadSpatializerXMLFile(path);
    return text(log.take());
}

TEST_F(LoadTest, AProfileBecomesOneListOfItsPartsInOrder) {
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
    // Of the profile, of its graphic equalizers, and of four devices with a preset each.
    std::string expected = entry(kAll, "list", {12 + 2 + 4 * (2 + 28)}) +
                           rows(kAll, kProfile, {{"hvm", {2}}, {"drcm", {1, 2}}}) +
                           "all:gebs 1 32 10\nall:gebs 1 99 -3\n";
    for (const int32_t device : {8, 0x80, 0x4000, 2}) {
        std::map<std::string, Values> values = {
                {"mdee", {1}}, {"deon", {1}}, {"vbm", {0}}, {"vbon", {1}}, {"dom", {1, 1, 2}}};
        if (device == 2) {
            values = {{"dea", {12}}, {"vbm", {3}}, {"vbon", {1}}, {"dom", defaultMode()}};
        }
        expected += entry(device, "ieid", {2}) + entry(device, "iebs", {1, 500, 9}) +
                    rows(device, kEndpoint, values);
    }
    EXPECT_EQ(listText(mArray.getXMLProfileParams(1)), expected);
    EXPECT_EQ(mArray.getTuningCount(), 0);
}

TEST_F(LoadTest, TheFirstOfWhatRepeatsStandsAndMissingPresetsAreTheLastOnes) {
    mArray.setProfileGeqGains(0, {42});
    const TempFile file(document(R"(
<preset type='ieq' id='1'> <data> <b> <band_ieq frequency='100' target='1'/></b></data></preset>
<preset type='ieq' id='2'> <data> <b> <band_ieq frequency='200' target='2'/></b></data></preset>
<preset type='ieq' id='2'> <data> <b> <band_ieq frequency='300' target='3'/></b></data></preset>
<preset type='geq' id='0'> <data> <b> <band frequency='32' gain='1'/></b></data></preset>
<preset type='geq' id='1'> <data> <b> <band frequency='32' gain='2'/></b></data></preset>
<preset type='geq' id='1'> <data> <b> <band frequency='32' gain='4'/></b></data></preset>
<profile id='0'> <endpoint_type id='headphone'> <include ieq_preset='7'/></endpoint_type>
  <endpoint_type id='speaker'> <include ieq_preset='2'/></endpoint_type></profile>
<profile id='1'> <headphone-virtualizer-mode value='2'/>
  <endpoint_type id='speaker'> <include ieq_preset='9'/></endpoint_type>
  <endpoint_type id='other'> <include ieq_preset='2'/></endpoint_type>
  <endpoint_type id='other'> <include ieq_preset='1'/></endpoint_type>
  <endpoint_type id='headphone'> <include ieq_preset='8'/></endpoint_type></profile>
<profile id='1'> <headphone-virtualizer-mode value='3'/>
  <endpoint_type id='speaker'> <calibration-boost value='6'/></endpoint_type></profile>
<profile id='0'> </profile><profile id='1'> </profile>
<profile id='3'> <endpoint_type id='speaker'> <a/></endpoint_type></profile>)"));
    // A profile's 12, its graphic equalizers, and 30 per device, 2 fewer while there is no preset.
    std::string counts;
    std::istringstream said(messagesOf(mArray, file.path(), log));
    for (std::string line; std::getline(said, line);) {
        counts += line.rfind("Array 3 Profile", 0) == 0 ? line.substr(16) + '\n' : "";
    }
    EXPECT_EQ(counts,
              "0, numParameters = 127\n1, numParameters = 164\n1, numParameters = 164\n"
              "0, numParameters = 133\n1, numParameters = 164\n3, numParameters = 42\n");
    // Endpoints belong to the profile's id, and so those of the second one to the first as well.
    const Values& list = mArray.getXMLProfileParams(1);
    EXPECT_EQ(entriesIn(mArray.getXMLProfileParams(0), "8:ie"), "8:ieon\n8:iea\n");
    EXPECT_EQ(entriesIn(mArray.getXMLProfileParams(0), "2:iebs"), "2:iebs 1 200 2\n");
    EXPECT_EQ(entriesIn(list, "2:iebs"), "2:iebs 1 200 2\n2:iebs 1 100 1\n");
    EXPECT_EQ(entriesIn(list, "8:iebs"), "8:iebs 1 100 1\n");
    EXPECT_EQ(entriesIn(mArray.getXMLProfileParams(3), "2:iebs"), "2:iebs 1 100 1\n");
    EXPECT_EQ(entriesIn(list, "2:plb"), "2:plb\n2:plb 6\n");
    EXPECT_EQ(entriesIn(list, "all:hvm"), "all:hvm 2\n");
    EXPECT_EQ(mArray.getTuningProfileCount(), 6);
    EXPECT_EQ(mArray.getProfileGeqGains(0), Values{42});
    EXPECT_EQ(mArray.getProfileGeqGains(1), Values{2});
}

TEST_F(LoadTest, TheInternalSpeakersTuningShapesEveryProfile) {
    const std::string own = "default_internal_speaker";
    const std::string mode = "<data> <virtual-bass-mode value='2'/></data>";
    const std::string four = tuning("name='a' output_channels='4'", own, mixMatrix("7, 8"));
    const std::string others = tuning("name='a' output_channels='4'", "x", mixMatrix("7, 8"));
    const std::string six = tuning("name='a' output_channels='6'", "x", mode);
    const std::string bare = tuning("name='b'", own, mode);
    const std::string lost = tuning("name='b'", own, "");
    const std::string none = entry(2, "dom", defaultMode());
    const std::string matrix = "2:dom 1 0 1 7 8\n";
    // Mode; channels and number of tunings; the list stored for the device, told by its channels.
    const std::tuple<std::string, std::string, std::string, Values, std::string> cases[] = {
            {"", none, "2:vbm 3\n", {2, 0}, ""},
            {four, matrix, "2:vbm 3\n", {4, 1}, "2:arsa 4\n"},
            {bare, none, "2:vbm 2\n", {0, 1}, "2:arsa 0 0 0\n"},
            {others, none, "2:vbm 3\n", {2, 1}, ""},
            {four + bare, matrix, "2:vbm 3\n", {4, 2}, "2:arsa 0 0 0\n"},
            {six + four, none, "2:vbm 2\n", {6, 2}, "2:arsa 6\n"},
            {others + lost, none, "2:vbm 3\n", {2, 1}, ""}};
    for (const auto& [tunings, outputMode, bassMode, counts, stored] : cases) {
        SCOPED_TRACE(tunings);
        const TempFile file(document(
                "<profile id='0'> <endpoint_type id='speaker'> <virtualizer-enable value='1'/>"
                "<virtual-bass-process-enable value='1'/></endpoint_type></profile>" +
                tunings));
        SpatializerParamArray array;
        const std::string said = messagesOf(array, file.path(), log);
        const auto says = [&said](const char* what) { return said.find(what) != said.npos; };
        EXPECT_EQ(says("Array 3 use the default mix matrix\n"), outputMode == none);
        EXPECT_EQ(says("Array 3 use the default vb mode\n"), bassMode == "2:vbm 3\n");
        EXPECT_EQ((Values{array.getOutputChannelCount(), array.getTuningCount()}), counts);
        EXPECT_EQ(entriesIn(array.getXMLProfileParams(0), "2:dom"), outputMode);
        EXPECT_EQ(entriesIn(array.getXMLProfileParams(0), "2:vbm"), bassMode);
        EXPECT_EQ(array.isXMLTuningValid(own), !stored.empty());
        EXPECT_TRUE(stored.empty() || entriesIn(array.getXMLTuningParams(own), "2:arsa") == stored);
    }
}

TEST_F(LoadTest, ASecondDocumentAddsToTheFirst) {
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
    EXPECT_EQ((Values{mArray.getTuningProfileCount(), mArray.getTuningCount()}), (Values{3, 3}));
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

TEST_F(LoadTest, ADeviceTuningBecomesAListForTheDeviceOfItsPort) {
    // By port, with one that is none at the end.
    const std::string ports[] = {"internal_speaker", "hdmi", "miracast", "headphone",
                                 "bluetooth",        "usb",  "other",    "nowhere"};
    const int32_t devices[] = {2, 0, 0, 8, 0x80, 0x4000, 0, 0};
    const char endpoints[] = "02211120";
    std::string text = "<tuning name='t' endpoint_type='other' orientation='3'> ";
    for (const std::string& port : ports) {
        text += "<device_id id='" + port + "' endpoint_port='" + port + "'/>";
    }
    const TempFile file(document(text + R"(<data> <bass-enhancer-boost value='7'/>
  <regulator-stress-amount value='5, 6, 7'/><output-mode> <m> <row v='1, 2'/></m></output-mode>
</data></tuning>)"));
    const std::string said = messagesOf(mArray, file.path(), log);
    for (int port = 0; port < 8; ++port) {
        const std::string& name = ports[port];
        SCOPED_TRACE(name);
        // No channels: no optimizer bands, and the stress amounts of two.
        EXPECT_EQ(listText(mArray.getXMLTuningParams(name)),
                  "all:list 36\n" + rows(devices[port], kTuning,
                                         {{"beb", {7}}, {"arsa", {0, 5, 6}}, {"arbs", {0}}}));
        EXPECT_EQ(mArray.getXMLTuningMixMatrix(name), (Values{1, 2}));
        EXPECT_EQ(mArray.getAvailableTuningDevices(port), port < 7 ? name : "");
        EXPECT_NE(said.find("Tuning id(" + name + "): endpoint " + endpoints[port] +
                            ", orientation 3, mix matrices length 2\n"),
                  std::string::npos);
    }
    EXPECT_EQ(mArray.getTuningCount(), 8);
    // The lookups leave what they did not find behind.
    EXPECT_EQ(kPortNameToEndpoint.count("nowhere"), 1U);
    EXPECT_EQ(kPortNameToAndroidDevice.count("hdmi"), 1U);
}

TEST_F(LoadTest, SaysWhatItDoes) {
    const TempFile file(document(R"(
<profile id='4'> <endpoint_type id='speaker'> <a/></endpoint_type></profile>
<tuning name='t' orientation='3'> <device_id id='default_headphone' endpoint_port='headphone'/><b/>
</tuning>
<tuning name='gone'> <device_id id='x' endpoint_port='usb'/></tuning>
<profile id='5'> </profile>)"));
    EXPECT_EQ(messagesOf(mArray, file.path(), log),
              "Array 3 loadSpatializerXMLFile(" + file.path() +
                      R"()
arser 3 xml version: 3.4.0
arser 3 parseProfileEndpoint(): speaker, parse the include ieq preset
arser 6 There is no <data> in Tuning section
Array 3 use the default mix matrix
Array 3 use the default vb mode
Array 3 Profile 4, numParameters = 40
Array 3 Tuning id(default_headphone), tuningName(t) numParameters = 36
Array 3 Tuning id(default_headphone): endpoint 1, orientation 3, mix matrices length 0
Array 5 Tuning id(x): no tuning gone
Array 6 loadSpatializerXMLFile() default tuningDevice default_internal_speaker )"
                      R"(is not available for port internal_speaker.
Array 6 loadSpatializerXMLFile() default tuningDevice default_bluetooth )"
                      R"(is not available for port bluetooth.
Array 6 loadSpatializerXMLFile() default tuningDevice default_usb is not available for port usb.
)");
    EXPECT_FALSE(mArray.isXMLTuningValid("x"));
    EXPECT_EQ(mArray.getAvailableTuningDevices(5), "");
    EXPECT_EQ(mArray.getSelectedTuningDevice(5), "default_usb");
}

/** All that a load can change, as far as the first profiles, the ports and their devices go. */
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

TEST_F(LoadTest, AFailedLoadChangesNothing) {
    SpatializerParamArray fresh;
    mArray.loadSpatializerXMLFile(ORMEL_EXAMPLES "/tablet-quad.xml");
    const std::pair<SpatializerParamArray*, std::string> arrays[] = {{&fresh, stateOf(fresh)},
                                                                     {&mArray, stateOf(mArray)}};
    EXPECT_NE(arrays[0].second, arrays[1].second);
    for (const auto& [array, state] : arrays) {
        for (const char* const rest : {"<d>", "</d>", "<d/>"}) {
            const TempFile file(document("<profile id='7'> </profile>") + rest);
            EXPECT_EQ(messagesOf(*array, file.path(), log),
                      "Array 3 loadSpatializerXMLFile(" + file.path() +
                              ")\nrator 6 fail to call xmlReadFile,  63\n"
                              "Array 6 Spatializer Tuning XML parses error!\n");
        }
        array->loadSpatializerXMLFile("/nonexistent/document.xml");
        EXPECT_EQ(stateOf(*array), state);
        EXPECT_FALSE(array->isXMLProfileValid(7));
    }
}

TEST_F(LoadTest, TheHeapDoesNotShowInTheLists) {
    const std::string path = ORMEL_EXAMPLES "/phone-multi-tuning.xml";
    mArray.loadSpatializerXMLFile(path);
    const std::string expected = stateOf(mArray);
    ASSERT_TRUE(mArray.isXMLTuningValid("default_usb"));
    std::vector<std::unique_ptr<char[]>> blocks(20000);
    uint32_t random = 1;
    for (int round = 0; round < 8; ++round) {
        // Holes of all sizes in no order, other ones every round.
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
