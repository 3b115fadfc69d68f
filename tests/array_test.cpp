// The store of parameter lists. load_test covers what documents add to it.
#include <malloc.h>

#include <future>

#include "support/Documents.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

using Array = SpatializerParamArray;
constexpr char kTag[] = "OrmSpatializerParamArray";

// Must come first, before anything else creates the store.
TEST(FirstUse, CreatesOneStoreFromManyThreads) {
    LogCapture log;
    std::vector<std::future<Array*>> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.push_back(std::async(std::launch::async, [thread] {
            Array::getInstance().setProfileGeqGains(thread, {thread});
            return &Array::getInstance();
        }));
    }
    for (auto& thread : threads) {
        EXPECT_EQ(thread.get(), &Array::getInstance());
    }
    const char load[] = "loadSpatializerXMLFile(/vendor/etc/ormel/qsx-default-spatializer.xml)";
    EXPECT_THAT(log.take(), ::testing::Contains(debug(kTag, load)).Times(1));
}

using ArrayTest = StoreTest;

TEST_F(ArrayTest, StartsWithBuiltInProfilesOnly) {
    EXPECT_EQ(mArray.getCurrentProfile(), 1);
    EXPECT_EQ(mArray.getOutputChannelCount(), 2);
    EXPECT_EQ(mArray.getTuningCount(), 0);
    EXPECT_EQ(mArray.getTuningProfileCount(), 0);
    EXPECT_EQ(mArray.getMixMatrixCapacity(), 60);
    Values copy = {7};
    for (const int profile : {4, -2, kAll, INT32_MIN}) {
        EXPECT_EQ(mArray.getProfileParamsSize(profile), 0U);
        EXPECT_EQ(mArray.getProfileParams(profile, copy.data()), 0);
    }
    EXPECT_EQ(copy, Values{7});
    log.take();
    EXPECT_EQ(mArray.getProfileParams(3, nullptr), -22);
    EXPECT_EQ(text(log.take()), "D Array: getProfileParams(profile = 3)\n");
    Values mode(Array::kDefaultMixMatrix.begin(), Array::kDefaultMixMatrix.end());
    mode.insert(mode.begin(), {1, 0, 1});
    EXPECT_NE(listText(Array::mCommonParams).find(entry(2, "dom", mode)), std::string::npos);
}

TEST_F(ArrayTest, AddsAnEmptyListForAnUnknownName) {
    EXPECT_FALSE(mArray.isXMLProfileValid(-9));
    EXPECT_FALSE(mArray.isXMLTuningValid("x y"));
    EXPECT_EQ(mArray.getXMLProfileParams(-9), Values());
    EXPECT_EQ(mArray.getXMLTuningParams("x y"), Values());
    EXPECT_TRUE(mArray.isXMLProfileValid(-9));
    EXPECT_TRUE(mArray.isXMLTuningValid("x y"));
    const Values& none = mArray.getXMLTuningMixMatrix("x");
    EXPECT_EQ(none, Values());
    EXPECT_EQ(&mArray.getXMLTuningMixMatrix("x"), &none);
    EXPECT_EQ('\n' + text(log.take()), R"(
D Array: getXMLProfileParams(profile = -9)
D Array: getXMLTuningParams(device = x y)
W Array: getXMLTuningMixMatrix(): no mix matrix found with tuning device x
W Array: getXMLTuningMixMatrix(): no mix matrix found with tuning device x
)");
}

TEST_F(ArrayTest, KeepsGainsByProfile) {
    const Values& gains = mArray.getProfileGeqGains(42);
    EXPECT_EQ(gains, Values());
    mArray.setProfileGeqGains(42, Values(30, -5));
    EXPECT_EQ(gains, Values(30, -5));
    Values copied(29);
    EXPECT_EQ(mArray.copyProfileGeqGains(42, copied.data(), copied.size()), copied.size());
    EXPECT_EQ(copied, Values(29, -5));
    EXPECT_EQ(mArray.copyProfileGeqGains(43, copied.data(), copied.size()), 0U);
    // The copy added an entry, which a document's gains do not replace.
    const char geq[] = "<preset type='geq' id='43'> <data> <b> <b gain='1'/></b></data></preset>";
    load(document(geq + std::string("<profile id='43'> </profile>")));
    EXPECT_EQ(mArray.getProfileGeqGains(43), Values());
}

/** A document with one tuning, for device "d", with @p row as stress amounts and mix matrix. */
std::string documentWith(const std::string& row) {
    return document(
            "<tuning name='t' output_channels='4'> <device_id id='d' endpoint_port='usb'/>"
            "<data> <regulator-stress-amount value='" +
            row + "'/><output-mode> <m> <r v='" + row + "'/></m></output-mode></data></tuning>");
}

