#include <kivparamstorage/KivParamStore.h>
#include <ormel/SpatializerParamCache.h>

#include <numeric>
#include <optional>

#include "support/Documents.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

using Calls = std::vector<Call>;
using Lines = std::vector<LogLine>;

constexpr char kTag[] = "OrmSpatializerParamCache";
constexpr char kArrayTag[] = "OrmSpatializerParamArray";
const Call kReadMode = {"get", 2, "dom", {61}};
const Calls kTuningCalls = {set(2, "vbon", {1}), set(8, "gebs", {1}), commit()};

/** The graphic equalizer's values with as many of some gains as there are bands. */
Values bands(Values gains) {
    Values frequencies(20);
    std::iota(frequencies.begin(), frequencies.end(), 100);
    gains.resize(20);
    return join(Values{20}, frequencies, gains);
}

/** What applying a built-in list comes to when no entry is special. */
template <typename List>
Calls builtIn(const List& list) {
    Calls calls = unpack(list);
    calls.erase(calls.begin());
    return join(calls, Calls{commit()});
}

/** Counts its commits in their statuses, and may give reads a count of its own. */
class FrontEffect : public RecordingEffect {
  public:
    int32_t getEffectParam(int32_t device, int32_t code, int32_t* values, int32_t* count) override {
        const int32_t status = RecordingEffect::getEffectParam(device, code, values, count);
        *count = readCount.value_or(*count);
        return status;
    }
    int32_t commitEffectParams(int32_t device) override {
        RecordingEffect::commitEffectParams(device);
        return ++commitStatus;
    }

    std::optional<int32_t> readCount;
};

class FrontTest : public StoreTest {
  protected:
    FrontTest() { KivParamStore::getInstance().setDeviceProcParams({kivCode(AOON)}); }

    /** Tuning devices with mix matrices of several lengths, all with the same list. */
    void loadTunings(const std::string& channels) {
        std::map<std::string, std::string> matrices = {
                {"default_internal_speaker", "7, 8"}, {"none", ""}, {"long", ""}};
        for (int i = 0; i < 70; ++i) {
            matrices["long"] += "6,";
        }
        std::string text =
                "<tuning name='t'> <device_id id='buds' endpoint_port='headphone'/><b/>"
                "</tuning>";
        for (const auto& [name, matrix] : matrices) {
            text += "<tuning name='" + name + "' output_channels='" + channels +
                    "'> <device_id id='" + name + "' endpoint_port='internal_speaker'/>" +
                    "<data> <output-mode> <m> <r v='" + matrix +
                    "'/></m></output-mode></data></tuning>";
        }
        load(document(text));
        for (const char* const name : {"buds", "default_internal_speaker", "none", "long"}) {
            mArray.getXMLTuningParams(name) = pack({kTuningCalls[0], kTuningCalls[1]});
        }
        log.take();
    }

    /** Takes the effect's calls. */
    Calls calls() { return std::exchange(effect.calls, {}); }

    SpatializerParamCache front;
    FrontEffect effect;
};

