// What this library adds to what cannot be saved: the XML parser's work, and the effect's calls.
#include <android/log.h>
#include <benchmark/benchmark.h>
#include <kivparamstorage/KivParamStore.h>
#include <libxml/parser.h>
#include <malloc.h>
#include <ormel/SpatializerParamCache.h>
#include <ormel/TagIterator.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "Allocations.h"
#include "BenchDocument.h"

namespace ormel::bench {

namespace {

constexpr char kTablet[] = ORMEL_EXAMPLES "/tablet-quad.xml";

[[noreturn]] void fail(const std::string& what) {
    (void)std::fprintf(stderr, "ormel_bench: %s\n", what.c_str());
    std::_Exit(2);
}

void check(bool condition, const char* what) {
    if (!condition) {
        fail(std::string("the work was not done: ") + what);
    }
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/** A tuning document in a file, and what it must become. */
struct Document {
    std::string name;
    std::string path;
    size_t size;
    size_t profiles;
};

/** A file in the folder for temporary ones, gone with the program. */
class TempFile {
  public:
    explicit TempFile(const std::string& content) {
        const int fd = ::mkstemp(mPath.data());
        check(fd >= 0, "temporary file");
        ::close(fd);
        std::ofstream(mPath, std::ios::binary) << content;
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile() { ::unlink(mPath.c_str()); }

    const std::string& path() const { return mPath; }

  private:
    std::string mPath = std::filesystem::temp_directory_path() / "ormel-bench-XXXXXX";
};

/**
 * Keeps its parameters' values by device and code, and locks them, as an effect must that is told
 * on one thread and processes on another.
 */
class KeepingEffect : public IEffectOrm {
  public:
    int32_t setEffectParam(int32_t device, int32_t code, const int32_t* values,
                           int32_t count) override {
        const std::lock_guard<std::mutex> lock(mLock);
        ++calls;
        mValues[{device, code}].assign(values, values + count);
        return 0;
    }

    int32_t getEffectParam(int32_t, int32_t, int32_t* values, int32_t* count) override {
        *values = 1;
        *count = 61;
        return 0;
    }

    int32_t commitEffectParams(int32_t) override {
        ++calls;
        return 0;
    }

    using Values = std::map<std::pair<int32_t, int32_t>, std::vector<int32_t>>;
    const Values& values() const { return mValues; }

    uint32_t calls = 0;

  private:
    std::mutex mLock;
    Values mValues;
};

/** Writes down the calls that a floor repeats. */
class WritingEffect : public KeepingEffect {
  public:
    int32_t setEffectParam(int32_t device, int32_t code, const int32_t* values,
                           int32_t count) override {
        words.insert(words.end(), {device, code, count});
        words.insert(words.end(), values, values + count);
        return KeepingEffect::setEffectParam(device, code, values, count);
    }

    int32_t commitEffectParams(int32_t device) override {
        words.insert(words.end(), {device, 0, kCommit});
        return KeepingEffect::commitEffectParams(device);
    }

    static constexpr int32_t kCommit = -1;
    std::vector<int32_t> words;
};

void parseOnly(const std::string& path) {
    xmlDoc* const document = xmlReadFile(path.c_str(), nullptr, 0);
    check(document != nullptr, "parse");
    xmlFreeDoc(document);
}

void checkLoaded(SpatializerParamArray& array, const Document& document) {
    check(array.getTuningProfileCount() == static_cast<int32_t>(document.profiles), "profiles");
    check(array.getTuningCount() == static_cast<int32_t>(document.profiles), "tunings");
    const auto last = static_cast<int>(document.profiles) - 1;
    check(array.getXMLProfileParams(last).size() > 500, "words of the last profile");
}

double secondsOf(const std::function<void()>& run) {
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/**
 * Has what was freed merged, which malloc puts off until somebody asks for a large block: who frees
 * is to have it in his own time, and not in another's.
 */
void settleHeap() {
    std::vector<char> large(size_t{4} << 10);
    benchmark::DoNotOptimize(large.data());
}

double median(std::vector<double> values) {
    if (values.empty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/**
 * Some work and its floor, each a function that does it once and returns the seconds. The two take
 * turns, so that a machine that is not equally fast all the time is so to both.
 */
class Comparison {
  public:
    Comparison(std::string name, std::function<double()> work, std::function<double()> floor)
        : mName(std::move(name)), mWork(std::move(work)), mFloor(std::move(floor)) {}

    void run(benchmark::State& state) {
        for ([[maybe_unused]] const auto iteration : state) {
            mFloorTimes.push_back(mFloor());
            mWorkTimes.push_back(mWork());
            state.SetIterationTime(mWorkTimes.back());
        }
    }

    const std::string& name() const { return mName; }
    double floor() const { return median(mFloorTimes); }
    double work() const { return median(mWorkTimes); }
    double ratio() const { return work() / floor(); }

  private:
    std::string mName;
    std::function<double()> mWork;
    std::function<double()> mFloor;
    std::vector<double> mWorkTimes;
    std::vector<double> mFloorTimes;
};

/** The times are kept where they are taken. */
class SilentReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>&) override {}
};

double loadOnce(const Document& document) {
    auto array = std::make_unique<SpatializerParamArray>();
    const double time = secondsOf([&] {
        array->loadSpatializerXMLFile(document.path);
        settleHeap();
    });
    checkLoaded(*array, document);
    array.reset();
    settleHeap();
    return time;
}

double parseOnce(const Document& document) {
    return secondsOf([&] {
        parseOnly(document.path);
        settleHeap();
    });
}

/** A front operation, and the floor of making its calls. */
struct Operation {
    std::string name;
    std::function<void(IEffectOrm*)> run;
    std::vector<int32_t> words;
    uint32_t calls = 0;
    KeepingEffect::Values values;
    /** The parameters that the shared store is asked about. */
    std::vector<int32_t> questions;
};

Operation makeOperation(std::string name, std::function<void(IEffectOrm*)> run) {
    WritingEffect effect;
    run(&effect);
    check(effect.calls > 90, "calls of a front operation");
    std::vector<int32_t> words = effect.words;
    return {std::move(name), std::move(run), std::move(words), effect.calls, effect.values(), {}};
}

/** Makes the calls that were written down, and nothing else. */
void repeatCalls(const Operation& operation, IEffectOrm* effect) {
    for (const int32_t code : operation.questions) {
        benchmark::DoNotOptimize(KivParamStore::getInstance().isDeviceProcParamInProfile(code));
    }
    const std::vector<int32_t>& words = operation.words;
    for (const int32_t* word = words.data(); word != words.data() + words.size();) {
        const int32_t count = word[2];
        if (count == WritingEffect::kCommit) {
            effect->commitEffectParams(word[0]);
            word += 3;
        } else {
            effect->setEffectParam(word[0], word[1], word + 3, count);
            word += 3 + count;
        }
    }
}

void checkCalls(const Operation& operation, const std::function<void(IEffectOrm*)>& run) {
    KeepingEffect effect;
    run(&effect);
    check(effect.calls == operation.calls, "number of calls");
    check(effect.values() == operation.values, "words");
}

/** Compares an operation with its calls alone, each on an effect of its own. */
Comparison compareCalls(const Operation& operation) {
    const auto repeat = [&operation](IEffectOrm* effect) { repeatCalls(operation, effect); };
    checkCalls(operation, operation.run);
    checkCalls(operation, repeat);
    return {operation.name,
            [run = operation.run, effect = std::make_shared<KeepingEffect>()] {
                return secondsOf([&] { run(effect.get()); });
            },
            [repeat, effect = std::make_shared<KeepingEffect>()] {
                return secondsOf([&] { repeat(effect.get()); });
            }};
}

void printRow(const std::string& what, double ratio, double reach) {
    // Benchmarks that were filtered out leave nothing to compare.
    if (std::isfinite(ratio)) {
        std::printf("%-68s %8.2f %8.2f  %s\n", what.c_str(), ratio, reach,
                    ratio <= reach ? "met" : "MISSED");
    }
}

void printHeapRows(const Document& document) {
    const HeapUse parse = heapUseOf([&] { parseOnly(document.path); });
    SpatializerParamArray array;
    const HeapUse load = heapUseOf([&] { array.loadSpatializerXMLFile(document.path); });
    checkLoaded(array, document);

    size_t words = 0;
    for (int profile = 0; profile < static_cast<int>(document.profiles); ++profile) {
        words += array.getXMLProfileParams(profile).size();
        words += array.getProfileGeqGains(profile).size();
    }
    for (const Port port : kSupportedPorts) {
        const std::string names = array.getAvailableTuningDevices(port);
        for (size_t at = 0; at < names.size();) {
            const size_t end = std::min(names.find(' ', at), names.size());
            const std::string device = names.substr(at, end - at);
            words += array.getXMLTuningParams(device).size();
            words += array.getXMLTuningMixMatrix(device).size();
            at = end + 1;
        }
    }
    printRow("peak heap of the load / of the tree parse, " + document.name,
             static_cast<double>(load.peakBytes) / static_cast<double>(parse.peakBytes), 0.45);
    printRow("heap kept after the load / its lists and matrices, " + document.name,
             static_cast<double>(load.bytes) / static_cast<double>(words * sizeof(int32_t)), 1.5);
    if (document.path == kTablet) {
        printRow("heap allocations of the load, " + document.name,
                 static_cast<double>(load.allocations), 2000);
    }
}

void printAllocationRow(const std::string& what, const std::function<void(IEffectOrm*)>& run,
                        double reach) {
    KeepingEffect effect;
    run(&effect);
    const HeapUse use = heapUseOf([&] { run(&effect); });
    printRow("heap allocations per " + what, static_cast<double>(use.allocations), reach);
}

void loadIntoStore(const std::string& path) {
    auto& array = SpatializerParamArray::getInstance();
    array.~SpatializerParamArray();
    new (&array) SpatializerParamArray;
    array.loadSpatializerXMLFile(path);
    check(array.getTuningCount() > 0, "load");
}

std::vector<int32_t> codesOf(const std::vector<int32_t>& list) {
    std::vector<int32_t> codes;
    for (size_t at = 2; at < list.size(); at += 3 + static_cast<size_t>(list[at + 2])) {
        codes.push_back(list[at + 1]);
    }
    return codes;
}

size_t countProfiles(const std::string& document) {
    constexpr std::string_view kEnd = "</profile>";
    size_t count = 0;
    for (size_t at = document.find(kEnd); at != std::string::npos;
         at = document.find(kEnd, at + 1)) {
        ++count;
    }
    return count;
}

/** What a fresh process does first, as its argument names it. */
constexpr char kFirstLoad[] = "--first-load";
constexpr char kFirstParse[] = "--first-parse";

/** Does it to a document, and prints the seconds that it takes. */
void runFirst(const std::string& what, const std::string& path) {
    __android_log_set_logger([](const __android_logger_data*, const char*) {});
    const double seconds = secondsOf([&] {
        if (what == kFirstParse) {
            parseOnly(path);
            return;
        }
        SpatializerParamArray array;
        array.loadSpatializerXMLFile(path);
        check(array.getTuningCount() > 0, "first load");
    });
    std::printf("%.9f\n", seconds);
}

struct PipeCloser {
    void operator()(std::FILE* pipe) const { ::pclose(pipe); }
};

double secondsOfFirst(const std::string& what, const Document& document) {
    const std::string command =
            "/proc/" + std::to_string(::getpid()) + "/exe " + what + ' ' + document.path;
    // NOLINTNEXTLINE(cert-env33-c): the command is this program.
    const std::unique_ptr<std::FILE, PipeCloser> pipe(::popen(command.c_str(), "r"));
    double seconds = 0;
    check(pipe != nullptr && std::fscanf(pipe.get(), "%lf", &seconds) == 1, "a fresh process");
    return seconds;
}

// libxml2 prints errors through a C-style variadic function.
// NOLINTNEXTLINE(cert-dcl50-cpp)
void ignoreXmlError(void*, const char*, ...) {}

void run() {
    __android_log_set_logger([](const __android_logger_data*, const char*) {});
    xmlSetGenericErrorFunc(nullptr, ignoreXmlError);
    // While an iterator lives, libxml2 stays set up, for the parse as for the load.
    const TagIterator keepsXmlAlive;

    const std::string seed = readFile(kTablet);
    check(!seed.empty(), "reading the tablet's document");
    std::vector<std::unique_ptr<TempFile>> files;
    std::vector<Document> documents;
    const auto add = [&](const std::string& name, const std::string& text) {
        files.push_back(std::make_unique<TempFile>(text));
        documents.push_back({name, files.back()->path(), text.size(), countProfiles(text)});
    };
    add("20 KB", shrinkDocument(seed));
    documents.push_back({"tablet example", kTablet, seed.size(), countProfiles(seed)});
    add("100 KB", growDocument(seed, 100'000));
    add("1 MB", growDocument(seed, 1'000'000));
    add("10 MB", growDocument(seed, 10'000'000));
    loadIntoStore(kTablet);
    SpatializerParamCache cache;
    std::vector<Operation> operations = {
            makeOperation("setProfile",
                          [&cache](IEffectOrm* effect) { cache.setProfile(1, effect, false); }),
            makeOperation("setProfile, maker's own content",
                          [&cache](IEffectOrm* effect) { cache.setProfile(1, effect, true); }),
            makeOperation("loadTuning", [&cache](IEffectOrm* effect) { cache.loadTuning(effect); }),
    };
    operations[1].questions = codesOf(SpatializerParamArray::getInstance().getXMLProfileParams(1));
    std::vector<Comparison> loads;
    loads.reserve(documents.size());
    for (const Document& document : documents) {
        loads.emplace_back(
                document.name, [&document] { return loadOnce(document); },
                [&document] { return parseOnce(document); });
    }
    const Document& tablet = documents[1];
    std::vector<Comparison> firsts;
    firsts.emplace_back(
            "first load", [&tablet] { return secondsOfFirst(kFirstLoad, tablet); },
            [&tablet] { return secondsOfFirst(kFirstParse, tablet); });
    std::vector<Comparison> calls;
    calls.reserve(operations.size());
    for (const Operation& operation : operations) {
        calls.push_back(compareCalls(operation));
    }
    for (std::vector<Comparison>* const comparisons : {&loads, &firsts, &calls}) {
        for (Comparison& comparison : *comparisons) {
            const auto run = [&comparison](benchmark::State& state) { comparison.run(state); };
            benchmark::RegisterBenchmark(comparison.name().c_str(), run)->UseManualTime();
        }
    }
    SilentReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    std::printf("%-68s %8s %8s\n", "what, as a ratio to its floor", "ratio", "reach");
    std::map<std::string, double> perByte;
    for (size_t i = 0; i < documents.size(); ++i) {
        const Comparison& load = loads[i];
        perByte[load.name()] = load.work() / static_cast<double>(documents[i].size);
        printRow("whole load / tree parse alone, " + load.name(), load.ratio(), 0.85);
    }
    printRow("first load of a process / first tree parse, tablet example", firsts[0].ratio(), 1.0);
    printRow("load per byte, 10 MB / 100 KB", perByte["10 MB"] / perByte["100 KB"], 1.25);
    for (const Document& document : documents) {
        printHeapRows(document);
    }
    for (const Comparison& operation : calls) {
        printRow(operation.name() + " / its calls alone", operation.ratio(), 1.5);
    }
    for (const Operation& operation : operations) {
        // None per entry: what there is are device names, and a buffer a list or a mix matrix.
        printAllocationRow(operation.name + ", four speakers", operation.run, 5);
    }
    loadIntoStore(ORMEL_EXAMPLES "/phone-stereo.xml");
    printAllocationRow("setProfile, two speakers", operations[0].run, 0);
    const std::string device = "default_internal_speaker";
    printAllocationRow(
            "loadTuningDevice", [&](IEffectOrm* effect) { cache.loadTuningDevice(device, effect); },
            0);
}

}  // namespace

}  // namespace ormel::bench

int main(int argc, char** argv) {
    if (argc == 3) {
        ormel::bench::runFirst(argv[1], argv[2]);
        return 0;
    }
    // What is freed stays with the process, or the first to touch the pages again would pay.
    constexpr int kLargestMmapThreshold = 32 << 20;
    // NOLINTBEGIN(concurrency-mt-unsafe): no other thread runs yet.
    const bool isSet = mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max()) == 1 &&
                       mallopt(M_MMAP_THRESHOLD, kLargestMmapThreshold) == 1;
    // NOLINTEND(concurrency-mt-unsafe)
    ormel::bench::check(isSet, "setting malloc up");
    ormel::bench::countXmlMemory();
    benchmark::Initialize(&argc, argv);
    ormel::bench::run();
    return 0;
}
