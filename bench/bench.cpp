// Measures what this library adds to its floors: XML parsing, and the calls to the effect.
#include <android/log.h>
#include <benchmark/benchmark.h>
#include <libxml/xmlerror.h>
#include <malloc.h>
#include <ormel/SpatializerParamArray.h>
#include <ormel/SpatializerParamCache.h>
#include <ormel/TagIterator.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Allocations.h"
#include "FrontCalls.h"
#include "Loads.h"
#include "OwnProcess.h"

namespace ormel::bench {

namespace {

// Tasks of separate processes.

void printSeconds(const std::function<void()>& run) {
    std::printf("seconds %.9f\n", secondsOf(run));
}

void firstParse(const std::string& path) {
    printSeconds([&] { parseOnly(path); });
}

void firstLoad(const std::string& path) {
    printSeconds([&] {
        SpatializerParamArray array;
        array.loadSpatializerXMLFile(path);
        check(array.getTuningCount() > 0, "first load");
    });
}

void countedParse(const std::string& path) {
    parseOnly(kTablet);
    doCounted([&] { parseOnly(path); });
}

void countedLoad(const std::string& path) {
    loadIntoStore(kTablet);
    SpatializerParamArray array;
    doCounted([&] { array.loadSpatializerXMLFile(path); });
    check(array.getTuningCount() > 0, "counted load");
}

/** Runs @p run twice and counts the second: the first call of a function also looks it up. */
void countSecond(const std::string& number,
                 const std::function<void(const FrontCall&, IEffectOrm*)>& run) {
    loadIntoStore(kTablet);
    const FrontCall call = makeFrontCalls().at(std::stoul(number));
    NullEffect effect;
    run(call, &effect);
    doCounted([&] { run(call, &effect); });
}

void countedCall(const std::string& number) {
    countSecond(number, [](const FrontCall& call, IEffectOrm* effect) { call.run(effect); });
}

void countedLoop(const std::string& number) {
    countSecond(number, repeatCalls);
}

/** Prints the heap that a load leaves in use outside of the store and libxml2. */
void heapOfFirstUse(const std::string& path) {
    countXmlMemory();
    parseOnly(path);
    const HeapUse use = heapUseOf([&] {
        SpatializerParamArray array;
        array.loadSpatializerXMLFile(path);
    });
    std::printf("allocations %td\nbytes %td\n", use.blocks, use.bytes);
}

struct Task {
    const char* name;
    void (*run)(const std::string& argument);
};

// clang-format off
constexpr Task kTasks[] = {
    {"--first-parse", firstParse},
    {"--first-load", firstLoad},
    {"--counted-parse", countedParse},
    {"--counted-load", countedLoad},
    {"--counted-call", countedCall},
    {"--counted-loop", countedLoop},
    {"--heap-of-first-use", heapOfFirstUse},
};
// clang-format on

double secondsOfTask(const char* task, const std::string& argument) {
    return numberAfter("seconds", outputOfTask(task, argument)).value();
}

// Comparisons.

Comparison compareFirst(const std::string& path) {
    return {"first load", [path] { return secondsOfTask("--first-load", path); },
            [path] { return secondsOfTask("--first-parse", path); }};
}

template <typename Case>
std::vector<Comparison> compareAll(const std::vector<Case>& cases,
                                   Comparison (*compare)(const Case&)) {
    std::vector<Comparison> comparisons;
    comparisons.reserve(cases.size());
    for (const Case& each : cases) {
        comparisons.push_back(compare(each));
    }
    return comparisons;
}

/** Prints nothing: Comparison keeps the times. */
class SilentReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>&) override {}
};

// Output.

void printRow(const std::string& what, double figure, double reach) {
    // Benchmarks that were filtered out have no figure.
    if (std::isfinite(figure)) {
        std::printf("%-68s %8.2f %8.2f  %s\n", what.c_str(), figure, reach,
                    figure <= reach ? "met" : "MISSED");
    }
}

void printLoadRows(const std::vector<Comparison>& loads) {
    for (const Comparison& load : loads) {
        printRow("whole load / tree parse alone, " + load.name(), load.ratio(), 0.85);
    }
}

void printHeapRows(const std::vector<Document>& documents) {
    std::vector<HeapOfLoad> heaps(documents.size());
    std::transform(documents.begin(), documents.end(), heaps.begin(), heapOfLoad);
    for (size_t i = 0; i < documents.size(); ++i) {
        printRow("peak heap of the load / of the tree parse, " + documents[i].name,
                 heaps[i].peakToPeakOfParse, 0.45);
    }
    for (size_t i = 0; i < documents.size(); ++i) {
        printRow("heap kept after the load / its lists and matrices, " + documents[i].name,
                 heaps[i].keptToLists, 1.5);
    }
    for (size_t i = 0; i < documents.size(); ++i) {
        if (documents[i].path == kTablet) {
            printRow("heap allocations of the load, " + documents[i].name, heaps[i].allocations,
                     2000);
        }
    }
}

void printAllocationRow(const std::string& what, const FrontCall& call, double reach) {
    KeepingEffect effect;
    call.run(&effect);
    const HeapUse use = heapUseOf([&] { call.run(&effect); });
    printRow("heap allocations per " + what, static_cast<double>(use.allocations), reach);
}

void printAllocationRows(const std::vector<FrontCall>& calls) {
    for (const FrontCall& call : calls) {
        // None per entry: only device names, and one buffer for a list or a mix matrix.
        printAllocationRow(call.name + ", four speakers", call, 5);
    }
    loadIntoStore(kPhone);
    for (const FrontCall& call : makeFrontCalls()) {
        if (call.name == "setProfile" || call.name == "loadTuningDevice") {
            printAllocationRow(call.name + ", two speakers", call, 0);
        }
    }
}