TEST_F(FrontTest, AProfileIsAppliedEntryByEntry) {
    mArray.getXMLProfileParams(1) =
            pack({set(kAll, "mdle", {1}), set(2, "vbon", {3}), set(kAll, "aoon", {}),
                  set(8, "gebs", bands(Values(20, 9))), set(2, "gebs", Values(40)),
                  set(8, "dom", {1, 1, 2}), set(2, "dom", {1, 0, 1, 15})});
    const Values own = {1, 0, 1, 15};
    // Channels when there are tunings, selected device, gains; the mode, and whether it is filtered.
    const std::tuple<const char*, const char*, Values, Values, bool> cases[] = {
            {"", "", {}, own, true},
            {"2", "long", {1, 2}, own, true},
            {"3", "default_internal_speaker", Values(25, 4), {1, 7, 8, 0}, false},
            {"4", "long", {5}, {1, 6, 6, 6}, false},
            {"4", "none", {5}, own, false}};
    effect.readStatus = -1;
    for (const auto& [channels, device, gains, mode, filtered] : cases) {
        SCOPED_TRACE(std::string(channels) + device);
        const bool hasTunings = *channels != '\0';
        if (hasTunings) {
            loadTunings(channels);
            mArray.setSelectedTuningDevice(0, device);
        }
        mArray.setProfileGeqGains(1, gains);
        log.take();
        effect.commitStatus = 10;
        EXPECT_EQ(front.setProfile(1, &effect, false), 11);
        EXPECT_EQ(log.take(), (Lines{debug(kTag, "setProfile(profile=1, isOrmelContent=0)"),
                                     debug(kArrayTag, "getXMLProfileParams(profile = 1)")}));
        const Calls bass(hasTunings ? 1 : 0, set(2, "vbon", {3}));
        const Calls middle = {set(kAll, "aoon", {}), set(8, "gebs", bands(gains))};
        const Calls modes = {set(8, "dom", {1, 1, 2}), set(2, "dom", mode)};
        EXPECT_EQ(calls(),
                  join(Calls{set(kAll, "mdle", {1})}, bass, middle, modes, Calls{commit()}));

        // Of the maker's own content, only what belongs to the device processing is kept.
        EXPECT_EQ(front.setProfile(1, &effect, true), 12);
        auto common = builtIn(SpatializerParamArray::mCommonParams);
        if (hasTunings && *channels > '2') {
            *std::find_if(common.begin(), common.end(), [](const Call& call) {
                return call.device == 2 && call.code == "dom";
            }) = kReadMode;
        }
        EXPECT_EQ(calls(), join(bass, middle, Calls(filtered ? 0 : 1, modes[1]), Calls{commit()},
                                common, builtIn(SpatializerParamArray::mMovieProfileParams)));
    }
}

TEST_F(FrontTest, AnUndefinedProfileHasItsBuiltInListsOnly) {
    EXPECT_EQ(front.setProfile(2, &effect, false), 0);
    EXPECT_EQ(calls(), Calls{});
    EXPECT_EQ(mArray.getCurrentProfile(), 2);
    EXPECT_EQ(front.setProfile(2, &effect, true), 0);
    const Calls common = builtIn(SpatializerParamArray::mCommonParams);
    EXPECT_EQ(calls(), join(common, builtIn(SpatializerParamArray::mMusicProfileParams)));
    EXPECT_EQ(front.setProfile(9, &effect, true), 0);
    EXPECT_EQ(calls(), common);
    EXPECT_EQ(log.take().back(),
              error(kTag, "setOrmelContentProfile() Invalid data for profile parameter values."));
    EXPECT_FALSE(mArray.isXMLProfileValid(2));
}

TEST_F(FrontTest, AMalformedListIsRefusedWhole) {
    Values tooFew = pack({set(2, "aoon", {1})});
    tooFew[1] = 3;
    for (const Values& list : {Values{}, Values{kAll}, tooFew}) {
        mArray.getXMLProfileParams(1) = list;
        mArray.getXMLTuningParams("d") = list;
        EXPECT_EQ(front.loadTuningDevice("d", &effect), -22);
        EXPECT_EQ(front.setProfile(1, &effect, true), -22);
        EXPECT_EQ(calls(), Calls{});
        EXPECT_EQ(log.take().back(),
                  error(kTag, "setProfile() Invalid data for setting parameter values."));
    }
    mArray.getXMLProfileParams(1) = {kAll, 0};
    EXPECT_EQ(front.setProfile(1, &effect, false), 1);
    EXPECT_EQ(calls(), Calls{commit()});
}

