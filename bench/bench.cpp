// What this library adds to what cannot be saved: the XML parser's work, and the effect's calls.
#include <android/log.h>
#include <benchmark/benchmark.h>
#include <libxml/xmlerror.h>
#include <malloc.h>
#include <ormel/SpatializerParamCache.h>
#include <ormel/TagIterator.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Allocations.h"
#include "FrontCalls.h"
#include "Loads.h"
#include "OwnProcess.h"

namespace ormel::bench {

namespace {

// What a fresh process does.

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

struct Task {
    const char* name;
    void (*run)(const std::string& argument);
};

// clang-format off
constexpr Task kTasks[] = {
    {"--first-parse", firstParse},
    {"--first-load", firstLoad},
};
// clang-format on

double secondsOfTask(const char* task, const std::string& argument) {
    return numberBehind("seconds", outputOfTask(task, argument)).value();
}

// What is compared.

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

/** The times are kept where they are taken. */
class SilentReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>&) override {}
};

// What is printed.

void printRow(const std::string& what, double figure, double reach) {
    // Benchmarks that were filtered out leave nothing to compare.
    if (std::isfinite(figure)) {
        std::printf("%-68s %8.2f %8.2f  %s\n", what.c_str(), figure, reach,
                    figure <= reach ? "met" : "MISSED");
    }
}

void printLoadRows(const std::vector<Document>& documents, const std::vector<Comparison>& loads) {
    std::map<std::string, double> perByte;
    for (size_t i = 0; i < documents.size(); ++i) {
        perByte[documents[i].name] = loads[i].work() / static_cast<double>(documents[i].size);
        printRow("whole load / tree parse alone, " + documents[i].name, loads[i].ratio(), 0.85);
    }
    printRow("load per byte, 10 MB / 100 KB", perByte["10 MB"] / perByte["100 KB"], 1.25);
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
        // None per entry: what there is are device names, and a buffer a list or a mix matrix.
        printAllocationRow(call.name + ", four speakers", call, 5);
    }
    loadIntoStore(kPhone);
    for (const FrontCall& call : makeFrontCalls()) {
        if (call.name == "setProfile" || call.name == "loadTuningDevice") {
            printAllocationRow(call.name + ", two speakers", call, 0);
        }
    }
}

// libxml2 prints errors through a C-style variadic function.
// NOLINTNEXTLINE(cert-dcl50-cpp)
void ignoreXmlError(void*, const char*, ...) {}

void run() {
    xmlSetGenericErrorFunc(nullptr, ignoreXmlError);
    // While an iterator lives, libxml2 stays set up, for the parse as for the load.
    const TagIterator keepsXmlAlive;
    const std::vector<Document> documents = makeDocuments();
    loadIntoStore(kTablet);
    const std::vector<FrontCall> calls = makeFrontCalls();

    std::vector<Comparison> loads = compareAll(documents, compareLoad);
    std::vector<Comparison> firsts = {compareFirst(kTablet)};
    std::vector<Comparison> keeping = compareAll(calls, compareOnKeepingEffect);
    for (std::vector<Comparison>* const comparisons : {&loads, &firsts, &keeping}) {
        registerAll(*comparisons);
    }
    SilentReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    std::printf("%-68s %8s %8s\n", "what, as a ratio to its floor", "ratio", "reach");
    printLoadRows(documents, loads);
    printRow("first load of a process / first tree parse, tablet example", firsts[0].ratio(), 1.0);
    printHeapRows(documents);
    for (size_t i = 0; i < calls.size(); ++i) {
        printRow(calls[i].name + " / its calls alone", keeping[i].ratio(), 1.5);
    }
    printAllocationRows(calls);
}

/** Does the task of that name, if there is one. */
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
