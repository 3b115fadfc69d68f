// Malicious and damaged documents, and the store under many threads.
#include <gtest/gtest.h>
#include <ormel/SpatializerParamCache.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <locale>
#include <numeric>
#include <shared_mutex>
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

/** A pipe without a writer: opening it for reading blocks for ever. */
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

/** Parameter entities, each with ten references to the one before it. */
std::string parameterLevels(const std::string& names) {
    std::string levels;
    for (size_t i = 1; i < names.size(); ++i) {
        levels += std::string("<!ENTITY % ") + names[i] + " '" +
                  repeat(std::string("&#37;") + names[i - 1] + ";", 10) + "'>";
    }
    return levels;
}

/** Parameter entities e0, e1, ..., each with a reference to the next one. */
std::string nestedParameters(int count) {
    std::string entities;
    for (int i = 0; i < count; ++i) {
        entities += "<!ENTITY % e" + std::to_string(i) + " '&#37;e" + std::to_string(i + 1) + ";'>";
    }
    return entities + "<!ENTITY % e" + std::to_string(count) + " ''>";
}

/** A document of @p size bytes, most of them in unknown elements. */
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
    /** Numbers of new profiles and tunings, or "refused". */
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
        const std::string added = std::to_string(newProfiles) + " " + std::to_string(newTunings);
        if (refused) {
            EXPECT_EQ(added, "0 0");
        }
        return refused ? "refused" : added;
    }
};