TEST_F(FrontTest, TheBuiltInOutputModeOnlySwitchesTheEffectsOwnOn) {
    loadTunings("3");
    Values full(61, 3);
    full.front() = 0;
    Values fullOn = full;
    fullOn.front() = 1;
    // Status and values of the read, its count when it is another; what is pushed.
    const std::tuple<int32_t, Values, std::optional<int32_t>, Calls> cases[] = {
            {0, {0, 7, 8}, {}, {set(2, "dom", {1, 7, 8})}},
            {0, full, {}, {set(2, "dom", fullOn)}},
            {0, {1, 7, 8}, {}, {}},
            {-1, {0, 7, 8}, {}, {}},
            {0, full, 62, {}},
            {0, {0, 7, 8}, -1, {}}};
    for (const auto& [status, answer, count, pushed] : cases) {
        effect.readStatus = status;
        effect.answers["dom"] = answer;
        effect.readCount = count;
        front.setOrmelContentProfile(-1, &effect);
        EXPECT_EQ(log.take(),
                  (Lines{debug(kArrayTag, "getProfileParams(profile = -1)"),
                         debug(kTag,
                               "setOrmelContentProfile(): Hardcoded dom parameter values "
                               "skipped")}));
        const Calls all = builtIn(SpatializerParamArray::mCommonParams);
        // 9 entries for all devices and 10 of the speaker come before its mode.
        const Calls before(all.begin(), all.begin() + 19);
        EXPECT_EQ(calls(),
                  join(before, Calls{kReadMode}, pushed, Calls(all.begin() + 20, all.end())));
    }
}

TEST_F(FrontTest, TuningsAreLoadedPortByPort) {
    EXPECT_FALSE(front.isTuningAvailable());
    EXPECT_EQ(front.loadTuningDevice("default_usb", &effect), -22);
    EXPECT_EQ(log.take(), Lines{debug(kTag, "loadTuningDevice(default_usb)")});
    EXPECT_FALSE(mArray.isXMLTuningValid("default_usb"));
    loadTunings("4");
    EXPECT_TRUE(front.isTuningAvailable());
    EXPECT_EQ(front.loadTuning(&effect), -22);
    EXPECT_EQ(calls(), kTuningCalls);
    EXPECT_EQ(log.take(),
              (Lines{debug(kTag, "loadTuning"),
                     debug(kTag, "loadTuningDevice(default_internal_speaker)"),
                     debug(kArrayTag, "getXMLTuningParams(device = default_internal_speaker)"),
                     debug(kTag, "loadTuningDevice(default_headphone)"),
                     debug(kTag, "loadTuningDevice(default_bluetooth)"),
                     debug(kTag, "loadTuningDevice(default_usb)")}));
    mArray.getXMLTuningParams("default_usb") = pack({set(0x4000, "vbm", {})});
    EXPECT_EQ(front.loadTuning(&effect), 3);
    EXPECT_EQ(calls(), join(kTuningCalls, Calls{set(0x4000, "vbm", {}), commit()}));
}

TEST_F(FrontTest, SelectingATuningDeviceLoadsIt) {
    loadTunings("3");
    const std::string own = "default_internal_speaker";
    const Calls longer = {kReadMode, set(2, "dom", join(Values{3}, Values(70, 6)))};
    effect.answers["dom"] = {3, 4, 5, 6};
    // Status and count of the read; the result, and the calls ahead of the tuning's own.
    const std::tuple<int, std::string, int32_t, std::optional<int32_t>, int32_t, Calls> cases[] = {
            {0, own, 0, {}, 0, {}},
            {0, "nowhere", 0, {}, -22, {}},
            {0, "buds", 0, {}, -22, {}},
            {-1, "buds", 0, {}, -22, {}},
            {7, "buds", 0, {}, -22, {}},
            {3, "buds", 0, {}, 1, {}},
            {0, "long", 0, {}, 1, longer},
            {0, "none", 0, {}, 1, {kReadMode}},
            {0, own, 0, {}, 1, {kReadMode, set(2, "dom", {3, 7, 8})}},
            {0, "long", -1, {}, 1, {kReadMode}},
            {0, own, 0, -1, 1, {kReadMode}},
            {0, "long", 0, 62, 1, {kReadMode}}};
    for (const auto& [port, device, readStatus, readCount, result, before] : cases) {
        SCOPED_TRACE(device);
        effect.readStatus = readStatus;
        effect.readCount = readCount;
        effect.commitStatus = 0;
        const std::string selected = result == -22 ? mArray.getSelectedTuningDevice(port) : device;
        EXPECT_EQ(front.setSelectedTuningDevice(port, device, &effect), result);
        EXPECT_EQ(calls(), join(before, result == 1 ? kTuningCalls : Calls{}));
        EXPECT_EQ(mArray.getSelectedTuningDevice(port), selected);
    }
    loadTunings("2");
    EXPECT_EQ(front.setSelectedTuningDevice(0, own, &effect), 2);
    EXPECT_EQ(calls(), kTuningCalls);
}

