// SpatializerParamCache, the operations that effects call.
#include <kivparamstorage/KivParamStore.h>
#include <ormel/SpatializerParamCache.h>
#include <ormel/StoreFront.h>

#include <functional>
#include <numeric>

#include "support/Documents.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

constexpr char kOwn[] = "default_internal_speaker";
// The calls that load a tuning.
constexpr char kTuning[] = "2:vbon 1\n8:gebs 1\nall:commit\n";
constexpr char kReadMode[] = "get 2:dom 61\n";

/** The graphic equalizer's values, with @p gains cut or padded to twenty. */
Values bands(Values gains) {
    Values values(41, 20);
    gains.resize(20);
    std::iota(values.begin() + 1, values.end(), 100);
    std::copy(gains.begin(), gains.end(), values.begin() + 21);
    return values;
}

/** A packed list. */
Values pack(const std::vector<Call>& entries) {
    Values words = {kAll, static_cast<int32_t>(entries.size())};
    for (const Call& entry : entries) {
        words.insert(words.end(), {entry.device, 0, static_cast<int32_t>(entry.values.size())});
        std::copy(entry.code.begin(), entry.code.end(),
                  reinterpret_cast<char*>(&words[words.size() - 2]));
        words.insert(words.end(), entry.values.begin(), entry.values.end());
    }
    return words;
}

/** The calls that apply a built-in list, with @p mode in place of the speaker's output mode. */
template <typename List>
std::string builtIn(const List& list, const std::string& mode = "") {
    std::string lines = listText(list) + "all:commit\n";
    const size_t at = lines.find("2:dom");
    if (at != std::string::npos && !mode.empty()) {
        lines.replace(at, lines.find('\n', at) + 1 - at, mode);
    }
    return lines.substr(lines.find('\n') + 1);
}

/** Commits return 1, 2, 3 and so on; reads can give a negative count; calls can run a function. */
class FrontEffect : public RecordingEffect {
  public:
    int32_t setEffectParam(int32_t device, int32_t code, const int32_t* values,
                           int32_t count) override {
        whenCalled();
        return RecordingEffect::setEffectParam(device, code, values, count);
    }
    int32_t getEffectParam(int32_t device, int32_t code, int32_t* values, int32_t* count) override {
        whenCalled();
        const int32_t status = RecordingEffect::getEffectParam(device, code, values, count);
        *count = readsNegative ? -1 : *count;
        return status;
    }
    int32_t commitEffectParams(int32_t device) override {
        RecordingEffect::commitEffectParams(device);
        return ++commitStatus;
    }

    bool readsNegative = false;
    std::function<void()> whenCalled = [] {};
};

class FrontTest : public StoreTest {
  protected:
    FrontTest() { KivParamStore::getInstance().setDeviceProcParams({kivCode(AOON)}); }

    /** Tuning devices with mix matrices of several lengths, all with the same list. */
    void loadTunings(const std::string& channels) {
        const std::string row = entry(0, "", Values(70, 6)).substr(2);
        const std::string named = "output_channels='" + channels + "' name=";
        load(document(tuning(named + "'a'", kOwn, mixMatrix("7, 8")) +
                      tuning(named + "'b'", "none", "<data/>") +
                      tuning(named + "'c'", "long", mixMatrix(row)) +
                      "<tuning> <device_id id='buds' endpoint_port='headphone'/><b/></tuning>"));
        for (const char* const device : {kOwn, "none", "long", "buds"}) {
            mArray.getXMLTuningParams(device) = pack({set(2, "vbon", {1}), set(8, "gebs", {1})});
        }
        log.take();
    }

    std::string calls() { return text(std::exchange(effect.calls, {})); }

    SpatializerParamCache front;
    FrontEffect effect;
};

