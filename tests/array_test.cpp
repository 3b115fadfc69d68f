// The store of parameter lists, apart from what documents become.
#include <future>

#include "support/Documents.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

using Array = SpatializerParamArray;
using Lines = std::vector<LogLine>;
constexpr char kTag[] = "OrmSpatializerParamArray";

// Stands first, so that nothing has made the store before.
TEST(FirstUse, ByManyThreadsMakesOneStoreThatSerialisesThem) {
    LogCapture log;
    std::promise<void> start;
    const auto use = [started = start.get_future().share()](int first) {
        started.wait();
        for (int i = first; i < first + 100; ++i) {
            Array::getInstance().setProfileGeqGains(i, {i});
            Array::getInstance().getXMLProfileParams(i).push_back(i);
            Array::getInstance().getXMLTuningParams(std::to_string(i)).push_back(i);
            Array::getInstance().getSelectedTuningDevice(i);
        }
    };
    std::vector<std::future<void>> threads;
    for (int first = 0; first < 800; first += 100) {
        threads.push_back(std::async(std::launch::async, use, first));
    }
    start.set_value();
    threads.clear();
    for (int i = 0; i < 800; ++i) {
        EXPECT_EQ(Array::getInstance().getProfileGeqGains(i), Values{i});
        EXPECT_EQ(Array::getInstance().getXMLProfileParams(i), Values{i});
        EXPECT_EQ(Array::getInstance().getXMLTuningParams(std::to_string(i)), Values{i});
    }
    const std::string load =
            std::string("loadSpatializerXMLFile(") + Array::kDefaultTuningFile + ")";
    EXPECT_THAT(log.take(), ::testing::Contains(debug(kTag, load)).Times(1));
}

using ArrayTest = StoreTest;

TEST_F(ArrayTest, StartsWithDefaultsAndBuiltInLists) {
    EXPECT_EQ((Values{mArray.getCurrentProfile(), mArray.getTuningCount(),
                      mArray.getTuningProfileCount(), mArray.getOutputChannelCount(),
                      mArray.getMixMatrixCapacity()}),
              (Values{1, 0, 0, 2, 60}));
    const auto valuesOf = [](const auto& list) { return Values(list.begin(), list.end()); };
    std::map<int, Values> lists = {{0, valuesOf(Array::mDynamicProfileParams)},
                                   {1, valuesOf(Array::mMovieProfileParams)},
                                   {2, valuesOf(Array::mMusicProfileParams)},
                                   {3, valuesOf(Array::mCustomProfileParams)},
                                   {-1, valuesOf(Array::mCommonParams)}};
    for (const int profile : {0, 1, 2, 3, -1, 4, -2, kAll}) {
        EXPECT_EQ(mArray.getProfileParamsSize(profile), lists[profile].size() * 4) << profile;
        Values copy(460, 7777);
        EXPECT_EQ(mArray.getProfileParams(profile, copy.data()), 0);
        EXPECT_EQ(copy, join(lists[profile], Values(460 - lists[profile].size(), 7777))) << profile;
        EXPECT_EQ(mArray.getProfileParams(profile, nullptr), -22);
        const LogLine line =
                debug(kTag, "getProfileParams(profile = " + std::to_string(profile) + ")");
        EXPECT_EQ(log.take(), (Lines{line, line}));
    }
    // The speaker's mode in the common list, behind nine entries for all devices and ten of its own.
    EXPECT_EQ(unpack(Array::mCommonParams).at(1 + 9 + 10).values,
              join(Values{1, 0, 1}, valuesOf(Array::kDefaultMixMatrix)));
}

TEST_F(ArrayTest, RemembersWhatItIsAskedFor) {
    EXPECT_FALSE(mArray.isXMLProfileValid(-9) || mArray.isXMLTuningValid("x y"));
    EXPECT_TRUE(mArray.getXMLProfileParams(-9).empty() && mArray.getXMLTuningParams("x y").empty());
    EXPECT_TRUE(mArray.isXMLProfileValid(-9) && mArray.isXMLTuningValid("x y"));
    EXPECT_EQ(log.take(), (Lines{debug(kTag, "getXMLProfileParams(profile = -9)"),
                                 debug(kTag, "getXMLTuningParams(device = x y)")}));
    const Values& gains = mArray.getProfileGeqGains(42);
    EXPECT_EQ(gains, Values());
    mArray.setProfileGeqGains(42, Values(30, -5));
    EXPECT_EQ(gains, Values(30, -5));
    const Values& none = mArray.getXMLTuningMixMatrix("x");
    EXPECT_EQ(none, Values());
    EXPECT_EQ(&mArray.getXMLTuningMixMatrix("x"), &none);
    const LogLine line =
            warning(kTag, "getXMLTuningMixMatrix(): no mix matrix found with tuning device x");
    EXPECT_EQ(log.take(), (Lines{line, line}));
}

TEST_F(ArrayTest, SelectsAmongThePortsOwnTuningDevices) {
    const auto expectDevices = [this](const std::string& selected, const std::string& available) {
        std::string texts[2];
        for (const int port : {0, 1, 2, 3, 4, 5, 6, 7, -1, INT32_MAX, INT32_MIN}) {
            texts[0] += mArray.getSelectedTuningDevice(port) + ",";
            texts[1] += mArray.getAvailableTuningDevices(port) +
                        std::to_string(mArray.getAvailableTuningDevicesLen(port)) + ",";
        }
        EXPECT_EQ(texts[0], selected);
        EXPECT_EQ(texts[1], available);
    };
    expectDevices(
            "default_internal_speaker,,,default_headphone,default_bluetooth,default_usb,,,,,,",
            "0,0,0,0,0,0,0,0,0,0,0,");
    load(document(R"(<tuning name='t'> <device_id id='bb' endpoint_port='headphone'/>
        <device_id id='Z' endpoint_port='headphone'/><device_id id='a' endpoint_port='headphone'/>
        <device_id id='h' endpoint_port='hdmi'/><data> <output-mode> <m> <r v='7, 8'/></m>
        </output-mode></data></tuning>)"));
    const std::tuple<int, std::string, bool> choices[] = {
            {3, "bb", true},  {3, "a", true},     {3, "b", false},
            {3, "A", false},  {3, "a bb", false}, {3, "h", false},
            {4, "a", false},  {1, "h", true},     {0, "default_internal_speaker", false},
            {-1, "a", false}, {7, "a", false}};
    for (const auto& [port, device, valid] : choices) {
        EXPECT_EQ(mArray.isValidTuningDevice(port, device), valid) << device;
        EXPECT_EQ(mArray.setSelectedTuningDevice(port, device), valid ? 0 : -22) << device;
        const char* const name = portName(port);
        if (name != nullptr) {
            Lines lines = {debug(kTag, std::string("setSelectedTuningDevice(port=") + name +
                                               ", device=" + device + ")")};
            if (!valid) {
                lines.push_back(error(kTag, "setSelectedTuningDevice(): tuningDevice " + device +
                                                    " is not available for port " + name + "."));
            }
            EXPECT_EQ(log.take(), lines);
        }
    }
    expectDevices("default_internal_speaker,h,,a,default_bluetooth,default_usb,,,,,,",
                  "0,h2,0,Z a bb7,0,0,0,0,0,0,0,");
    EXPECT_EQ(mArray.getXMLTuningMixMatrix("a"), (Values{7, 8}));
}

}  // namespace
}  // namespace ormel::test