TEST_F(ArrayTest, KeepsReplacedListsWhileCallersHoldThem) {
    load(documentWith("7"));
    const Values& list = mArray.getXMLTuningParams("d");
    const Values& matrix = mArray.getXMLTuningMixMatrix("d");
    const Values& asked = mArray.getXMLTuningParams("e");
    const std::string before = listText(list);
    load(documentWith("8, 9"));
    load(documentWith("8, 9"));
    EXPECT_EQ(listText(list), before);
    EXPECT_EQ(matrix, Values{7});
    EXPECT_NE(before.find("16384:arsa 4 7\n"), std::string::npos);
    EXPECT_NE(listText(mArray.getXMLTuningParams("d")).find("16384:arsa 4 8 9\n"),
              std::string::npos);
    EXPECT_EQ(mArray.getXMLTuningMixMatrix("d"), (Values{8, 9}));
    EXPECT_EQ(&mArray.getXMLTuningParams("e"), &asked);
}

size_t heapInUse() {
#ifdef __GLIBC__
    return ::mallinfo2().uordblks;
#else
    return ::mallinfo().uordblks;
#endif
}

TEST_F(ArrayTest, FreesReplacedListsThatNoCallerHolds) {
    constexpr size_t kWords = 10000;
    const TempFile file(documentWith(entry(0, "", Values(kWords, 1)).substr(2)));
    const auto reload = [&] {
        mArray.loadSpatializerXMLFile(file.path());
        EXPECT_TRUE(mArray.isXMLTuningValid("d"));
        log.take();
        return heapInUse();
    };
    const size_t before = reload();
    for (int i = 0; i < 10; ++i) {
        reload();
    }
    EXPECT_LT(reload(), before + 2 * kWords * sizeof(int32_t));
}

TEST_F(ArrayTest, SelectsOnlyDevicesOfThePort) {
    const auto devices = [this] {
        std::string text;
        for (const int port : {0, 1, 2, 3, 4, 5, 6, 7, -1, INT32_MAX, INT32_MIN}) {
            text += mArray.getSelectedTuningDevice(port) + ":" +
                    mArray.getAvailableTuningDevices(port);
            text += std::to_string(mArray.getAvailableTuningDevicesLen(port)) + " ";
        }
        return text;
    };
    EXPECT_EQ(devices(),
              "default_internal_speaker:0 :0 :0 default_headphone:0 default_bluetooth:0 "
              "default_usb:0 :0 :0 :0 :0 :0 ");
    EXPECT_EQ(mArray.setSelectedTuningDevice(0, "default_internal_speaker"), -22);
    load(document(R"(<tuning name='t'> <device_id id='bb' endpoint_port='headphone'/>
        <device_id id='Z' endpoint_port='headphone'/><device_id id='a' endpoint_port='headphone'/>
        <device_id id='h' endpoint_port='hdmi'/><data> <output-mode> <m> <r v='7, 8'/></m>
        </output-mode></data></tuning>)"));
    // clang-format off
    const struct { int port; std::string device; bool valid; } choices[] = {
        {3, "bb", true},
        {3, "a",  true},
        {1, "h",  true},
        {3, "A",  false},
        {3, "",   false},
        {3, "h",  false},
        {4, "a",  false},
        {0, "d",  false},
    };
    // clang-format on
    for (const auto& [port, device, valid] : choices) {
        const std::string name = kPortNames[port];
        const std::string tried = "(port=" + name + ", device=" + device + ")";
        const std::string refused = device + " is not available for port " + name + ".";
        std::vector<LogLine> lines = {debug(kTag, "setSelectedTuningDevice" + tried)};
        if (!valid) {
            lines.push_back(error(kTag, "setSelectedTuningDevice(): tuningDevice " + refused));
        }
        EXPECT_EQ(mArray.isValidTuningDevice(port, device), valid) << device;
        EXPECT_EQ(mArray.setSelectedTuningDevice(port, device), valid ? 0 : -22) << device;
        EXPECT_EQ(log.take(), lines);
    }
    for (const int port : {-1, 7, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(mArray.setSelectedTuningDevice(port, "a"), -22);
    }
    EXPECT_EQ(devices(),
              "default_internal_speaker:0 h:h2 :0 a:Z a bb7 default_bluetooth:0 "
              "default_usb:0 :0 :0 :0 :0 :0 ");
    EXPECT_EQ(mArray.getXMLTuningMixMatrix("a"), (Values{7, 8}));
}

}  // namespace
}  // namespace ormel::test