TEST_F(FrontTest, SetProfilePushesTheDocumentsList) {
    mArray.getXMLProfileParams(1) = pack(
            {set(kAll, "mdle", {1}), set(2, "vbon", {3}), set(kAll, "aoon", {}),
             set(8, "gebs", bands(Values(20, 9))), set(2, "gebs", Values(40)),
             set(2, "gebs", Values(42)), set(8, "dom", {1, 1, 2}), set(2, "dom", {5, 0, 1, 15})});
    const std::string unchanged = "2:dom 5 0 1 15\n";
    // Empty channels: no tunings.
    // clang-format off
    const struct { std::string channels, device; Values gains; std::string mode; } cases[] = {
        {"",  kOwn,   {},            unchanged},
        {"2", "long", {1, 2},        unchanged},
        {"3", kOwn,   Values(25, 4), "2:dom 5 7 8 0\n"},  // As many values as in the entry.
        {"4", "long", {5},           "2:dom 5 6 6 6\n"},
        {"4", "none", {5},           unchanged},
    };
    // clang-format on
    effect.readStatus = -1;
    for (const auto& [channels, device, gains, mode] : cases) {
        SCOPED_TRACE(channels + device);
        if (!channels.empty()) {
            loadTunings(channels);
            mArray.setSelectedTuningDevice(0, device);
        }
        mArray.setProfileGeqGains(1, gains);
        log.take();
        effect.commitStatus = 10;
        EXPECT_EQ(front.setProfile(1, &effect, false), 11);
        EXPECT_EQ(text(log.take()),
                  "D Cache: setProfile(profile=1, isOrmelContent=0)\n"
                  "D Array: getXMLProfileParams(profile = 1)\n");
        const std::string kept = (channels.empty() ? "" : "2:vbon 3\n") +
                                 std::string("all:aoon\n") + entry(8, "gebs", bands(gains));
        EXPECT_EQ(calls(), "all:mdle 1\n" + kept + "8:dom 1 1 2\n" + mode + "all:commit\n");

        // For the maker's own content, only parameters that the shared store names are pushed.
        const bool surround = channels > "2";
        EXPECT_EQ(front.setProfile(1, &effect, true), 12);
        EXPECT_EQ(calls(),
                  kept + (surround ? mode : "") + "all:commit\n" +
                          builtIn(SpatializerParamArray::mCommonParams, surround ? kReadMode : "") +
                          builtIn(SpatializerParamArray::mMovieProfileParams));
    }
}

TEST_F(FrontTest, SetProfilePushesBuiltInListsWithoutADocumentsList) {
    const std::string common = builtIn(SpatializerParamArray::mCommonParams);
    EXPECT_EQ(front.setProfile(2, &effect, false), 0);
    EXPECT_EQ(calls(), "");
    EXPECT_EQ(front.setProfile(2, &effect, true), 0);
    EXPECT_EQ(calls(), common + builtIn(SpatializerParamArray::mMusicProfileParams));
    EXPECT_EQ(front.setProfile(9, &effect, true), 0);
    EXPECT_EQ(calls(), common);
    EXPECT_EQ(text({log.take().back()}),
              "E Cache: setOrmelContentProfile() Invalid data for profile parameter values.\n");
    EXPECT_EQ(mArray.getCurrentProfile(), 9);
}

TEST_F(FrontTest, RefusesAnInvalidListBeforePushingAnything) {
    Values tooShort = pack({set(2, "aoon", {1})});
    tooShort[1] = 1000;
    for (const Values& list : {Values{}, Values{kAll}, tooShort}) {
        mArray.getXMLProfileParams(1) = list;
        mArray.getXMLTuningParams("d") = list;
        EXPECT_EQ(front.loadTuningDevice("d", &effect), -22);
        EXPECT_EQ(front.setProfile(1, &effect, true), -22);
        EXPECT_EQ(calls(), "");
        const std::string said = text(log.take());
        const char* const counted =
                "E EffectParamParser: validate() Expected 1000 parameters, found 2 parameters.\n";
        EXPECT_EQ(said.find(counted) != said.npos, list == tooShort);
        EXPECT_NE(said.find("E Cache: setProfile() Invalid data for setting parameter values.\n"),
                  said.npos);
    }
    mArray.getXMLProfileParams(1) = {kAll, 0};
    EXPECT_EQ(front.setProfile(1, &effect, false), 1);
    EXPECT_EQ(calls(), "all:commit\n");
}