/** A count as text, or "not counted". */
std::string textOf(std::optional<double> count, int digits) {
    if (!count.has_value()) {
        return "not counted";
    }
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%.*f", digits, *count);
    return text.data();
}

/** How much more work takes than its floor, per unit of @p size. */
std::optional<double> added(std::optional<double> work, std::optional<double> floor, double size) {
    return work && floor ? std::optional((*work - *floor) / size) : std::nullopt;
}

/**
 * In instructions, because the difference of two times is mostly noise, and long work is
 * interrupted more often than short work.
 */
void printAddedPerByte(const std::vector<Document>& documents,
                       const std::vector<Comparison>& loads) {
    std::printf("\n%-44s %12s %12s %12s\n", "instructions per byte of the document", "load",
                "tree parse", "added");
    std::map<std::string, double> perByte;
    for (size_t i = 0; i < documents.size(); ++i) {
        if (!loads[i].wasRun()) {
            continue;
        }
        const auto size = static_cast<double>(documents[i].size);
        const auto load = instructionsOf("--counted-load", documents[i].path);
        const auto parse = instructionsOf("--counted-parse", documents[i].path);
        if (load.has_value()) {
            perByte[documents[i].name] = *load / size;
        }
        std::printf("%-44s %12s %12s %12s\n", documents[i].name.c_str(),
                    textOf(added(load, 0, size), 1).c_str(),
                    textOf(added(parse, 0, size), 1).c_str(),
                    textOf(added(load, parse, size), 1).c_str());
    }
    if (perByte.count("10 MB") > 0 && perByte.count("100 KB") > 0) {
        printRow("instructions of a load per byte, 10 MB / 100 KB",
                 perByte["10 MB"] / perByte["100 KB"], 1.25);
    }
}

void printAddedPerEntry(const std::vector<FrontCall>& calls, const std::vector<Comparison>& loops) {
    std::printf(
            "\nwhat a front call adds to a bare loop that makes its calls, on an effect that does"
            " nothing\n%-44s %12s %12s %12s %12s\n",
            "", "entries", "time ratio", "ns/entry", "instr./entry");
    for (size_t i = 0; i < calls.size(); ++i) {
        if (loops[i].wasRun()) {
            const std::string number = std::to_string(i);
            const double entries = calls[i].entries;
            const auto instructions = added(instructionsOf("--counted-call", number),
                                            instructionsOf("--counted-loop", number), entries);
            const double seconds = (loops[i].work() - loops[i].floor()) / kNullEffectRuns;
            std::printf("%-44s %12d %12.1f %12.1f %12s\n", calls[i].name.c_str(), calls[i].entries,
                        loops[i].ratio(), seconds * 1e9 / entries, textOf(instructions, 0).c_str());
        }
    }
}

/** @param output lines of names and numbers */
void printTableRow(const char* what, const std::string& output) {
    std::printf("%-44s %12.0f %12.0f\n", what, numberAfter("allocations", output).value(),
                numberAfter("bytes", output).value());
}

void printTableRows() {
    std::printf("\n%-44s %12s %12s\n", "heap that static tables keep", "allocations", "bytes");
    const auto loaded = outputOf(ORMEL_LOAD_COSTS " " ORMEL_LIBRARY);
    check(loaded.has_value(), "loading the library");
    printTableRow("after dlopen", *loaded);
    printTableRow("added by the first load of a document",
                  outputOfTask("--heap-of-first-use", kTablet));
}

// libxml2 prints errors through a C-style variadic function.
// NOLINTNEXTLINE(cert-dcl50-cpp)
void ignoreXmlError(void*, const char*, ...) {}

void run() {
    xmlSetGenericErrorFunc(nullptr, ignoreXmlError);
    // While an iterator exists, libxml2 stays set up, for parses and loads alike.
    const TagIterator keepsXmlAlive;
    const std::vector<Document> documents = makeDocuments();
    loadIntoStore(kTablet);
    const std::vector<FrontCall> calls = makeFrontCalls();

    std::vector<Comparison> loads = compareAll(documents, compareLoad);
    std::vector<Comparison> firsts = {compareFirst(kTablet)};
    std::vector<Comparison> keeping = compareAll(calls, compareOnKeepingEffect);
    std::vector<Comparison> loops = compareAll(calls, compareOnNullEffect);
    for (std::vector<Comparison>* const comparisons : {&loads, &firsts, &keeping, &loops}) {
        registerAll(*comparisons);
    }
    SilentReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    std::printf("%-68s %8s %8s\n", "what, as a ratio to its floor", "ratio", "reach");
    printLoadRows(loads);
    printRow("first load of a process / first tree parse, tablet example", firsts[0].ratio(), 1.0);
    printHeapRows(documents);
    for (size_t i = 0; i < calls.size(); ++i) {
        printRow(calls[i].name + " / its calls alone", keeping[i].ratio(), 1.5);
    }
    printAllocationRows(calls);
    printAddedPerEntry(calls, loops);
    printAddedPerByte(documents, loads);
    printTableRows();
}

/** Runs the task with this name, if there is one. */
bool doTask(std::string_view name, const std::string& argument) {
    for (const Task& task : kTasks) {
        if (name == task.name) {
            task.run(argument);
            return true;
        }
    }
    return false;
}

}  // namespace

}  // namespace ormel::bench

int main(int argc, char** argv) {
    __android_log_set_logger([](const __android_logger_data*, const char*) {});
    if (argc == 3 && ormel::bench::doTask(argv[1], argv[2])) {
        return 0;
    }
    // Freed memory stays with the process; else whatever touches the pages next would take longer.
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
