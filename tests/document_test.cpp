// Reading tuning documents.
#include <ormel/TuningFileParser.h>

#include <regex>
#include <sstream>

#include "support/Store.h"

namespace ormel::test {
namespace {

using std::string_literals::operator""s;

// A document with a version such as "3 4 0", or without one.
std::string document(const std::string& version, const std::string& body) {
    std::string major, minor, maintenance;
    std::istringstream(version) >> major >> minor >> maintenance;
    const std::string element = "<format_version major='" + major + "' minor='" + minor +
                                "' maintenance='" + maintenance + "'/>";
    return "<r> " + (version.empty() ? "" : element) + body + "</r>";
}

// The words of a text, each preceded by one blank.
std::string squeeze(const std::string& text) {
    std::istringstream words(text);
    std::string squeezed;
    for (std::string word; words >> word;) {
        squeezed += " " + word;
    }
    return squeezed;
}

// The dumps of objects, without empty lists and without missing ids.
template <typename Objects>
std::string dump(const Objects& objects) {
    std::string all;
    for (const auto& object : objects) {
        std::istringstream lines(object->toString());
        for (std::string line; std::getline(lines, line);) {
            all += line.back() == '=' || line == "id=-1" ? "" : line + " ";
        }
    }
    return all;
}

std::string dump(const DeviceData& data) {
    std::ostringstream header;
    header << data.getDeviceName() << ' ' << data.getToolVersion() << ' ' << data.getDeviceIndex()
           << ' ' << data.getTuningVersion() << ' ' << data.getAltivoGameSystemGain();
    return dump(data.getIeqPresets()) + dump(data.getGeqPresets()) + dump(data.getProfiles()) +
           dump(data.getProfileEndpoints()) + dump(data.getTunings()) +
           dump(data.getDeviceTunings()) + header.str();
}

TEST(TuningFileParser, AppliesTheRulesOfTheFormatVersion) {
    const char* const body = R"(<authorized_technologies> <global_setting device_index='8'
        virtual_bass_process='7'/> </authorized_technologies> <preset id='warm' name='n' type='ieq'
        /> <profile id='1' group='mobility'> <headphone-virtualizer-mode value='0'/>
        <include preset='balanced'/> <ieq-enable value='1'/> <endpoint_type id='speaker'>
        <include preset='detailed' ieq_preset='6'/> <hearing-protection-enable value='1'/>
        <virtualizer-start-band value='5'/> <ieq-enable value='4'/> <dialog-enhancer-enable
        value='3'/> </endpoint_type> <ieq-amount value='5'/> </profile> <tuning name='t'> <data>
        <bass-mbdrc-enable value='1'/> <speaker-virtualizer-mode value='3'/> </data> </tuning>)";
    const std::vector<std::string> versions = {"3 2 1",  "3 2",   "3 2 2",  "3 2 25", "3 3 0",
                                               "3 3 05", "3 3 1", "3 10 0", "3 20 2", "3",
                                               "",       "3 4 0", "3 4",    "4 0 0"};
    const struct {
        const char* part;
        const char* isIn;  // x for each version with this part in its dump
    } dumped[] = {{"presetId=3 name=warm ", "xxxxxx--------"},
                  {"presetId=0 name=n ", "------xxxxxxxx"},
                  {"mobility=true ", "----xxxxxxxxxx"},
                  {"selectedIeqPreset=2 ", "xxxx----------"},
                  {"selectedIeqPreset=1 ", "----xx--------"},
                  {"selectedIeqPreset=6 ", "------xxxxxxxx"},
                  {"reverb_suppression_amount=0, reverb_suppression_enable=0, ", "xxxx----------"},
                  {"headphone_virtualizer_mode=1, ", "xxxxxxxxxxx---"},
                  {"headphone_virtualizer_mode=0, ", "-----------xxx"},
                  {"ieq_amount=0, ieq_enable=1, ", "xxxx----------"},
                  {"ieq_enable=4, ", "----xxxxxxxxxx"},
                  {"hearing_protection_enable=0, ", "--xx----------"},
                  {"virtualizer_start_band=0, ", "--xx----------"},
                  {"headphone_virtualizer_steerer_source_distance=4, ", "xxxx----------"},
                  {"virtual_bass_type=2, ", "xxxx----------"},
                  {"dialog_enhancer_steering_enable=3, ", "xxxxxxxxxxxxxx"},
                  {"bass_mbdrc_enable=0, ", "--xx----------"},
                  {"speaker_virtualizer_mode=1, ", "xxxxxxxxxxx---"},
                  {"speaker_virtualizer_mode=3, ", "-----------xxx"},
                  {" 8 -1 0", "----xxxxxxxxxx"}};
    for (size_t i = 0; i < versions.size(); ++i) {
        TuningFileParser parser;
        EXPECT_EQ(parser.setTuningFile(document(versions[i], body), true), 0);
        const std::string all = dump(*parser.getDeviceData());
        for (const auto& [part, isIn] : dumped) {
            EXPECT_EQ(all.find(part) != std::string::npos, isIn[i] == 'x')
                    << part << " of " << versions[i] << " in " << all;
        }
    }
}

const struct {
    const char* version;
    const char* body;
    const char* expected;  // what the parser logs (D debug, E error), and what it reads
} kDocuments[] = {
        // Versions are read first, wherever they are, and the last one counts.
        {"", R"(<preset id='off' type='ieq'/> <tool_version major='1' minor='x'/>
        <format_version/> <format_version major='3' minor='3' maintenance='0'/>)",
         "D xml version: .. D xml version: 3.3.0 presetId=0 name=off 1.x. -1 -1 0"},
        {"", R"(<authorized_technologies> <x device_index='1'/> <global_setting tuning_version='7a'
        device_name='a b' x='1'/> <global_setting altivo_game_system_gain='-3' device_index='5'/>
        </authorized_technologies> <global_setting device_index='2'/>)",
         R"(D parseAuthorizedTechnologies, mTuningVersion = 7
        D parseAuthorizedTechnologies, mDeviceName = a b
        D parseAuthorizedTechnologies, mDeviceIndex = 5 a b 5 7 -3)"},
        {"", R"(<preset id='7th' name='x' type='ieq'/> <preset id='1' type='IEQ'/>
        <preset id='2' type='geq'> <d> <b> <x frequency='1' gain='2'/> </b> </d> </preset>)",
         "presetId=7 name=x profileId=2 geq_frequency=1, geq_gain=2, -1 -1 0"},
        // Only the second element of a profile can be its include.
        {"3 2 1", R"(<preset id='Warm' name='x' type='ieq'> <d> <b> <band_ieq frequency='1'
        target='-2'/> </b> </d> </preset> <profile> <include preset='warm'/> <a/> </profile>)",
         R"(D xml version: 3.2.1 E name is invalid, 313 D parseProfile(): parse the ieq preset
        E name is invalid, 313 presetId=0 name=off ieq_frequency=1, ieq_target=-2, profileId=0
        mobility=false selectedGeqPreset=0 headphone_virtualizer_mode=1,
        reverb_suppression_amount=0, reverb_suppression_enable=0, -1 -1 0)"},
        {"4 0 0", R"(<profile id='7x' name='p' group='Mobility'> <endpoint_type id='headphone'>
        <include ieq_preset='2'/> <dialog-enhancer-enable value='1'/>
        <mi-dialog-enhancer-steering-enable/> </endpoint_type> <peak-value value='1'/>
        <endpoint_type id='Speaker'> <surround-boost value='9'/> <include ieq_preset='2'/>
        </endpoint_type> <ieq-enable value='1'/> </profile>)",
         R"(D xml version: 4.0.0 D parseProfileEndpoint(): headphone, parse the include ieq preset
        D parseProfileEndpoint(): Speaker, parse the include ieq preset
        profileId=7 name=p mobility=false selectedGeqPreset=7 peak_value=1,
        profileId=7 endpoint=headphone selectedIeqPreset=2 dialog_enhancer_enable=1,
        mi_dialog_enhancer_steering_enable=0, virtual_bass_type=1, profileId=7 endpoint=other
        selectedIeqPreset=0 surround_boost=9, virtual_bass_type=1, -1 -1 0)"},
        // A missing attribute is empty; it does not keep the text of the one before it.
        {"4 0 0", R"(<profile> <endpoint_type id='2'> <include/></endpoint_type></profile>)",
         R"(D xml version: 4.0.0 D parseProfileEndpoint(): 2, parse the include ieq preset
        profileId=0 mobility=false selectedGeqPreset=0 profileId=0 endpoint=other
        selectedIeqPreset=0 virtual_bass_type=1, -1 -1 0)"},
        // For an element without children, the following siblings are read as its content.
        {"4 0 0", R"(<tuning name='a'/> <tuning name='b'> <data/> <peak-value value='4'/> </tuning>
        <profile id='1' name='p'/> <peak-value value='3'/> <endpoint_type id='x'/>
        <authorized_technologies/> <global_setting device_index='9'/>)",
         R"(D xml version: 4.0.0 D parseAuthorizedTechnologies, mDeviceIndex = 9
        D parseProfileEndpoint(): x, parse the include ieq preset
        profileId=1 name=p mobility=false selectedGeqPreset=1 peak_value=3,
        profileId=1 endpoint=other selectedIeqPreset=0 virtual_bass_type=1,
        name=a endpoint=speaker mono=false readonly=true orientation=0, output_channels=0,
        peak_value=3, name=b endpoint=speaker mono=false readonly=true orientation=0,
        output_channels=0, peak_value=4, 9 -1 0)"},
        {"4 0 0", R"(<tuning name='a' endpoint_type='headphone' mono_device='true' orientation='90'
        output_channels='4'> <!-- --> <device_id id='d' endpoint_port='usb'/> <device_id/> <x>
        <?peak-value?> <ieq-enable value='1'/> <a/> </x> <device_id id='e'/> <data> <peak-value/>
        </data> </tuning> <tuning endpoint_type='other' mono_device='1'> <data> </data> </tuning>)",
         R"(D xml version: 4.0.0 name=a endpoint=headphone mono=true readonly=true ieq_enable=1,
        orientation=90, output_channels=4, endpoint=other mono=false readonly=true orientation=0,
        output_channels=0, device=d port=usb tuning=a tuning=a -1 -1 0)"},
        // Reading stops at a tuning without data.
        {"", R"(<preset type='geq'/> <tuning name='a'> <device_id id='d'/> </tuning>
        <tuning name='b'> <data/> </tuning> <profile/> <preset type='geq'/>)",
         "E There is no <data> in Tuning section profileId=0 device=d tuning=a -1 -1 0"}};