TEST_F(FrontTest, StopsInAListThatLoops) {
    Values circle = pack({set(2, "vbm", {})});
    circle[1] = INT32_MAX;
    circle.back() = -3;
    mArray.getXMLProfileParams(1) = circle;
    mArray.getXMLTuningParams("d") = circle;
    const std::string expected = "2:vbm\n2:vbm\n2:vbm\n2:vbm\n2:vbm\nall:commit\n";
    EXPECT_EQ(front.setProfile(1, &effect, false), 1);
    EXPECT_EQ(calls(), expected);
    EXPECT_EQ(front.loadTuningDevice("d", &effect), 2);
    EXPECT_EQ(calls(), expected);
}

TEST_F(FrontTest, KeepsItsListWhenTheEffectLoadsAnotherDocument) {
    const Values list = pack({set(2, "vbm", {4}), set(2, "dom", {5, 0, 0}), set(2, "vbm", {6})});
    // The matrix is looked up only when its entry is reached.
    // clang-format off
    const struct { std::function<int32_t()> run; std::string mode; } cases[] = {
        {[&] { return front.setProfile(1, &effect, false); },   "2:dom 5 9 0\n"},
        {[&] { return front.loadTuningDevice(kOwn, &effect); }, "2:dom 5 0 0\n"},
    };
    // clang-format on
    for (const auto& [run, mode] : cases) {
        effect.whenCalled = [] {};
        loadTunings("3");
        mArray.getXMLProfileParams(1) = list;
        mArray.getXMLTuningParams(kOwn) = list;
        // Each call loads another document, which replaces the tuning's list and matrix.
        effect.whenCalled = [this] {
            load(document(tuning("name='z' output_channels='4'", kOwn, mixMatrix("9"))));
        };
        EXPECT_GT(run(), 0);
        EXPECT_EQ(calls(), "2:vbm 4\n" + mode + "2:vbm 6\nall:commit\n");
    }
}

TEST_F(FrontTest, FailsAtTheFirstUseOfANullEffect) {
    loadTunings("3");
    mArray.getXMLProfileParams(1) = pack({set(8, "gebs", bands({})), set(2, "dom", {1})});
    log.take();
    // clang-format off
    const struct { std::function<int32_t()> run; int32_t status; std::string messages; } cases[] = {
        {[&] { return front.setProfile(2, nullptr, false); }, 0, "D Cache: setProfile(profile=2, isOrmelContent=0)\n"},
        {[&] { return front.setProfile(2, nullptr, true); }, -22, "D Cache: setProfile(profile=2, isOrmelContent=1)\n"
                                                                  "D Array: getProfileParams(profile = -1)\n"},
        {[&] { return front.setProfile(1, nullptr, true); }, -22, "D Cache: setProfile(profile=1, isOrmelContent=1)\n"
                                                                  "D Array: getXMLProfileParams(profile = 1)\n"},
        {[&] { return front.setOrmelContentProfile(3, nullptr), 0; }, 0, "D Array: getProfileParams(profile = 3)\n"},
        {[&] { return front.loadTuning(nullptr); }, -22, "D Cache: loadTuning\n"
                                                         "D Cache: loadTuningDevice(default_internal_speaker)\n"
                                                         "D Array: getXMLTuningParams(device = default_internal_speaker)\n"},
        {[&] { return front.loadTuningDevice("x", nullptr); }, -22, "D Cache: loadTuningDevice(x)\n"},
        {[&] { return front.setSelectedTuningDevice(0, "long", nullptr); }, -22,
         "D Cache: setSelectedTuningDevice(port=internal_speaker, device=long)\n"
         "D Array: setSelectedTuningDevice(port=internal_speaker, device=long)\n"},
        {[&] { return front.setSelectedTuningDevice(0, "long", nullptr); }, 0,  // Already selected.
         "D Cache: setSelectedTuningDevice(port=internal_speaker, device=long)\n"},
        {[&] { return front.setProfileGeqGains({4}, nullptr); }, -22, ""},
    };
    // clang-format on
    for (const auto& [run, status, messages] : cases) {
        EXPECT_EQ(run(), status) << messages;
        EXPECT_EQ(text(log.take()), messages);
    }
    EXPECT_EQ(mArray.getProfileGeqGains(1), Values{4});
}

