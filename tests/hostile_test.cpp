// Documents that were made to do harm, or that time and updates have harmed.
#include <gtest/gtest.h>
#include <ormel/SpatializerParamCache.h>
#include <sys/stat.h>

#include <filesystem>
#include <locale>
#include <string>
#include <thread>
#include <vector>

#include "support/RecordingEffect.h"
#include "support/Store.h"

namespace ormel::test {
namespace {

const std::string kProfile = "\n <profile id='1'>\n </profile>\n";
const std::string kTuning =
        "\n <tuning name='t' output_channels='4'>\n  <device_id id='d' endpoint_port='usb'/>\n"
        "  <data>\n   <peak-value value='99999999999'/>\n   <regulator-overdrive "
        "value='-99999999999'/>\n   <bass-mbdrc-enable value='1'/>\n   <bass-mbdrc-tuning "
        "row='1,2147483648,3'/>\n  </data>\n </tuning>\n";

std::string repeat(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

std::string numbered(const std::string& before, const std::string& after, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) {
        all.append(before).append(std::to_string(i)).append(after);
    }
    return all;
}

std::string utf16(const std::string& text) {
    std::string bytes = "\xff\xfe";
    for (const char character : text) {
        bytes.append(1, character).append(1, '\0');
    }
    return bytes;
}

/** A pipe that nobody writes to: whoever opens it waits for ever. */
class Pipe {
  public:
    Pipe() : mPath(TempFile("").path()) { EXPECT_EQ(::mkfifo(mPath.c_str(), 0600), 0); }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() { ::unlink(mPath.c_str()); }

    const std::string& path() const { return mPath; }

