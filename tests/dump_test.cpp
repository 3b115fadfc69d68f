// The store's state as text: dump().
#include <functional>
#include <future>

#include "support/Documents.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

constexpr char kFresh[] = R"(libspatializerparamstorage 1.0.0
document: /vendor/etc/ormel/qsx-default-spatializer.xml, not read (1): No such file or directory
current profile: movie (1)
output channels: 2
document profiles: 0
graphic equalizers:
device tunings: 0
ports:
  internal_speaker (0)
    * default_internal_speaker, not available
  hdmi (1)
  miracast (2)
  headphone (3)
    * default_headphone, not available
  bluetooth (4)
    * default_bluetooth, not available
  usb (5)
    * default_usb, not available
  other (6)
)";

// A profile gives 12 entries and a graphic equalizer one. A tuning gives 36, and with four channels
// the optimizer's bands too.
constexpr char kLoaded[] = R"(libspatializerparamstorage 1.0.0
document: FILE, loaded (0)
current profile: movie (1)
output channels: 4
document profiles: 3
  movie (1): 13 entries
  unknown (7): 12 entries
graphic equalizers:
  movie (1): 2 gains: 10 -3
device tunings: 4
  a b: 37 entries, port headphone, mix matrix of 2
  default_internal_speaker: 37 entries, port internal_speaker, mix matrix of 2
  far: 37 entries, port no?where, mix matrix of 2
  two?lines: 37 entries, port internal_speaker, mix matrix of 2
ports:
  internal_speaker (0)
    * default_internal_speaker
      two?lines
  hdmi (1)
  miracast (2)
  headphone (3)
      a b
    * default_headphone, not available
  bluetooth (4)
    * default_bluetooth, not available
  usb (5)
    * default_usb, not available
  other (6)
)";

constexpr char kChosen[] = R"(libspatializerparamstorage 1.0.0
document: FILE, not read (1): line 1: Premature end of data in tag d line 1
current profile: custom (3)
output channels: 4
document profiles: 3
  unknown (-9): 0 entries
  movie (1): 13 entries
  unknown (7): 12 entries
graphic equalizers:
  unknown (-1): 20 gains: 6 6 6 6 6 6 6 6 6 6 6 6 6 6 6 6 6 6 6 6
  dynamic (0): 0 gains
  movie (1): 2 gains: 10 -3
  custom (3): 21 gains: 5 5 5 5 5 5 5 5 5 5 5 5 5 5 5 5 5 5 5 5 ...
device tunings: 4
  a b: 37 entries, port headphone, mix matrix of 2
  asked: 0 entries
  default_internal_speaker: 37 entries, port internal_speaker, mix matrix of 2
  far: 37 entries, port no?where, mix matrix of 2
  two?lines: 37 entries, port internal_speaker, mix matrix of 2
ports:
  internal_speaker (0)
      default_internal_speaker
    * two?lines
  hdmi (1)
  miracast (2)
  headphone (3)
    * a b
  bluetooth (4)
    * default_bluetooth, not available
  usb (5)
    * default_usb, not available
  other (6)
)";

/** @p text with @p indent blanks before every line. */
std::string indented(const std::string& text, size_t indent) {
    std::string result;
    for (size_t at = 0, end; at < text.size(); at = end) {
        end = text.find('\n', at) + 1;
        result += std::string(indent, ' ') + text.substr(at, end - at);
    }
    return result;
}

using DumpTest = StoreTest;

TEST_F(DumpTest, ShowsWhatIsLoadedAndSelected) {
    const TempFile good(document(R"(
<preset type='geq' id='1'> <data> <b> <band frequency='32' gain='10'/>
  <band frequency='64' gain='-3'/></b></data></preset>
<profile id='1'> </profile><profile id='7'> </profile><profile id='7'> </profile>
<tuning name='t' output_channels='4'> <device_id id='a b' endpoint_port='headphone'/>
  <device_id id='two&#10;lines' endpoint_port='internal_speaker'/>
  <device_id id='default_internal_speaker' endpoint_port='internal_speaker'/>
  <device_id id='far' endpoint_port='no&#127;where'/>
  <data> <output-mode> <m> <r v='7, 8'/></m></output-mode></data></tuning>)"));
    const TempFile bad("<d>");
    const auto loadGood = [&] {
        mArray.loadSpatializerXMLFile(good.path());
        // Parameters added later give more entries.
        mArray.getXMLProfileParams(1)[1] = 13;
        mArray.getXMLProfileParams(7)[1] = 12;
        for (const char* const device : {"a b", "default_internal_speaker", "far", "two\nlines"}) {
            mArray.getXMLTuningParams(device)[1] = 37;
        }
    };
    const auto choose = [&] {
        mArray.setCurrentProfile(3);
        mArray.setProfileGeqGains(3, Values(21, 5));
        mArray.setProfileGeqGains(-1, Values(20, 6));
        mArray.getProfileGeqGains(0);
        mArray.getXMLProfileParams(-9);
        mArray.getXMLTuningParams("asked");
        mArray.getSelectedTuningDevice(99);
        mArray.setSelectedTuningDevice(0, "two\nlines");
        mArray.setSelectedTuningDevice(3, "a b");
        mArray.loadSpatializerXMLFile(bad.path());
    };
    // clang-format off
    const struct { std::function<void()> act; std::string file, expected; } steps[] = {
        {[] {},    "",          kFresh},
        {loadGood, good.path(), kLoaded},
        {choose,   bad.path(),  kChosen},
    };
    // clang-format on
    for (auto [act, file, expected] : steps) {
        act();
        if (!file.empty()) {
            expected.replace(expected.find("FILE"), 4, file);
        }
        // More than once: a dump must change nothing.
        for (const int indent : {0, 5, -1}) {
            std::string out = "before ";
            mArray.dump(out, indent);
            EXPECT_EQ(out, "before " + indented(expected, indent == 5 ? 5 : 0));
        }
    }
}

std::promise<void>& holderIsIn() {
    static std::promise<void> in;
    return in;
}

std::promise<void>& holderMayGo() {
    static std::promise<void> go;
    return go;
}

TEST_F(DumpTest, GivesUpIfTheLockIsHeld) {
    // The warning about an unknown device is logged with the lock held. A dump that waited for the
    // lock would get it in the end, and show the state.
    __android_log_set_logger([](const __android_logger_data*, const char*) {
        holderIsIn().set_value();
        holderMayGo().get_future().wait_for(std::chrono::seconds(20));
    });
    auto holder = std::async(std::launch::async, [this] { mArray.getXMLTuningMixMatrix("x"); });
    holderIsIn().get_future().wait();
    std::string out;
    mArray.dump(out, 2);
    holderMayGo().set_value();
    holder.get();
    EXPECT_EQ(out, "  libspatializerparamstorage 1.0.0\n  could not lock\n");
    out.clear();
    mArray.dump(out, 0);
    EXPECT_EQ(out, kFresh);
}

}  // namespace
}  // namespace ormel::test
