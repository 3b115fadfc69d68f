// The example documents, from file to effect.
#include <ormel/SpatializerParamCache.h>

#include <filesystem>
#include <sstream>

#include "support/Documents.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

using ExampleTest = StoreTest;

/** The values of some parameters that a device got; for long lists, count, first five, last two. */
std::string pushed(const RecordingEffect& effect, int32_t device, const std::string& codes) {
    std::string text;
    std::istringstream words(codes);
    for (std::string code; words >> code;) {
        for (const Values& values : effect.valuesOf(device, code)) {
            const bool isLong = values.size() > 8;
            text += code + (isLong ? " [" + std::to_string(values.size()) + "]" : "");
            for (size_t i = 0; i < values.size(); ++i) {
                const bool isShown = !isLong || i < 5 || i + 2 >= values.size();
                text += isShown ? ' ' + std::to_string(values[i]) : i == 5 ? " .." : "";
            }
            text += "; ";
        }
    }
    return text;
}

TEST_F(ExampleTest, EveryDocumentLoadsWithoutWarnings) {
    int documents = 0;
    for (const auto& file : std::filesystem::directory_iterator(ORMEL_EXAMPLES)) {
        if (file.path().extension() != ".xml") {
            continue;
        }
        SCOPED_TRACE(file.path());
        ++documents;
        SpatializerParamArray array;
        log.take();
        array.loadSpatializerXMLFile(file.path());
        for (const auto& [priority, tag, message] : log.take()) {
            EXPECT_LT(priority, ANDROID_LOG_WARN) << message;
        }
        EXPECT_EQ(array.getTuningProfileCount(), 4);
        for (int profile = 0; profile < 4; ++profile) {
            EXPECT_TRUE(array.isXMLProfileValid(profile));
        }
        for (const int port : kSupportedPorts) {
            EXPECT_TRUE(array.isValidTuningDevice(port, array.getSelectedTuningDevice(port)));
        }
    }
    // Including faulty.xml, whose mistakes only ormel-tuning reports.
    EXPECT_EQ(documents, 6);
}

// The lists stay in memory as long as the audio process runs.
TEST_F(ExampleTest, StoredListsHaveNoSpareCapacity) {
    mArray.loadSpatializerXMLFile(ORMEL_EXAMPLES "/tablet-quad.xml");
    for (int profile = 0; profile < 4; ++profile) {
        const Values& list = mArray.getXMLProfileParams(profile);
        EXPECT_EQ(list.capacity(), list.size());
    }
    for (const int port : kSupportedPorts) {
        const Values& list = mArray.getXMLTuningParams(mArray.getSelectedTuningDevice(port));
        EXPECT_EQ(list.capacity(), list.size());
    }
}

TEST_F(ExampleTest, EveryKindOfValueReachesTheEffect) {
    mArray.loadSpatializerXMLFile(ORMEL_EXAMPLES "/tablet-quad.xml");
    SpatializerParamCache front;
    RecordingEffect effect;
    EXPECT_EQ(front.setProfile(ORM_SPATIALIZER_PROFILE_MOVIE, &effect, false), 0);
    EXPECT_EQ(pushed(effect, kAll, "hvm rvse hvrc drcm gebs"),
              "hvm 2; rvse 1; hvrc 94 31856 12412 6610 1 3 3 2; drcm 3 -360 16 4 50 320; "
              "gebs [41] 20 47 141 234 328 .. 14 6; ");
    // The mix matrix replaces the speaker's endpoint and orientation too.
    EXPECT_EQ(pushed(effect, 2, "plb dea ieid vbm vbon iebs dom"),
              "plb 36; dea 12; ieid 2; vbm 2; vbon 3; iebs [41] 20 47 141 234 328 .. -83 -122; "
              "dom [61] 1 15 24 14904 0 .. 0 0; ");
    for (const int32_t device : kHeadphoneDevices) {
        EXPECT_EQ(pushed(effect, device, "plb dea ieid vbm vbon iebs dom"),
                  "plb 44; dea 6; ieid 3; vbm 0; vbon 3; iebs [41] 20 47 141 234 328 .. -141 -123; "
                  "dom 1 1 2; ");
    }
    EXPECT_EQ(front.loadTuningDevice("default_internal_speaker", &effect), 0);
    EXPECT_EQ(pushed(effect, 2, "aoon arsa aobs ceqt arbs rssa svm bmdt vbsf vbmf vbhg"),
              "aoon 1; arsa 4 24 92 68 56; aobs [102] 20 4 47 141 234 .. 24 23; "
              "ceqt [82] 4 20 -11 -32 -19 .. -43 -37; arbs [81] 20 63 125 188 281 .. 0 0; "
              "rssa [82] 4 20 0 0 0 .. 1 0; svm 3; bmdt [20] 4 85 130 280 -280 .. 18 210; "
              "vbsf 40 150; vbmf 120 500; vbhg -36 -76 -108 -152; ");
    EXPECT_EQ(front.loadTuningDevice("default_headphone", &effect), 0);
    EXPECT_EQ(pushed(effect, 8, "aobs ceqt rssa bmdt arsa vbsf"),
              "aobs [62] 20 2 47 141 234 .. 11 3; arsa 2 32 28; vbsf 40 180; ");
}

}  // namespace
}  // namespace ormel::test