  private:
    std::string mPath;
};

/** A document of so many bytes, most of them in elements that mean nothing. */
std::string padded(size_t size) {
    const std::string begin = "<d>" + kProfile;
    const std::string end = kTuning + "</d>";
    const std::string unknown = "<unknown a='" + std::string(1000, 'x') + "'/>\n";
    std::string text = begin;
    while (text.size() + unknown.size() + end.size() <= size) {
        text += unknown;
    }
    text.append(size - text.size() - end.size(), '\n');
    return text + end;
}

class HostileTest : public StoreTest {
  protected:
    /** Profiles and tunings that are there, or "refused" when nothing changed. */
    std::string outcome(const std::string& path) {
        const int profiles = mArray.getTuningProfileCount();
        const int tunings = mArray.getTuningCount();
        log.take();
        mArray.loadSpatializerXMLFile(path);
        const LogLine refusal =
                error("OrmSpatializerParamArray", "Spatializer Tuning XML parses error!");
        const std::vector<LogLine> lines = log.take();
        const bool refused = std::find(lines.begin(), lines.end(), refusal) != lines.end();
        const int newProfiles = mArray.getTuningProfileCount() - profiles;
        const int newTunings = mArray.getTuningCount() - tunings;
        EXPECT_TRUE(!refused || (newProfiles == 0 && newTunings == 0));
        return refused ? "refused" : std::to_string(newProfiles) + " " + std::to_string(newTunings);
    }
};

TEST_F(HostileTest, IsRefusedOrReadAsItStands) {
    const Pipe pipe;
    const TempFile secret("<profile id='7'/>");
    const std::string bomb = "<!DOCTYPE d [<!ENTITY a0 'ha'>" + [] {
        std::string levels;
        for (int i = 1; i < 12; ++i) {
            const std::string below = "&a" + std::to_string(i - 1) + ";";
            levels += "<!ENTITY a" + std::to_string(i) + " '" + repeat(below, 10) + "'>";
        }
        return levels;
    }() + "]>";
    const std::string matrix =
            "<output-mode>\n<m>\n<r v='" + repeat("1 ", 200000) + "'/>\n</m>\n</output-mode>\n";
    std::string prefixed;
    for (int i = 0; i < 1000; ++i) {
        const std::string prefix = "n" + std::to_string(i);
        prefixed += " xmlns:" + prefix + "='" + prefix + "' " + prefix + ":frequency='&e;'";
    }
    const struct {
        const char* what;
        std::string document;
        std::string outcome;
    } cases[] = {
            {"an empty file", "", "refused"},
            {"no root", "<!-- -->", "refused"},
            {"a root without children", "<d/>", "0 0"},
            {"a sound document", "<d>" + kProfile + kTuning + "</d>", "1 1"},
            {"UTF-16", utf16("<d>" + kProfile + kTuning + "</d>"), "1 1"},
            {"invalid UTF-8", "<d>" + kProfile + "\xc3\x28</d>", "refused"},
            {"a NUL", "<d>" + kProfile + std::string(1, '\0') + "</d>", "refused"},
            {"an entity bomb in text", bomb + "<d>" + kProfile + "&a11;</d>", "refused"},
            {"an entity bomb in an attribute", bomb + "<d x='&a11;'>" + kProfile + "</d>",
             "refused"},
            {"an external entity",
             "<!DOCTYPE d [<!ENTITY e SYSTEM '" + secret.path() + "'>]><d>\n &e;" + kProfile +
                     "</d>",
             "1 0"},
            {"an entity from a pipe",
             "<!DOCTYPE d [<!ENTITY e SYSTEM '" + pipe.path() + "'>]><d>\n &e;" + kProfile + "</d>",
             "1 0"},
            {"a DTD from a pipe",
             "<!DOCTYPE d SYSTEM '" + pipe.path() + "'><d>" + kProfile + "</d>", "1 0"},
            {"a thousand levels", repeat("<d>\n", 1000) + repeat("</d>\n", 1000), "refused"},
            {"ten thousand attributes",
             "<d>" + kProfile + "<authorized_technologies>\n<global_setting " +
                     numbered("a", "='1' ", 10000) + "/>\n</authorized_technologies></d>",
             "1 0"},
            {"one long text in many attributes",
             "<!DOCTYPE d [<!ENTITY e '" + std::string(4 << 20, '1') + "'>]><d>\n<profile id='1' " +
                     numbered("a", "='&e;' ", 5000) + ">\n<drc-metadata " +
                     numbered("a", "='&e;' ", 5000) + "/>\n</profile>\n</d>",
             "refused"},
            {"one long text under many prefixes",
             "<!DOCTYPE d [<!ENTITY e '" + std::string(4 << 20, '1') +
                     "'>]><d>\n<tuning name='t'>\n" + "<data>\n<virtual-bass-subgains" + prefixed +
                     "/>\n<audio-optimizer-bands>\n<b" + prefixed +
                     "/>\n</audio-optimizer-bands></data>\n</tuning>\n</d>",
             "refused"},
            {"an attribute of 16 MiB",
             "<d>" + kProfile + "<a b='" + std::string(16 << 20, '1') + "'/></d>", "refused"},
            {"16 MiB of elements", padded(size_t{16} << 20), "1 1"},
            {"a byte more", padded((size_t{16} << 20) + 1), "refused"},
            {"a text of ten million bytes",
             "<d>" + kProfile + "<a>" + std::string(10000000, 'x') + "</a>" + kTuning + "</d>",
             "1 1"},
            {"a byte more in pieces",
             "<d>" + kProfile + "<a>" + std::string(5000000, 'x') + "&amp;" +
                     std::string(5000000, 'x') + "</a>" + kTuning + "</d>",
             "refused"},
            {"a hundred thousand names", "<d>" + numbered("<n", "/>\n", 100000) + kProfile + "</d>",
             "1 0"},
            {"a thousand profiles of one id",
             "<d>" +
                     repeat("<profile id='1'>\n<endpoint_type id='headphone'>\n</endpoint_type>\n"
                            "</profile>\n",
                            1000) +
                     "</d>",
             "1000 0"},
            {"rows without end",
             "<d>\n<tuning name='t'>\n<device_id id='d' endpoint_port='usb'/>\n<data>\n" + matrix +
                     "</data>\n</tuning>\n</d>",
             "0 1"},
            {"one long row for many devices",
             "<d>\n<tuning name='t'>\n" +
                     numbered("<device_id id='", "' endpoint_port='usb'/>\n", 100) + "<data>\n" +
                     matrix + "</data>\n</tuning>\n</d>",
             "refused"},
            {"one long row for many endpoints",
             "<d>\n<profile id='1'>\n" + repeat("<endpoint_type/>\n", 400) + "<drc-metadata row='" +
                     repeat("1 ", 50000) + "'/>\n</profile>\n</d>",
             "refused"},
            {"one long name for many devices",
             "<d>\n<tuning name='" + std::string(100000, 't') + "'>\n" +
                     numbered("<device_id id='", "' endpoint_port='usb'/>\n", 200) +
                     "<data>\n</data>\n</tuning>\n</d>",
             "refused"},
            {"profiles without children", "<d>\n" + repeat("<profile id='1'/>\n", 100000) + "</d>",
             "refused"},
            {"bands without children",
             "<d>\n<tuning name='t'>\n<data>\n" + repeat("<audio-optimizer-bands/>\n", 100000) +
                     "</data>\n</tuning>\n</d>",
             "refused"},
    };
    for (const auto& [what, document, expected] : cases) {
        EXPECT_EQ(outcome(TempFile(document).path()), expected) << what;
    }
    EXPECT_FALSE(mArray.isXMLProfileValid(7));
    EXPECT_EQ(outcome(::testing::TempDir()), "refused") << "a directory";
    const TempFile secretive("<d>" + kProfile + "</d>");
    std::filesystem::permissions(secretive.path(), std::filesystem::perms::none);
    if (::access(secretive.path().c_str(), R_OK) != 0) {
        EXPECT_EQ(outcome(secretive.path()), "refused") << "no permission";
    }
}

TEST_F(HostileTest, IsAllThereOrNotAtAllWhereverItIsCut) {
    const std::string document = "<d>" + kProfile + kTuning + "</d>\n";
    for (size_t length = 0; length <= document.size(); ++length) {
        const bool isWhole = length + 1 >= document.size();
        EXPECT_EQ(outcome(TempFile(document.substr(0, length)).path()), isWhole ? "1 1" : "refused")
                << length;
    }
}

/** Commas for the decimal point and between thousands. */
class Commas : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(HostileTest, NumbersAreReadTheSameInEveryLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new Commas));
    load("<d>" + kTuning + "</d>");
    std::locale::global(before);
    RecordingEffect effect;
    EXPECT_EQ(SpatializerParamCache().loadTuningDevice("d", &effect), 0);
    EXPECT_EQ(effect.valuesOf(0x4000, "arod"), std::vector<std::vector<int32_t>>{{INT32_MIN}});
    EXPECT_EQ(effect.valuesOf(0x4000, "bmdt"), std::vector<std::vector<int32_t>>{{1}});
}

