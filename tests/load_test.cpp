#include <sched.h>
#include <sys/wait.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <sstream>

#include "support/Documents.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

using ::testing::ElementsAre;

constexpr char kTag[] = "OrmSpatializerParamArray";

// What a document's objects become, in order, but for what needs a channel count or a switch.
constexpr char kProfile[] = "mdle miee msce mave dvme drcm rvsa rvse hvm hvrc hlra sdfa";
constexpr char kEndpoint[] =
        "geon ieon iea mdee mvbe beon plb dea deon ded ngon dsb vbm vbon vmb dvla dvle dvli dvlo "
        "dom svsb vssd dplp hpon hptw hpat hpaa hpar";
constexpr char kTuning[] =
        "aoon beb becf bew arsa arbs ards aron arde arod artp rsse vbsf vbmf vbog vbsg vbhg vbbg "
        "vbct vbhm vbhb vbmx vbrg dvlc dvmc dhfm dfsa dsa dhsa drsa drha ceon bmde svm avsb svrc";

/** One entry per code for a device, without values but for those given. */
std::vector<Call> rows(int32_t device, const char* codes, std::map<std::string, Values> values) {
    std::vector<Call> calls;
    std::istringstream words(codes);
    for (std::string code; words >> code;) {
        calls.push_back(set(device, code, values[code]));
    }
    return calls;
}

/** The values of every entry of a code for a device. */
std::vector<Values> valuesIn(const Values& list, int32_t device, const char* code) {
    RecordingEffect effect;
    effect.calls = unpack(list);
    return effect.valuesOf(device, code);
}

const Values kDefaultMatrix(SpatializerParamArray::kDefaultMixMatrix.begin(),
                            SpatializerParamArray::kDefaultMixMatrix.end());

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
std::vector<LogLine> messagesOf(SpatializerParamArray& array, const std::string& path,
                                LogCapture& log) {
    log.take();
    array.loadSpatializerXMLFile(path);
    return log.take();
}

bool contains(const std::vector<LogLine>& messages, const std::string& text) {
    return std::count(messages.begin(), messages.end(), debug(kTag, text)) > 0;
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
    const auto preset = [](int32_t device) {
        return rows(device, "ieid iebs", {{"ieid", {2}}, {"iebs", {1, 500, 9}}});
    };
    // Of the profile, of its graphic equalizers, and of four devices with a preset each.
    auto expected = join(std::vector{header(kAll, 12 + 2 + 4 * (2 + 28))},
                         rows(kAll, kProfile, {{"hvm", {2}}, {"drcm", {1, 2}}}),
                         rows(kAll, "gebs", {{"gebs", {1, 32, 10}}}),
                         rows(kAll, "gebs", {{"gebs", {1, 99, -3}}}));
    std::map<std::string, Values> values = {
            {"mdee", {1}}, {"deon", {1}}, {"vbm", {0}}, {"vbon", {1}}, {"dom", {1, 1, 2}}};
    for (const int32_t device : {8, 0x80, 0x4000}) {
        expected = join(expected, preset(device), rows(device, kEndpoint, values));
    }
    values = {{"dea", {12}},
              {"vbm", {3}},
              {"vbon", {1}},
              {"dom", join(Values{1, 0, 1}, kDefaultMatrix)}};
    EXPECT_EQ(unpack(mArray.getXMLProfileParams(1)),
              join(expected, preset(2), rows(2, kEndpoint, values)));
    EXPECT_EQ(mArray.getTuningCount(), 0);
}

