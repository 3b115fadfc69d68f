// The reading of tuning documents.
#include <ormel/TuningFileParser.h>

#include <sstream>

#include "support/Store.h"

namespace ormel::test {
namespace {

using ::testing::ElementsAre;
using Strings = std::vector<std::string>;

// A document of a version, or of none, with a blank before the first child of every element.
std::string document(const std::string& version, std::string body, const std::string& end = "") {
    const size_t minor = version.find('.') + 1;
    const size_t maintenance = version.find('.', minor) + 1;
    if (!version.empty()) {
        body += "<format_version major='" + version.substr(0, minor - 1) + "' minor='" +
                version.substr(minor, maintenance - minor - 1) + "' maintenance='" +
                version.substr(maintenance) + "'/>";
    }
    body = "<r>" + body + end + "</r>";
    for (size_t at = 0; (at = body.find("><", at)) != std::string::npos;) {
        body.insert(at + 1, " ");
    }
    return body;
}

template <typename... Parts>
std::string words(const Parts&... parts) {
    std::ostringstream text;
    ((text << parts << ' '), ...);
    std::string line = text.str().substr(0, text.str().size() - 1);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

std::string header(const DeviceData& data) {
    return words(data.getFormatVersion(), data.getToolVersion(), data.getDeviceName(),
                 data.getDeviceIndex(), data.getTuningVersion(), data.getAltivoGameSystemGain());
}

Strings objects(const DeviceData& data) {
    Strings all;
    for (const IeqPreset* const ieq : data.getIeqPresets()) {
        all.push_back(words("ieq", ieq->getPresetId(), ieq->getName(), ieq->valuesToString()));
    }
    for (const GeqPreset* const geq : data.getGeqPresets()) {
        all.push_back(words("geq", geq->getProfileId(), geq->valuesToString()));
    }
    for (const Profile* const profile : data.getProfiles()) {
        all.push_back(words(profile->isMobility() ? "mobility" : "profile", profile->getProfileId(),
                            profile->getName(), profile->valuesToString()));
    }
    for (const ProfileEndpoint* const endpoint : data.getProfileEndpoints()) {
        all.push_back(words(endpoint->getProfileId(), endpointName(endpoint->getEndpoint()),
                            endpoint->getSelectedIeqPreset(), endpoint->valuesToString()));
    }
    for (const Tuning* const tuning : data.getTunings()) {
        all.push_back(words(tuning->isMono() ? "mono" : "tuning", tuning->getName(),
                            endpointName(tuning->getEndpoint()), tuning->valuesToString()));
    }
    for (const DeviceTuning* const device : data.getDeviceTunings()) {
        all.push_back(words(device->getDevice(), device->getPort(), device->getTuning()));
    }
    return all;
}

const std::string kNoBands = " ieq_frequency= ieq_target= ";
const std::string kSteering = " mi_dialog_enhancer_steering_enable=";
const std::string kBare = " dialog_enhancer_enable=" + kSteering + " virtual_bass_type=1, ";

TEST(TuningFileParser, FollowsTheFormatVersion) {
    const std::string body =
            "<preset id='warm' name='n' type='ieq'/>"
            "<profile id='1' name='p' group='mobility'><headphone-virtualizer-mode value='0'/>"
            "<include preset='balanced'/><ieq-amount value='5'/><endpoint_type id='speaker'>"
            "<include preset='detailed' ieq_preset='6'/><hearing-protection-enable value='1'/>"
            "<dialog-enhancer-enable value='1'/></endpoint_type></profile>"
            "<tuning name='t'><data><bass-mbdrc-enable value='1'/>"
            "<speaker-virtualizer-mode value='0'/></data></tuning>";
    const std::string settings =
            "<authorized_technologies><global_setting device_index='8' virtual_bass_process='7'/>"
            "</authorized_technologies>";
    const std::string speaker = " dialog_enhancer_enable=1, ";
    const std::string protection = "hearing_protection_enable=1, ";
    const std::string speaker33 =
            speaker + "hearing_protection_enable=1," + kSteering + "1, virtual_bass_type=7, ";
    const std::string speaker32 =
            speaker + "headphone_virtualizer_steerer_source_distance=4, hearing_protection_enable=";
    const std::string ieq32 =
            " ieq_amount=5, ieq_enable=0," + kSteering + "1, virtual_bass_type=2, ";
    const std::string profile33 = " p headphone_virtualizer_mode=1, ";
    const std::string profile32 =
            "profile 1" + profile33 + "reverb_suppression_amount=0, reverb_suppression_enable=0, ";
    const std::string tuning0 =
            "tuning t speaker bass_mbdrc_enable=0, orientation=0, output_channels=0, ";
    const std::string tuning1 =
            "tuning t speaker bass_mbdrc_enable=1, orientation=0, output_channels=0, ";
    const std::string mode = "speaker_virtualizer_mode=";
    const std::tuple<Strings, const char*, Strings> cases[] = {
            {{"3.2.1", "3.2."},
             "   -1 -1 0",
             {"ieq 3 warm" + kNoBands, profile32, "1 speaker 2" + speaker32 + "1," + ieq32,
              tuning1 + mode + "1, "}},
            {{"3.2.2", "3.2.25"},
             "   -1 -1 0",
             {"ieq 3 warm" + kNoBands, profile32,
              "1 speaker 2" + speaker32 + "0," + ieq32 + "virtualizer_start_band=0, ",
              tuning0 + mode + "1, "}},
            {{"3.3.0", "3.3.05"},
             "   8 -1 0",
             {"ieq 3 warm" + kNoBands, "mobility 1" + profile33, "1 speaker 1" + speaker33,
              tuning1 + mode + "1, "}},
            {{"3.3.1", "3.10.0", "3.20.2", "3..", "..", ""},
             "   8 -1 0",
             {"ieq 0 n" + kNoBands, "mobility 1" + profile33, "1 speaker 6" + speaker33,
              tuning1 + mode + "1, "}},
            {{"3.4.0", "3.4.", "3.5.0", "4.0.0"},
             "   8 -1 0",
             {"ieq 0 n" + kNoBands, "mobility 1 p headphone_virtualizer_mode=0, ",
              "1 speaker 6" + speaker33, tuning1 + mode + "0, "}}};
    for (const auto& [versions, head, expected] : cases) {
        for (const std::string& version : versions) {
            TuningFileParser parser;
            EXPECT_EQ(parser.setTuningFile(document(version, body, settings), true), 0);
            EXPECT_EQ(header(*parser.getDeviceData()), version + head) << version;
            EXPECT_EQ(objects(*parser.getDeviceData()), expected) << version;
        }
    }
}

TEST(TuningFileParser, ReadsTheSettingsAndSaysSo) {
    const std::tuple<std::string, std::string, Strings> cases[] = {
            {"", "  -1 -1 0", {}},
            {"<tool_version major='1' minor='x'/><tool_version minor='2'/>"
             "<authorized_technologies><other device_index='1'/><global_setting "
             "tuning_version='7a' "
             "device_name='a b' x='1'/><global_setting altivo_game_system_gain='-3' "
             "device_index='5' virtual_bass_process='4'/></authorized_technologies>",
             ".2. a b 5 7 -3",
             {"mTuningVersion = 7", "mDeviceName = a b", "mDeviceIndex = 5"}},
            {"<authorized_technologies> </authorized_technologies><global_setting "
             "device_index='9'/>",
             "  -1 -1 0",
             {}},
            // Without children, what follows the element is taken for its content.
            {"<authorized_technologies/><global_setting device_index='9'/>",
             "  9 -1 0",
             {"mDeviceIndex = 9"}}};
    LogCapture log;
    for (const auto& [settings, head, messages] : cases) {
        TuningFileParser parser;
        std::vector<LogLine> expected = {debug("TuningFileParser", "xml version: 3.4.0")};
        for (const std::string& message : messages) {
            expected.push_back(debug("TuningFileParser", "parseAuthorizedTechnologies, " + message));
        }
        EXPECT_EQ(parser.setTuningFile(document("3.4.0", "", settings), true), 0);
        EXPECT_EQ(header(*parser.getDeviceData()), "3.4.0 " + head) << settings;
        EXPECT_EQ(log.take(), expected) << settings;
    }
}

TEST(TuningFileParser, ReadsEveryKindOfElement) {
    const LogLine invalid = error("TuningFileParser", "name is invalid, 313");
    const LogLine noData = error("TuningFileParser", "There is no <data> in Tuning section");
    const std::string profile32 =
            " headphone_virtualizer_mode=1, reverb_suppression_amount=0, "
            "reverb_suppression_enable=0, ";
    const auto speaker32 = [](const std::string& amount, const std::string& enable) {
        return " dialog_enhancer_enable= headphone_virtualizer_steerer_source_distance=4, "
               "ieq_amount=" +
               amount + ", ieq_enable=" + enable + "," + kSteering + " virtual_bass_type=1, ";
    };
    const std::string layout = " orientation=0, output_channels=0, ";
    const std::tuple<const char*, const char*, std::vector<LogLine>, Strings> cases[] = {
            {"3.2.1",
             "<preset id='warm' type='ieq'><d><b><band_ieq frequency='1' "
             "target='-2'/></b></d></preset>"
             "<preset id='Warm' name='Warm' type='ieq'/>",
             {invalid},
             {"ieq 3 warm ieq_frequency=1, ieq_target=-2, ", "ieq 0 off" + kNoBands}},
            {"3.3.1",
             "<preset id='7th' name='x' type='ieq'/><preset id='2' type='geq'><d><b><band "
             "frequency='1' gain='2'/>"
             "</b></d></preset><preset id='1' type='IEQ'/>",
             {},
             {"ieq 7 x" + kNoBands, "geq 2 geq_frequency=1, geq_gain=2, "}},
            {"3.4.0",
             "<profile id='7x' name='p' group='Mobility'><endpoint_type id='headphone'><include "
             "ieq_preset='2'/>"
             "</endpoint_type><ieq-enable value='1'/><volume-modeler-enable "
             "value='1'/><endpoint_type id='speaker'>"
             "<surround-boost value='9'/><include ieq_preset='2'/></endpoint_type><endpoint_type "
             "id='Speaker'>"
             "<include preset='warm'/><unknown/></endpoint_type></profile>",
             {},
             {"profile 7 p volume_modeler_enable=1, ", "7 headphone 2" + kBare,
              "7 speaker 0 dialog_enhancer_enable=" + kSteering +
                      " surround_boost=9, virtual_bass_type=1, ",
              "7 other 0" + kBare}},
            {"3.3.0",
             "<profile><endpoint_type id='other'><include preset='detailed' "
             "ieq_preset='3'/></endpoint_type>"
             "<endpoint_type><include preset='3' ieq_preset='3'/></endpoint_type></profile>",
             {invalid},
             {"profile 0  headphone_virtualizer_mode=1, ", "0 other 1" + kBare, "0 other 0" + kBare}},
            // Only the second element of a profile is looked at for what it includes.
            {"3.2.1",
             "<profile id='1'><a/><include preset='warm'/><ieq-enable value='1'/><endpoint_type "
             "id='speaker'>"
             "<include preset='detailed'/><ieq-amount value='9'/></endpoint_type><ieq-amount "
             "value='5'/><endpoint_type id='speaker'>"
             "<a/></endpoint_type></profile><profile id='2'><include preset='warm'/></profile>"
             "<profile id='3'><a/><b/><include preset='warm'/></profile>",
             {invalid, invalid},
             {"profile 1 " + profile32, "profile 2 " + profile32, "profile 3 " + profile32,
              "1 speaker 3" + speaker32("0", "1"), "1 speaker 3" + speaker32("5", "1")}},
            {"3.4.0",
             "<profile id='1'><endpoint_type><dialog-enhancer-enable "
             "value='3'/></endpoint_type><endpoint_type>"
             "<dialog-enhancer-enable value='1'/><mi-dialog-enhancer-steering-enable "
             "value='0'/></endpoint_type></profile>",
             {},
             {"profile 1  ",
              "1 other 0 dialog_enhancer_enable=3," + kSteering + "3, virtual_bass_type=1, ",
              "1 other 0 dialog_enhancer_enable=1," + kSteering + "0, virtual_bass_type=1, "}},
            // Elements without children take what follows them for their content.
            {"3.4.0",
             "<profile id='1' name='a'/><peak-value value='3'/><endpoint_type/>",
             {},
             {"profile 1 a peak_value=3, ", "1 other 0" + kBare}},
            {"3.4.0",
             "<tuning name='a'/><peak-value value='3'/><tuning><data/><peak-value "
             "value='4'/></tuning>",
             {},
             {"tuning a speaker" + layout + "peak_value=3, ",
              "tuning  speaker" + layout + "peak_value=4, "}},
            {"3.4.0",
             "<tuning name='a' endpoint_type='headphone' mono_device='true' orientation='90' "
             "output_channels='4'><!-- -->"
             "<device_id id='d' "
             "endpoint_port='usb'/><device_id/><settings><?peak-value?><ieq-enable "
             "value='1'/><a/></settings>"
             "<device_id id='e'/><data><peak-value/></data></tuning>"
             "<tuning name='b' endpoint_type='other' mono_device='1'><data> "
             "</data></tuning><tuning name='c' endpoint_type='Other'><data> </data></tuning>",
             {},
             {"mono a headphone ieq_enable=1, orientation=90, output_channels=4, ",
              "tuning b other" + layout, "tuning c speaker" + layout, "d usb a", "  a"}},
            {"3.4.0",
             "<tuning name='a'><device_id id='d' endpoint_port='usb'/></tuning><tuning "
             "name='b'><data/></tuning>"
             "<profile/><preset type='geq'/>",
             {noData},
             {"d usb a"}}};
    LogCapture log;
    for (const auto& [version, body, errors, expected] : cases) {
        TuningFileParser parser;
        EXPECT_EQ(parser.setTuningFile(document(version, body), true), 0) << body;
        EXPECT_TRUE(parser.isParsed());
        EXPECT_EQ(objects(*parser.getDeviceData()), expected) << body;
        std::vector<LogLine> messages = log.take();
        messages.erase(std::remove_if(messages.begin(), messages.end(),
                                      [](const LogLine& message) {
                                          return std::get<0>(message) != ANDROID_LOG_ERROR;
                                      }),
                       messages.end());
        EXPECT_EQ(messages, errors) << body;
    }
}

TEST(TuningFileParser, SaysWhatItReadsOfProfilesAndKeepsTheirNames) {
    const std::string profile =
            "<profile id='5' name='a'><b/><include preset='off'/><endpoint_type id='x'/></profile>";
    LogCapture log;
    TuningFileParser parser;
    EXPECT_EQ(parser.setTuningFile(document("3.2.9", profile), true), 0);
    EXPECT_THAT(log.take(),
                ElementsAre(debug("TuningFileParser", "xml version: 3.2.9"),
                            debug("TuningFileParser", "parseProfile(): parse the ieq preset")));
    EXPECT_EQ(parser.setTuningFile(document("3.4.0", profile + "<profile id='5' name='b'/>"), true),
              0);
    EXPECT_THAT(log.take(),
                ElementsAre(debug("TuningFileParser", "xml version: 3.4.0"),
                            debug("TuningFileParser",
                                  "parseProfileEndpoint(): x, parse the include ieq preset")));
    EXPECT_EQ(parser.getNumOfProfiles(), 3);
    EXPECT_EQ(parser.getProfileName(5) + parser.getProfileName(6), "b");
}

TEST(TuningFileParser, NumbersPresetNames) {
    TuningFileParser parser;
    LogCapture log;
    std::vector<int> ids;
    for (const char* const name : {"warm", "balanced", "detailed", "off", "Warm", ""}) {
        ids.push_back(parser.getIeqPresetIdByName(name));
    }
    EXPECT_THAT(ids, ElementsAre(3, 2, 1, 0, 0, 0));
    EXPECT_EQ(log.take(),
              std::vector<LogLine>(2, error("TuningFileParser", "name is invalid, 313")));
}

TEST(TuningFileParser, JoinsDocumentsAndOutlivesFailures) {
    TuningFileParser parser;
    EXPECT_EQ(parser.setTuningFile("", true), -22);
    EXPECT_EQ(parser.getDeviceData(), nullptr);
    EXPECT_FALSE(parser.isParsed());
    const TempFile first(document("3.4.0", "<preset id='1' type='geq'/>"));
    EXPECT_EQ(parser.setTuningFile(first.path(), false), 0);
    EXPECT_EQ(parser.setTuningFile(document("", "<preset id='2' type='geq'/>"), true), 0);
    // Many elements without children, each of which reads all that follow.
    std::string endless;
    for (int i = 0; i < 1100; ++i) {
        endless += "<tuning/>";
    }
    const DeviceData* const data = parser.getDeviceData();
    for (const std::string& failing : {document("", endless), std::string("<r>"), first.path()}) {
        EXPECT_EQ(parser.setTuningFile(failing, true), -22);
        EXPECT_EQ(parser.getDeviceData(), data);
    }
    EXPECT_EQ(header(*data), "3.4.0   -1 -1 0");
    Strings both = objects(*data);
    std::sort(both.begin(), both.end());
    EXPECT_THAT(both,
                ElementsAre("geq 1 geq_frequency= geq_gain= ", "geq 2 geq_frequency= geq_gain= "));
}

TEST(TuningFileParser, PlacesObjectsInDocumentOrder) {
    std::string body;
    Strings order;
    for (const char* const kind : {"ieq ", "geq ", "profile ", "tuning t", "d"}) {
        for (int i = 0; i < 99; ++i) {
            order.push_back(kind + std::to_string(i));
        }
    }
    for (int i = 0; i < 99; ++i) {
        const std::string id = "id='" + std::to_string(i) + "'";
        body += "<preset type='ieq' " + id + "/><profile " + id +
                "> </profile><preset type='geq' " + id + "/><tuning name='t" + std::to_string(i) +
                "'><device_id id='d" + std::to_string(i) + "'/><data> </data></tuning>";
    }
    TuningFileParser parser;
    EXPECT_EQ(parser.setTuningFile(document("3.4.0", body), true), 0);
    const Strings all = objects(*parser.getDeviceData());
    ASSERT_EQ(all.size(), order.size());
    for (size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(all[i].find(order[i] + " "), 0U) << all[i];
    }
}

TEST(TuningFileParser, SurvivesNodesThatAreNamedLikeElements) {
    for (const std::string name : {"profile", "preset", "tuning", "format_version", "tool_version",
                                   "global_setting", "authorized_technologies", "endpoint_type",
                                   "include", "device_id", "output-mode", "regulator-tuning"}) {
        const std::string nodes = "<?" + name + " id='1'?>&" + name + ";";
        const std::string body = "<authorized_technologies>" + nodes +
                                 "</authorized_technologies><profile>" + nodes + "<endpoint_type>" +
                                 nodes + "</endpoint_type></profile><tuning>" + nodes + "<data>" +
                                 nodes + "</data></tuning>" + nodes;
        TuningFileParser parser;
        EXPECT_EQ(parser.setTuningFile("<!DOCTYPE r [<!ENTITY " + name +
                                               " '<a/>'><!ENTITY b 'c'>]>" + document("3.3.0", body),
                                       true),
                  0);
        EXPECT_EQ(parser.getNumOfProfiles(), name == "profile" ? 3 : 1) << name;
    }
}

}  // namespace
}  // namespace ormel::test