TEST_F(FrontTest, BuiltInListsKeepTheEffectsOutputModeButSwitchItOn) {
    loadTunings("3");
    const std::string full = entry(2, "dom", Values(61, 1));
    Values off(61, 1);
    off.front() = 0;
    // clang-format off
    const struct { int32_t readStatus; Values answer; bool readsNegative; std::string pushed; } cases[] = {
        {0,  {0, 7, 8},  false, "2:dom 1 7 8\n"},
        {0,  off,        false, full},
        {0,  {1, 7, 8},  false, ""},  // Already on.
        {-1, {0, 7, 8},  false, ""},
        {0,  Values(62), false, ""},  // More than the buffer holds.
        {0,  {0, 7, 8},  true,  ""},
    };
    // clang-format on
    for (const auto& [readStatus, answer, readsNegative, pushed] : cases) {
        effect.readStatus = readStatus;
        effect.answers["dom"] = answer;
        effect.readsNegative = readsNegative;
        front.setOrmelContentProfile(-1, &effect);
        EXPECT_EQ(calls(), builtIn(SpatializerParamArray::mCommonParams, kReadMode + pushed));
        EXPECT_EQ(text(log.take()),
                  "D Array: getProfileParams(profile = -1)\n"
                  "D Cache: setOrmelContentProfile(): Hardcoded dom parameter values skipped\n");
    }
}

TEST_F(FrontTest, LoadTuningLoadsTheSelectedDeviceOfEachPort) {
    EXPECT_FALSE(front.isTuningAvailable());
    EXPECT_EQ(front.loadTuningDevice(kOwn, &effect), -22);
    loadTunings("4");
    EXPECT_TRUE(front.isTuningAvailable());
    EXPECT_EQ(front.loadTuning(&effect), -22);
    EXPECT_EQ(calls(), kTuning);
    EXPECT_EQ(text(log.take()),
              "D Cache: loadTuning\nD Cache: loadTuningDevice(default_internal_speaker)\n"
              "D Array: getXMLTuningParams(device = default_internal_speaker)\n"
              "D Cache: loadTuningDevice(default_headphone)\n"
              "D Cache: loadTuningDevice(default_bluetooth)\n"
              "D Cache: loadTuningDevice(default_usb)\n");
    mArray.getXMLTuningParams("default_usb") = pack({set(8, "vbm", {})});
    EXPECT_EQ(front.loadTuning(&effect), 3);
    EXPECT_EQ(calls(), kTuning + std::string("8:vbm\nall:commit\n"));
    for (int port = -1; port < 8; ++port) {
        EXPECT_EQ(front.isValidPort(port), port == 0 || (port >= 3 && port <= 5)) << port;
    }
}