TEST_F(LoadTest, TheFirstOfWhatRepeatsStandsAndMissingPresetsAreTheLastOnes) {
    mArray.setProfileGeqGains(0, {42});
    load(document(R"(
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
  <endpoint_type id='other'> <include ieq_preset='1'/></endpoint_type>
  <endpoint_type id='headphone'> <include ieq_preset='8'/></endpoint_type></profile>
<profile id='1'> <headphone-virtualizer-mode value='3'/>
  <endpoint_type id='speaker'> <calibration-boost value='6'/></endpoint_type></profile>)"));
    // Endpoints belong to the profile's id, and so those of the second one to the first as well.
    const std::tuple<int, int32_t, const char*, std::vector<Values>> cases[] = {
            {0, 8, "iebs", {}},
            {0, 2, "iebs", {{1, 200, 2}}},
            {1, 2, "iebs", {{1, 200, 2}, {1, 100, 1}}},
            {1, 8, "iebs", {{1, 100, 1}}},
            {1, 2, "plb", {{}, {6}}},
            {1, kAll, "hvm", {{2}}}};
    for (const auto& [id, device, code, values] : cases) {
        EXPECT_EQ(valuesIn(mArray.getXMLProfileParams(id), device, code), values) << id << code;
    }
    EXPECT_EQ(mArray.getTuningProfileCount(), 3);
    EXPECT_EQ(mArray.getProfileGeqGains(0), Values{42});
    EXPECT_EQ(mArray.getProfileGeqGains(1), Values{2});
}

TEST_F(LoadTest, TheInternalSpeakersTuningShapesEveryProfile) {
    const auto tuning = [](const std::string& attributes, const std::string& device,
                           const std::string& data) {
        return "<tuning " + attributes + "> <device_id id='" + device +
               "' endpoint_port='internal_speaker'/>" + data + "</tuning>";
    };
    const std::string own = "default_internal_speaker";
    const std::string mix = "<data> <output-mode> <m> <r v='7, 8'/></m></output-mode></data>";
    const std::string mode = "<data> <virtual-bass-mode value='2'/></data>";
    const std::string four = "name='a' output_channels='4'";
    const std::string bare = "name='b'";
    const std::string six = "name='a' output_channels='6'";
    // Channels, mode and number of tunings; the matrix; which tells the stored tuning, its channels.
    const std::tuple<std::string, Values, Values, std::vector<Values>> cases[] = {
            {"", {2, 3, 0}, kDefaultMatrix, {}},
            {tuning(four, own, mix), {4, 3, 1}, {7, 8}, {{4}}},
            {tuning(bare, own, mode), {0, 2, 1}, kDefaultMatrix, {{0, 0, 0}}},
            {tuning(four, "x", mix), {2, 3, 1}, kDefaultMatrix, {}},
            {tuning(four, own, mix) + tuning(bare, own, mode), {4, 3, 2}, {7, 8}, {{0, 0, 0}}},
            {tuning(six, "x", mode) + tuning(four, own, mix), {6, 2, 2}, kDefaultMatrix, {{6}}},
            {tuning(four, "x", mix) + tuning(bare, own, ""), {2, 3, 1}, kDefaultMatrix, {}}};
    for (const auto& [tunings, numbers, matrix, stored] : cases) {
        SCOPED_TRACE(tunings);
        const TempFile file(document(
                "<profile id='0'> <endpoint_type id='speaker'> <virtualizer-enable value='1'/>"
                "<virtual-bass-process-enable value='1'/></endpoint_type></profile>" +
                tunings));
        SpatializerParamArray array;
        const auto messages = messagesOf(array, file.path(), log);
        EXPECT_EQ(contains(messages, "use the default mix matrix"), matrix == kDefaultMatrix);
        EXPECT_EQ(contains(messages, "use the default vb mode"), numbers[1] == 3);
        EXPECT_EQ(array.getOutputChannelCount(), numbers[0]);
        EXPECT_EQ(array.getTuningCount(), numbers[2]);
        EXPECT_EQ(array.isXMLTuningValid(own), !stored.empty());
        EXPECT_TRUE(stored.empty() || valuesIn(array.getXMLTuningParams(own), 2, "arsa") == stored);
        const Values& list = array.getXMLProfileParams(0);
        EXPECT_THAT(valuesIn(list, 2, "dom"), ElementsAre(join(Values{1, 0, 1}, matrix)));
        EXPECT_THAT(valuesIn(list, 2, "vbm"), ElementsAre(Values{numbers[1]}));
    }
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
    const auto messages = messagesOf(mArray, file.path(), log);
    for (int port = 0; port < 8; ++port) {
        const std::string& name = ports[port];
        SCOPED_TRACE(name);
        // No channels: no optimizer bands, and the stress amounts of two.
        EXPECT_EQ(unpack(mArray.getXMLTuningParams(name)),
                  join(std::vector{header(kAll, 36)},
                       rows(devices[port], kTuning,
                            {{"beb", {7}}, {"arsa", {0, 5, 6}}, {"arbs", {0}}})));
        EXPECT_EQ(mArray.getXMLTuningMixMatrix(name), (Values{1, 2}));
        EXPECT_EQ(mArray.getAvailableTuningDevices(port), port < 7 ? name : "");
        EXPECT_TRUE(contains(messages, "Tuning id(" + name + "): endpoint " + endpoints[port] +
                                               ", orientation 3, mix matrices length 2"));
    }
    EXPECT_EQ(mArray.getTuningCount(), 8);
    // The lookups leave what they did not find behind.
    EXPECT_EQ(kPortNameToEndpoint.count("nowhere"), 1U);
    EXPECT_EQ(kPortNameToAndroidDevice.count("hdmi"), 1U);
}

TEST_F(LoadTest, SaysWhatItDoes) {
    const TempFile file(document(R"(
<profile id='4'> <endpoint_type id='speaker'> <a/></endpoint_type></profile>
<tuning name='t' orientation='3'>
  <device_id id='default_internal_speaker' endpoint_port='internal_speaker'/><data/></tuning>
<tuning name='gone'> <device_id id='x' endpoint_port='headphone'/></tuning>
<profile id='5'> </profile>)"));
    std::string said;
    for (const auto& [priority, tag, text] : messagesOf(mArray, file.path(), log)) {
        said += tag[0] + std::to_string(priority) + ' ' + text + '\n';
    }
    EXPECT_EQ(said, "O3 loadSpatializerXMLFile(" + file.path() + R"()
T3 xml version: 3.4.0
T3 parseProfileEndpoint(): speaker, parse the include ieq preset
T6 There is no <data> in Tuning section
O3 use the default mix matrix
O3 use the default vb mode
O3 Profile 4, numParameters = 40
O3 Tuning id(default_internal_speaker), tuningName(t) numParameters = 36
O3 Tuning id(default_internal_speaker): endpoint 0, orientation 3, mix matrices length 0
O5 Tuning id(x): no tuning gone
O6 loadSpatializerXMLFile() default tuningDevice default_headphone is not available for port headphone.
O6 loadSpatializerXMLFile() default tuningDevice default_bluetooth is not available for port bluetooth.
O6 loadSpatializerXMLFile() default tuningDevice default_usb is not available for port usb.
)");
    EXPECT_FALSE(mArray.isXMLTuningValid("x"));
    EXPECT_EQ(mArray.getAvailableTuningDevices(3), "");
    EXPECT_EQ(mArray.getSelectedTuningDevice(3), "default_headphone");
}

/** All that a load can change, as far as the first profiles, the ports and their devices go. */
std::string stateOf(SpatializerParamArray& array) {
    std::ostringstream state;
    const auto put = [&state](const Values& values) {
        std::copy(values.begin(), values.end(), std::ostream_iterator<int32_t>(state << '|', " "));
    };
    put({array.getTuningProfileCount(), array.getTuningCount(), array.getOutputChannelCount()});
    for (int profile = 0; profile < 4; ++profile) {
        put(array.isXMLProfileValid(profile) ? array.getXMLProfileParams(profile) : Values{-1});
        put(array.getProfileGeqGains(profile));
    }
    for (int port : kSupportedPorts) {
        const std::string device = array.getSelectedTuningDevice(port);
        state << array.getAvailableTuningDevices(port) << device;
        put(array.isXMLTuningValid(device) ? array.getXMLTuningParams(device) : Values{-1});
        put(array.getXMLTuningMixMatrix(device));
    }
    return state.str();
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
            const std::vector<LogLine> expected = {
                    debug(kTag, "loadSpatializerXMLFile(" + file.path() + ")"),
                    error("TagIterator", "fail to call xmlReadFile,  63"),
                    error(kTag, "Spatializer Tuning XML parses error!")};
            EXPECT_EQ(messagesOf(*array, file.path(), log), expected);
        }
        EXPECT_EQ(messagesOf(*array, "/nonexistent/document.xml", log).back(),
                  error(kTag, "Spatializer Tuning XML parses error!"));
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
