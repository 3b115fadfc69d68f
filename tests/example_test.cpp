// The example documents, from their files to the effect.
#include <ormel/SpatializerParamCache.h>

#include <filesystem>
#include <sstream>

#include "support/Documents.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

class ExampleTest : public StoreTest {
  protected:
    void SetUp() override { log.take(); }

    /**
     * Expects values that the effect gets with a profile or, if it is not empty, a device's tuning.
     *
     * @param rows  by ';': device, code, number of values, and some values behind their positions;
     *              a number of 0 means that there is no such entry
     */
    void expectRows(int profile, const std::string& device, const std::string& rows) {
        RecordingEffect effect;
        const int32_t status = device.empty() ? front.setProfile(profile, &effect, false)
                                              : front.loadTuningDevice(device, &effect);
        EXPECT_EQ(status, 0);
        std::istringstream all(rows);
        for (std::string row; std::getline(all, row, ';');) {
            SCOPED_TRACE(row);
            std::istringstream words(row);
            int32_t to = 0;
            std::string code;
            size_t count = 0;
            ASSERT_TRUE(words >> to >> code >> count);
            const auto pushed = effect.valuesOf(to == 0 ? kAll : to, code);
            ASSERT_EQ(pushed.size(), count == 0 ? 0U : 1U);
            ASSERT_TRUE(pushed.empty() || pushed[0].size() == count) << pushed[0].size();
            int32_t value = 0;
            for (size_t at = 0; words >> at && words.ignore() && words >> value;) {
                EXPECT_EQ(pushed.at(0).at(at), value) << at;
            }
        }
    }

    SpatializerParamCache front;
};

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
    // Without a word about faulty.xml either: its faults are for ormel-tuning to find.
    EXPECT_EQ(documents, 6);
}

TEST_F(ExampleTest, EveryKindOfValueReachesTheEffect) {
    mArray.loadSpatializerXMLFile(ORMEL_EXAMPLES "/tablet-quad.xml");
    // The mix matrix takes the place of the speaker's endpoint and orientation as well.
    expectRows(1, "", R"(0 hvm 1 0=2; 0 rvse 1 0=1; 0 hvrc 8 0=94 1=31856 7=2;
        0 drcm 6 0=3 1=-360 2=16 3=4 4=50 5=320; 2 plb 1 0=36; 2 dea 1 0=12; 2 ieid 1 0=2;
        0 gebs 41 0=20 1=47 20=19688 21=35 22=16 23=-7 40=6; 2 vbm 1 0=2; 2 vbon 1 0=3;
        2 iebs 41 0=20 1=47 20=19688 21=37 22=76 39=-83 40=-122;
        2 dom 61 0=1 1=15 2=24 3=14904 5=3624 15=7060 27=11 45=10 47=13298 55=9748 57=0 60=0)");
    for (const std::string device : {"8", "128", "16384"}) {
        std::string rows =
                "D plb 1 0=44; D dea 1 0=6; D ieid 1 0=3; D vbm 1 0=0; D vbon 1 0=3;"
                "D iebs 41 1=47 21=81 22=160 40=-123; D dom 3 0=1 1=1 2=2";
        for (size_t at; (at = rows.find('D')) != std::string::npos;) {
            rows.replace(at, 1, device);
        }
        expectRows(1, "", rows);
    }
    // Optimizer and equalizer go left, right, and then the surrounds.
    expectRows(0, "default_internal_speaker", R"(2 aoon 1 0=1; 2 arsa 5 0=4 1=24 2=92 3=68 4=56;
        2 aobs 102 0=20 1=4 2=47 21=19688 22=41 23=51 42=41 43=58 62=13 63=30 82=11 101=23;
        2 ceqt 82 0=4 1=20 2=-11 21=34 22=-7 41=45 42=7 61=57 62=14 81=-37;
        2 arbs 81 0=20 1=63 20=18750 21=-251 40=-141 41=-204 60=-93 61=1 65=0 74=1 80=0;
        2 rssa 82 0=4 1=20 12=2 16=10 34=2 36=8 54=1 57=7 73=2 75=6 80=1; 2 svm 1 0=3;
        2 bmdt 20 0=4 1=85 4=-280 19=210; 2 vbsf 2 0=40 1=150; 2 vbmf 2 0=120 1=500;
        2 vbhg 4 0=-36 1=-76 2=-108 3=-152)");
    expectRows(0, "default_headphone", R"(8 aobs 62 0=20 1=2 2=47 22=31 42=28 61=3; 8 ceqt 0;
        8 rssa 0; 8 bmdt 0; 8 arsa 3 0=2 1=32 2=28; 8 vbsf 2 0=40 1=180)");
}

}  // namespace
}  // namespace ormel::test