TEST_F(FrontTest, SelectingATuningDeviceLoadsIt) {
    loadTunings("3");
    const std::string reads = kReadMode;
    Values longMode(71, 6);
    longMode.front() = 3;
    // clang-format off
    const struct { int port; std::string device; int32_t readStatus; bool readsNegative; int32_t status; std::string calls; } cases[] = {
        {0,  kOwn,   0,  false, 0,   ""},  // Already selected.
        {0,  "x",    0,  false, -22, ""},
        {0,  "buds", 0,  false, -22, ""},
        {-1, "buds", 0,  false, -22, ""},
        {7,  "buds", 0,  false, -22, ""},
        {3,  "buds", 0,  false, 1,   kTuning},
        {0,  "long", 0,  false, 1,   reads + entry(2, "dom", longMode) + kTuning},
        {0,  "none", 0,  false, 1,   reads + kTuning},
        {0,  kOwn,   0,  false, 1,   reads + "2:dom 3 7 8\n" + kTuning},
        {0,  "long", -1, false, 1,   reads + kTuning},
        {0,  kOwn,   0,  true,  1,   reads + kTuning},
    };
    // clang-format on
    effect.answers["dom"] = {3, 4, 5, 6};
    for (const auto& [port, device, readStatus, readsNegative, status, expected] : cases) {
        SCOPED_TRACE(device);
        effect.readStatus = readStatus;
        effect.readsNegative = readsNegative;
        effect.commitStatus = 0;
        const std::string selected = status < 0 ? mArray.getSelectedTuningDevice(port) : device;
        EXPECT_EQ(front.setSelectedTuningDevice(port, device, &effect), status);
        EXPECT_EQ(calls(), expected);
        EXPECT_EQ(mArray.getSelectedTuningDevice(port), selected);
    }
    effect.readsNegative = false;
    log.take();
    front.setSelectedTuningDevice(0, "long", &effect);
    calls();
    EXPECT_EQ('\n' + text(log.take()), R"(
D Cache: setSelectedTuningDevice(port=internal_speaker, device=long)
D Array: setSelectedTuningDevice(port=internal_speaker, device=long)
D Cache: setSelectedTuningDevice(): Update the mix matrix with tuning long
D Cache: loadTuningDevice(long)
D Array: getXMLTuningParams(device = long)
)");
    loadTunings("2");
    EXPECT_EQ(front.setSelectedTuningDevice(0, kOwn, &effect), 3);
    EXPECT_EQ(calls(), kTuning);
}

TEST_F(FrontTest, StoresGainsAndPushesThemToAnEffectWithTwentyBands) {
    front.setProfile(2, &effect, false);
    Values two(20, 9);
    two[0] = 1;
    two[1] = -2;
    // Nothing is pushed after a failure.
    // clang-format off
    const struct { int32_t readStatus; size_t readCount; Values gains, pushed; } cases[] = {
        {0,  41, {1, -2},       two},
        {0,  41, Values(25, 4), Values(20, 4)},
        {0,  41, {},            Values(20, 9)},
        {-3, 41, {6},           {}},
        {0,  40, {7},           {}},
        {0,  42, {8},           {}},
    };
    // clang-format on
    for (const auto& [readStatus, readCount, gains, pushed] : cases) {
        SCOPED_TRACE(readCount);
        effect.readStatus = readStatus;
        effect.answers["gebs"] = bands(Values(20, 9));
        effect.answers["gebs"].resize(readCount);
        effect.commitStatus = 6;
        log.take();
        const bool fails = pushed.empty();
        EXPECT_EQ(front.setProfileGeqGains(gains, &effect), fails ? -22 : 7);
        EXPECT_EQ(calls(),
                  "get all:gebs 41\n" +
                          (fails ? "" : entry(kAll, "gebs", bands(pushed)) + "all:commit\n"));
        EXPECT_EQ(text(log.take()),
                  fails ? "E Cache: setProfileGeqGains(): could not get proper GEQ parameters!\n"
                        : "");
        EXPECT_EQ(mArray.getProfileGeqGains(2), gains);
        EXPECT_EQ(front.getProfileGeqGains(), gains);
    }
}

TEST_F(FrontTest, WorksOnTheCallersOwnStore) {
    SpatializerParamArray store{SpatializerParamArray::Empty()};
    store.getXMLTuningParams("d") = pack({set(2, "vmb", {3})});
    StoreFront own(store);
    EXPECT_EQ(own.loadTuningDevice("d", &effect), 1);
    EXPECT_EQ(own.setProfile(ORM_SPATIALIZER_PROFILE_CUSTOM, &effect, false), 0);
    EXPECT_EQ(calls(), "2:vmb 3\nall:commit\n");
    EXPECT_EQ(store.getCurrentProfile(), ORM_SPATIALIZER_PROFILE_CUSTOM);
    EXPECT_EQ(mArray.getCurrentProfile(), ORM_SPATIALIZER_PROFILE_MOVIE);
    EXPECT_FALSE(mArray.isXMLTuningValid("d"));
}

}  // namespace
}  // namespace ormel::test