TEST_F(HostileTest, LeavesTheBuiltInListsInService) {
    load("<d>");
    SpatializerParamCache cache;
    RecordingEffect effect;
    EXPECT_EQ(cache.setProfile(1, &effect, true), 0);
    EXPECT_EQ(effect.calls.size(), 57 + 1 + 27 + 1U);
    EXPECT_EQ(effect.valuesOf(0x2, "dsb"), std::vector<std::vector<int32_t>>{{88}});
    effect.calls.clear();
    EXPECT_EQ(cache.setProfile(1, &effect, false), 0);
    EXPECT_EQ(cache.loadTuning(&effect), -22);
    EXPECT_EQ(cache.setSelectedTuningDevice(0, "default_internal_speaker", &effect), 0);
    EXPECT_EQ(cache.setSelectedTuningDevice(0, "other", &effect), -22);
    EXPECT_FALSE(cache.isTuningAvailable());
    EXPECT_EQ(effect.calls, std::vector<Call>{});
}

TEST_F(HostileTest, ServesManyThreads) {
    load("<d>" + kProfile + kTuning + "</d>");
    std::vector<std::thread> threads;
    for (int id = 0; id < 8; ++id) {
        threads.emplace_back([this, id] {
            RecordingEffect effect;
            SpatializerParamCache cache;
            for (int i = 0; i < 50; ++i) {
                EXPECT_EQ(cache.loadTuningDevice("d", &effect), 0);
                EXPECT_EQ(cache.setSelectedTuningDevice(5, "d", &effect), 0);
                mArray.setProfileGeqGains(id, {i});
                EXPECT_EQ(mArray.getProfileGeqGains(id), std::vector<int32_t>{i});
                mArray.setCurrentProfile(id);
                mArray.getXMLTuningMixMatrix("unknown");
                EXPECT_EQ(mArray.getAvailableTuningDevices(5), "d");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace
}  // namespace ormel::test