TEST_F(HostileTest, RefusesOrReadsADocumentWithinItsBounds) {
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
    const auto root = [](const std::string& content) { return "<d>" + content + "</d>"; };
    const auto typed = [&root](const std::string& declarations, const std::string& content) {
        return "<!DOCTYPE d [" + declarations + "]>" + root(content);
    };
    const std::string levels = "<!ENTITY % a '<!---->'>" + parameterLevels("abcde");
    const std::string later = std::string(100000, '\n') + kProfile;
    const std::string tooMany = kProfile + "<a " + numbered("a", "='' ", 40000) + "/>";
    const std::string longEntity = "<!ENTITY e '" + std::string(4 << 20, '1') + "'>";
    const std::string tuningOf = "\n<tuning name='t'>\n";
    const std::string device = "<device_id id='d' endpoint_port='usb'/>\n";
    const std::string half(5000000, 'x');
    // clang-format off
    const struct { const char* what; std::string document, outcome; } cases[] = {
        {"an empty file", "", "refused"},
        {"no root", "<!-- -->", "refused"},
        {"a root without children", "<d/>", "0 0"},
        {"a valid document", root(kProfile + kTuning), "1 1"},
        {"UTF-16", utf16(root(kProfile + kTuning)), "1 1"},
        {"invalid UTF-8", root(kProfile + "\xc3\x28"), "refused"},
        {"a NUL", root(kProfile + std::string(1, '\0')), "refused"},
        {"an entity bomb in text", bomb + root(kProfile + "&a11;"), "refused"},
        {"an entity bomb in an attribute", bomb + "<d x='&a11;'>" + kProfile + "</d>", "refused"},
        {"many references to one long parameter entity",
         typed("<!ENTITY % e '" + repeat("<!-- -->", 10000) + "'>" + repeat("%e;", 30000), kProfile), "refused"},
        {"more parameter entities than libxml2 accepts, before all other text", typed(levels + "%e;", later), "refused"},
        {"the same with a blank after them", typed(levels + "%e; ", later), "refused"},
        {"sixty nested parameter entities, and a blank after them", typed(nestedParameters(60) + "%e0; ", kProfile), "refused"},
        {"a malformed reference before a blank, in a parameter entity",
         typed("<!ENTITY % x \"<!ENTITY y &#37;a 'v'>\"> %x; ", kProfile), "refused"},
        {"a thousand default attributes",
         typed("<!ATTLIST a" + numbered(" a", " CDATA ''", 1000) + ">", repeat("<a/>", 1000) + kProfile), "refused"},
        {"a few default attributes",
         typed("<!ATTLIST a x CDATA '1' xmlns:p CDATA 'p'>", repeat("<a p:y='1'/>", 1000) + kProfile), "1 0"},
        {"messages about one long namespace",
         "<d xmlns:p='" + std::string(100000, 'p') + "' xmlns:q='" + std::string(100000, 'p') + "'>" +
             repeat("<a p:x='' q:x=''/>", 1000) + kProfile + "</d>", "refused"},
        {"messages about unknown prefixes", root(repeat("<p:a/>", 100000) + kProfile), "1 0"},
        {"an external entity", typed("<!ENTITY e SYSTEM '" + secret.path() + "'>", "\n &e;" + kProfile), "1 0"},
        {"an entity from a pipe", typed("<!ENTITY e SYSTEM '" + pipe.path() + "'>", "\n &e;" + kProfile), "1 0"},
        {"a DTD from a pipe", "<!DOCTYPE d SYSTEM '" + pipe.path() + "'>" + root(kProfile), "1 0"},
        {"a catalog from a pipe",
         "<?oasis-xml-catalog catalog='" + pipe.path() + "'?><!DOCTYPE d SYSTEM 's'>" + root(kProfile), "1 0"},
        {"a thousand levels", repeat("<d>\n", 1000) + repeat("</d>\n", 1000), "refused"},
        {"ten thousand attributes",
         root(kProfile + "<authorized_technologies>\n<global_setting " + numbered("a", "='1' ", 10000) +
              "/>\n</authorized_technologies>"), "1 0"},
        {"forty thousand attributes", root(tooMany), "refused"},
        {"forty thousand attributes after a document type", "<!DOCTYPE d>" + root(tooMany), "refused"},
        {"one long text in many attributes",
         typed(longEntity, "\n<profile id='1' " + numbered("a", "='&e;' ", 5000) + ">\n<drc-metadata " +
               numbered("a", "='&e;' ", 5000) + "/>\n</profile>\n"), "refused"},
        {"one long text under many prefixes",
         typed(longEntity, tuningOf + "<data>\n<virtual-bass-subgains" + prefixed + "/>\n<audio-optimizer-bands>\n<b" +
               prefixed + "/>\n</audio-optimizer-bands></data>\n</tuning>\n"), "refused"},
        {"an attribute of 16 MiB", root(kProfile + "<a b='" + std::string(16 << 20, '1') + "'/>"), "refused"},
        {"16 MiB of elements", padded(size_t{16} << 20), "1 1"},
        {"a byte more", padded((size_t{16} << 20) + 1), "refused"},
        {"a text of ten million bytes", root(kProfile + "<a>" + half + half + "</a>" + kTuning), "1 1"},
        {"a byte more in pieces", root(kProfile + "<a>" + half + "&amp;" + half + "</a>" + kTuning), "refused"},
        {"a hundred thousand names", root(numbered("<n", "/>\n", 100000) + kProfile), "1 0"},
        {"a thousand profiles with one id",
         root(repeat("<profile id='1'>\n<endpoint_type id='headphone'>\n</endpoint_type>\n</profile>\n", 1000)), "1000 0"},
        {"a list of 9 MB and the first profile's id repeated",
         root("\n<preset type='ieq' id='1'>\n<data>\n<bands>\n" + repeat("<band_ieq frequency='1' target='1'/>", 20000) +
              "</bands></data></preset>\n<profile id='1'>\n" +
              repeat("<endpoint_type id='headphone'>\n<include ieq_preset='1'/></endpoint_type>", 18) +
              "</profile><profile id='1'>\n</profile>"), "2 0"},
        {"very many rows", root(tuningOf + device + "<data>\n" + matrix + "</data>\n</tuning>\n"), "0 1"},
        {"one long row for many devices",
         root(tuningOf + numbered("<device_id id='", "' endpoint_port='usb'/>\n", 100) + "<data>\n" + matrix +
              "</data>\n</tuning>\n"), "refused"},
        {"one long row for many endpoints",
         root("\n<profile id='1'>\n" + repeat("<endpoint_type/>\n", 400) + "<drc-metadata row='" + repeat("1 ", 50000) +
              "'/>\n</profile>\n"), "refused"},
        {"one long name for many devices",
         root("\n<tuning name='" + std::string(100000, 't') + "'>\n" +
              numbered("<device_id id='", "' endpoint_port='usb'/>\n", 200) + "<data>\n</data>\n</tuning>\n"), "refused"},
        {"profiles without children", root("\n" + repeat("<profile id='1'/>\n", 100000)), "refused"},
        {"bands without children",
         root(tuningOf + "<data>\n" + repeat("<audio-optimizer-bands/>\n", 100000) + "</data>\n</tuning>\n"), "refused"},
    };
    // clang-format on
    ::testing::internal::CaptureStderr();
    for (const auto& [what, document, expected] : cases) {
        EXPECT_EQ(outcome(TempFile(document).path()), expected) << what;
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(mArray.isXMLProfileValid(7));
    EXPECT_EQ(outcome(::testing::TempDir()), "refused") << "a directory";
    const TempFile secretive("<d>" + kProfile + "</d>");
    std::filesystem::permissions(secretive.path(), std::filesystem::perms::none);
    if (::access(secretive.path().c_str(), R_OK) != 0) {
        EXPECT_EQ(outcome(secretive.path()), "refused") << "no permission";
    }
}

TEST_F(HostileTest, LoadsATruncatedDocumentEntirelyOrNotAtAll) {
    const std::string document = "<d>" + kProfile + kTuning + "</d>\n";
    for (size_t length = 0; length <= document.size(); ++length) {
        const bool isWhole = length + 1 >= document.size();
        EXPECT_EQ(outcome(TempFile(document.substr(0, length)).path()), isWhole ? "1 1" : "refused")
                << length;
    }
}

// The host's standard library needs run-time type information for locales.
#if defined(__GXX_RTTI) || !defined(__GLIBCXX__)
/** Commas as decimal point and thousands separator. */
class Commas : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(HostileTest, ReadsNumbersTheSameInEveryLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new Commas));
    load("<d>" + kTuning + "</d>");
    std::locale::global(before);
    RecordingEffect effect;
    EXPECT_EQ(SpatializerParamCache().loadTuningDevice("d", &effect), 0);
    EXPECT_EQ(effect.valuesOf(0x4000, "arod"), std::vector<std::vector<int32_t>>{{INT32_MIN}});
    EXPECT_EQ(effect.valuesOf(0x4000, "bmdt"), std::vector<std::vector<int32_t>>{{1}});
}
#endif