TEST(TuningFileParser, ReadsEveryKindOfElement) {
    LogCapture log;
    for (const auto& [version, body, expected] : kDocuments) {
        TuningFileParser parser;
        EXPECT_EQ(parser.setTuningFile(document(version, body), true), 0) << body;
        EXPECT_TRUE(parser.isParsed());
        std::string said;
        for (const auto& [priority, tag, text] : log.take()) {
            said += tag == "TuningFileParser" ? "??VDIWE"[priority] + (" " + text + " ") : "";
        }
        EXPECT_EQ(squeeze(said + dump(*parser.getDeviceData())), squeeze(expected)) << body;
    }
}

TEST(TuningFileParser, JoinsDocumentsAndKeepsThemIfOneFails) {
    TuningFileParser parser;
    EXPECT_EQ(parser.setTuningFile("", true), -22);
    EXPECT_EQ(parser.getDeviceData(), nullptr);
    EXPECT_FALSE(parser.isParsed());
    const TempFile first(document("3 3 1", R"(<profile id='5' name='a'> <endpoint_type/>
            <?virtual-bass-mix-freqs?> </profile> <profile id='5' name='b'/>)"));
    EXPECT_EQ(parser.setTuningFile(first.path(), false), 0);
    EXPECT_EQ(parser.setTuningFile(document("", "<profile id='6' name='c'/>"), true), 0);
    const DeviceData* const data = parser.getDeviceData();
    for (const std::string& failing : {std::string("<r>"), first.path()}) {
        EXPECT_EQ(parser.setTuningFile(failing, true), -22);
        EXPECT_EQ(parser.getDeviceData(), data);
    }
    EXPECT_EQ(data->getFormatVersion(), "3.3.1");
    EXPECT_EQ(data->getProfiles().size(), 3U);
    const ProfileEndpoint& bare = **data->getProfileEndpoints().begin();
    EXPECT_EQ(
            bare.valuesToString(),
            "dialog_enhancer_enable=\nmi_dialog_enhancer_steering_enable=\nvirtual_bass_type=1,\n");
    EXPECT_EQ(parser.getNumOfProfiles(), 3);
    EXPECT_EQ(parser.getProfileName(5), "b");
    EXPECT_EQ(parser.getProfileName(6), "c");
    EXPECT_EQ(parser.getProfileName(7), "");
}

TEST(TuningFileParser, ListsObjectsInDocumentOrder) {
    std::string body, presets, tunings;
    for (int i = 99; i > 0; --i) {
        const std::string id = std::to_string(i);
        body += "<preset type='ieq' id='" + id + "'/> <tuning name='" + id + "'> <device_id id='" +
                id + "'/> <data> </data> </tuning>";
        presets += "presetId=" + id + " ";
        tunings += "device=" + id + " tuning=" + id + " ";
    }
    TuningFileParser parser;
    EXPECT_EQ(parser.setTuningFile(document("", body), true), 0);
    EXPECT_EQ(dump(parser.getDeviceData()->getIeqPresets()), presets);
    EXPECT_EQ(dump(parser.getDeviceData()->getDeviceTunings()), tunings);
}

TEST(TuningFileParser, ReadsInstructionsAndReferencesNamedLikeElements) {
    const char* const pattern = R"(<!DOCTYPE r [<!ENTITY NAME '<a/>'><!ENTITY b 'c'>]>
        <r>@<authorized_technologies>@</authorized_technologies> <profile>@<endpoint_type>@
        </endpoint_type> </profile> <tuning>@<data>@</data>@</tuning>@</r>)";
    for (const char* const name : {"profile", "preset", "tuning", "format_version", "include",
                                   "authorized_technologies", "global_setting", "endpoint_type",
                                   "device_id", "output-mode", "regulator-tuning", "ieq"}) {
        auto text = std::regex_replace(pattern, std::regex("@"), "<?NAME id='1'?>&NAME;");
        text = std::regex_replace(text, std::regex("NAME"), name);
        TuningFileParser parser;
        EXPECT_EQ(parser.setTuningFile(text, true), 0) << name;
        // Processing instructions and references have neither attributes nor children.
        EXPECT_EQ(parser.getNumOfProfiles(), name == "profile"s ? 5 : 1) << name;
    }
}