TEST_F(FrontTest, SelectingATuningDeviceSaysSo) {
    loadTunings("4");
    const auto asked = [](const std::string& device) {
        return "setSelectedTuningDevice(port=internal_speaker, device=" + device + ")";
    };
    const std::string own = "default_internal_speaker";
    const std::pair<std::string, Lines> cases[] = {
            {own, {debug(kTag, asked(own))}},
            {"x",
             {debug(kTag, asked("x")), debug(kArrayTag, asked("x")),
              error(kArrayTag,
                    "setSelectedTuningDevice(): tuningDevice x is not available for port "
                    "internal_speaker.")}},
            {"long",
             {debug(kTag, asked("long")), debug(kArrayTag, asked("long")),
              debug(kTag, "setSelectedTuningDevice(): Update the mix matrix with tuning long"),
              debug(kTag, "loadTuningDevice(long)"),
              debug(kArrayTag, "getXMLTuningParams(device = long)")}}};
    for (const auto& [device, said] : cases) {
        front.setSelectedTuningDevice(0, device, &effect);
        EXPECT_EQ(log.take(), said);
    }
}

TEST_F(FrontTest, GainsAreStoredAndGoToAnEffectOfTwentyBands) {
    front.setProfile(2, &effect, false);
    effect.answers["gebs"] = bands(Values(20, 9));
    Values two(20, 9);
    two[0] = 1;
    two[1] = -2;
    const Call read = {"get", kAll, "gebs", {41}};
    // Status and count of the read; the gains, and what becomes of them, nothing if it failed.
    const std::tuple<int32_t, int32_t, Values, Values> cases[] = {
            {0, 41, {1, -2}, two},
            {0, 41, Values(25, 4), Values(20, 4)},
            {0, 41, {}, Values(20, 9)},
            {-3, 41, {6}, {}},
            {0, 40, {7}, {}},
            {0, 42, {8}, {}},
            {0, -1, {9}, {}}};
    for (const auto& [status, count, gains, bandGains] : cases) {
        SCOPED_TRACE(count);
        effect.readStatus = status;
        effect.readCount = count;
        effect.commitStatus = 6;
        log.take();
        const bool fails = bandGains.empty();
        EXPECT_EQ(front.setProfileGeqGains(gains, &effect), fails ? -22 : 7);
        EXPECT_EQ(calls(), fails ? Calls{read}
                                 : (Calls{read, set(kAll, "gebs", bands(bandGains)), commit()}));
        EXPECT_EQ(log.take(), Lines(fails ? 1 : 0, error(kTag,
                                                         "setProfileGeqGains(): could not get "
                                                         "proper GEQ parameters!")));
        EXPECT_EQ(mArray.getProfileGeqGains(2), gains);
        EXPECT_EQ(&front.getProfileGeqGains(), &mArray.getProfileGeqGains(2));
    }
}

TEST_F(FrontTest, FourPortsHaveTuningDevices) {
    for (int port = -1; port < 8; ++port) {
        EXPECT_EQ(front.isValidPort(port), port == 0 || (port >= 3 && port <= 5)) << port;
    }
}

}  // namespace
}  // namespace ormel::test