constexpr int kThreads = 8;
constexpr size_t kRounds = 12;

/** Reads a list that other threads may have replaced. */
void expectSound(const std::vector<int32_t>& list) {
    EXPECT_GT(std::accumulate(list.begin(), list.end(), int64_t{0}), 0);
}

TEST_F(HostileTest, AllowsEveryOperationOnEveryThread) {
    const std::string own = "default_internal_speaker";
    const std::string documents[] = {ORMEL_EXAMPLES "/tablet-quad.xml",
                                     ORMEL_EXAMPLES "/phone-multi-tuning.xml"};
    for (const std::string& document : documents) {
        mArray.loadSpatializerXMLFile(document);
    }
    // Logging would make the threads wait for each other.
    __android_log_set_minimum_priority(ANDROID_LOG_FATAL);
    // The store's isValidTuningDevice() takes no lock, and must not run during a load.
    std::shared_mutex loads;
    const auto serve = [&](int id) {
        SpatializerParamCache front;
        RecordingEffect effect;
        effect.answers = {{"gebs", std::vector<int32_t>(41)}, {"dom", {0, 1, 2}}};
        const int profile = id % 4;
        const auto apply = [&](size_t) { EXPECT_EQ(front.setProfile(profile, &effect, false), 0); };
        const auto setGains = [&](size_t round) {
            EXPECT_EQ(front.setProfileGeqGains(std::vector<int32_t>(round % 40), &effect), 0);
        };
        // Many front operations: two rarely run at the same moment.
        for (size_t round = 0; round < 8 * kRounds; ++round) {
            apply(round);
            setGains(round);
            effect.calls.clear();
        }
        const std::function<void(size_t)> operations[] = {
                apply,
                setGains,
                [&](size_t) { EXPECT_EQ(front.setProfile(profile, &effect, true), 0); },
                [&](size_t) { front.setOrmelContentProfile(-1, &effect); },
                [&](size_t) { EXPECT_EQ(front.loadTuning(&effect), 0); },
                [&](size_t) { EXPECT_EQ(front.loadTuningDevice(own, &effect), 0); },
                [&](size_t round) {
                    const std::string device = round % 2 ? own : "internal_speaker_portrait";
                    EXPECT_EQ(front.setSelectedTuningDevice(0, device, &effect), 0);
                },
                [&](size_t) { front.getProfileGeqGains(); },
                [&](size_t) { EXPECT_TRUE(front.isTuningAvailable()); },
                [&](size_t) { EXPECT_TRUE(front.isValidPort(0)); },
                [&](size_t) {
                    std::vector<int32_t> list(mArray.getProfileParamsSize(profile) / 4);
                    EXPECT_EQ(mArray.getProfileParams(profile, list.data()), 0);
                    expectSound(list);
                },
                [&](size_t) { EXPECT_TRUE(mArray.isXMLProfileValid(profile)); },
                [&](size_t) { expectSound(mArray.getXMLProfileParams(profile)); },
                [&](size_t) { EXPECT_TRUE(mArray.isXMLTuningValid(own)); },
                [&](size_t) { expectSound(mArray.getXMLTuningParams(own)); },
                [&](size_t) { expectSound(mArray.getXMLTuningMixMatrix(own)); },
                [&](size_t round) {
                    mArray.setProfileGeqGains(profile, std::vector<int32_t>(round * 2));
                    mArray.getProfileGeqGains(profile);
                },
                [&](size_t) {
                    int32_t gains[20];
                    EXPECT_LE(mArray.copyProfileGeqGains(profile, gains, 20), 20U);
                },
                [&](size_t) { EXPECT_GT(mArray.getAvailableTuningDevicesLen(3), 0); },
                [&](size_t) { EXPECT_FALSE(mArray.getAvailableTuningDevices(3).empty()); },
                [&](size_t) { EXPECT_FALSE(mArray.getSelectedTuningDevice(0).empty()); },
                [&](size_t) { EXPECT_EQ(mArray.setSelectedTuningDevice(0, own), 0); },
                [&](size_t) {
                    const std::shared_lock<std::shared_mutex> noLoad(loads);
                    EXPECT_TRUE(mArray.isValidTuningDevice(0, own));
                },
                [&](size_t round) {
                    const std::lock_guard<std::shared_mutex> load(loads);
                    mArray.loadSpatializerXMLFile(documents[round % 2]);
                },
                [&](size_t) {
                    mArray.setCurrentProfile(profile);
                    EXPECT_EQ(mArray.getCurrentProfile() / 4, 0);
                },
                [&](size_t) { EXPECT_GT(mArray.getTuningCount(), 0); },
                [&](size_t) { EXPECT_GT(mArray.getTuningProfileCount(), 0); },
                [&](size_t) { EXPECT_GT(mArray.getOutputChannelCount(), 1); },
                [&](size_t) { EXPECT_EQ(mArray.getMixMatrixCapacity(), 60); },
                [&](size_t) {
                    std::string state;
                    mArray.dump(state, 0);
                    EXPECT_FALSE(state.empty());
                },
                [&](size_t) { EXPECT_FALSE(SpatializerParamArray().isXMLTuningValid(own)); },
        };
        for (size_t round = 0; round < kRounds; ++round) {
            for (size_t i = 0; i < std::size(operations); ++i) {
                operations[(i + 4 * static_cast<size_t>(id)) % std::size(operations)](round);
            }
            effect.calls.clear();
        }
    };
    std::vector<std::thread> threads;
    for (int id = 0; id < kThreads; ++id) {
        threads.emplace_back(serve, id);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace
}  // namespace ormel::test