// Records what is reported: sections with their objects, parameters and skipped elements, each with
// its element's number; a star for a childless section.
class RecordingObserver : public TuningFileObserver {
  public:
    void onSection(const DocumentSection& section) override {
        mText << nameOf(section) << numberOf(section.element) << '/' << section.object << ' ';
    }
    void onParameter(const DocumentSection& section, ValueSetter& setter,
                     uint32_t element) override {
        mText << nameOf(section) << (section.isChildless ? "*." : ".") << setter.getNodeName()
              << numberOf(element) << ' ';
    }
    void onSetting(const DocumentSection& section, std::string_view name) override {
        mText << name << numberOf(section.element) << ' ';
    }
    void onPassedOver(uint32_t element, Reason reason) override {
        mText << "USN"[static_cast<int>(reason)] << numberOf(element) << ' ';
    }
    std::string text() const { return mText.str(); }

  private:
    static std::string nameOf(const DocumentSection& section) {
        return section.kind == DocumentElement::DATA ? "data" : rowOf(section.kind).name;
    }
    static std::string numberOf(uint32_t element) {
        return element == kNoElement ? "-" : std::to_string(element);
    }

    std::ostringstream mText;
};

// A document's version and content, and what its observer is told. The root is element 0; the
// version, if there is one, is element 1.
const std::array<const char*, 3> kObserved[] = {
        // Versions and settings come first, wherever they are.
        {"", R"(<profile id='1'/> <x/> <authorized_technologies> <y/> <global_setting z='1'
        device_index='2'/> </authorized_technologies> <tool_version/>)",
         R"(authorized_technologies3/0 U4 global_setting5/0 device_index5 tool_version6/0
        profile1/0 S1 S2 S3 S6 U2)"},
        // The two types of preset are numbered separately.
        {"", R"(<preset type='geq'/> <preset type='ieq'> </preset> <preset/> <preset type='geq'/>)",
         "preset1/0 preset.geq1 preset2/0 preset.ieq2 preset3/1 U3 preset4/1 preset.geq4"},
        {"3 4 0",
         R"(<profile> <endpoint_type> <include/> <ieq-enable/> </endpoint_type> <ieq-amount/>
        <include/> </profile> <profile> <endpoint_type> <a/> <include/> </endpoint_type> </profile>)",
         R"(format_version1/0 profile2/0 endpoint_type3/0 include4/0 U4 endpoint_type.ieq-enable5
        profile.ieq-amount6 U7 profile8/1 endpoint_type9/1 U10 U11)"},
        {"3 2 0",
         R"(<authorized_technologies> <global_setting/> </authorized_technologies> <profile>
        <ieq-enable/> <include/> <endpoint_type> <include/> </endpoint_type> </profile>)",
         R"(format_version1/0 profile4/0 include6/0 profile.ieq-enable5 U6 endpoint_type7/0 U8)"},
        // A tuning's data may have any name.
        {"", R"(<tuning> <device_id/> <device_id/> <peak-value> <peak-value/> <x/> </peak-value>
        <device_id/> </tuning> <tuning> <data/> <peak-value/> </tuning>)",
         R"(tuning1/0 device_id2/0 device_id3/1 data4/0 tuning.peak-value5 U6
        tuning8/1 data9/1 S9 tuning*.peak-value10)"},
        // Nothing is reported after a tuning without data.
        {"", "<tuning> <device_id/> </tuning> <profile/>", "tuning1/0 device_id2/0 N1"},
        // A processing instruction is read as an element without children, and has no number.
        {"", "<?profile?> <peak-value/> <profile> </profile>",
         "profile-/0 profile*.peak-value1 S2 U1 profile2/1"}};

TEST(TuningFileObserver, IsToldHowEachElementIsRead) {
    for (const auto& [version, body, expected] : kObserved) {
        RecordingObserver observer;
        TuningFileParser parser;
        parser.setObserver(&observer);
        EXPECT_EQ(parser.setTuningFile(document(version, body), true), 0) << body;
        EXPECT_EQ(squeeze(observer.text()), squeeze(expected)) << body;
    }
}

}  // namespace
}  // namespace ormel::test
