// Loads documents made to be costly, and compares the cost of each load with libxml2's parsing:
// hostile [TEXT], for documents with TEXT in their names; hostile --save FOLDER [TEXT] writes these
// documents to a folder instead.
//
// Each load and each parse runs in its own process, which reports its processor time and the
// largest growth of its memory. A load may take kTimes times as long as the parse plus kSeconds,
// and kMemoryTimes times its memory plus kMemory. It must not end the process; it must be refused
// if the parse fails. A refused load must change nothing, and any other must add all of the
// document's profiles and tunings.
#include <libxml/parser.h>
#include <ormel/Parameter.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string_view>
#include <vector>

#include "BenchDocument.h"
#include "Fuzz.h"
#include "HostileDocuments.h"

namespace ormel::fuzz {

namespace {

constexpr double kTimes = 10;
constexpr double kSeconds = 0.1;
constexpr double kMemoryTimes = 3;
constexpr double kMemory = 96;

/** Limits of a process: processor time in seconds, and address space in bytes. */
constexpr double kMaxSeconds = 20;
constexpr rlim_t kMaxBytes = rlim_t{4} << 30;
/** Limit in seconds for processes that wait instead of working. */
constexpr unsigned kMaxWait = 300;

constexpr size_t kSizes[] = {100'000, 1'000'000};
/** Size of the largest document that is read. */
constexpr size_t kLargest = size_t{16} << 20;

constexpr char kExamples[] = ORMEL_EXAMPLES;

/** A row of the table before its measurement. */
struct Trial {
    std::string name;
    std::function<HostileDocument()> make;
    /** Whether it is a valid tuning document, which must not be refused. */
    bool isSound = false;
};

/** What a process reports. */
struct Report {
    bool isDone;
    bool isAccepted;
    double seconds;
    double megabytes;
    bool changesNothing;
    Reading added;
    size_t documentBytes;
};

/** A report that a child process writes and its parent reads. */
class SharedReport {
  public:
    SharedReport()
        : mReport(static_cast<Report*>(::mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE,
                                              MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
        require(mReport != MAP_FAILED);
    }
    SharedReport(const SharedReport&) = delete;
    SharedReport& operator=(const SharedReport&) = delete;
    ~SharedReport() { ::munmap(mReport, sizeof(Report)); }

    Report& get() { return *mReport; }

  private:
    Report* mReport;
};

/** Processor time of this process. */
double secondsNow() {
    timespec time = {};
    require(::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time) == 0);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/** Peak memory of a process. */
double megabytesOf(const rusage& usage) {
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

double megabytesNow() {
    rusage usage = {};
    require(::getrusage(RUSAGE_SELF, &usage) == 0);
    return megabytesOf(usage);
}

void measure(Report& report, const std::function<bool()>& work) {
    const double megabytes = megabytesNow();
    const double seconds = secondsNow();
    report.isAccepted = work();
    report.seconds = secondsNow() - seconds;
    report.megabytes = megabytesNow() - megabytes;
}

/** Like measure(), but repeats work that is too short for the clock. */
void measureMean(Report& report, const std::function<bool()>& work) {
    constexpr double kEnough = 0.05;
    constexpr int kMaxRuns = 100;
    int runs = 0;
    measure(report, [&runs, &work] {
        const double begin = secondsNow();
        bool isAccepted = false;
        do {
            isAccepted = work();
        } while (++runs < kMaxRuns && secondsNow() - begin < kEnough);
        return isAccepted;
    });
    report.seconds /= runs;
}

bool parse(const std::string& path) {
    xmlDoc* const document = xmlReadFile(path.c_str(), nullptr, 0);
    xmlFreeDoc(document);
    return document != nullptr;
}

/** Each process handles this document before it is measured. */
constexpr char kFirst[] =
        "<d>\n<profile id='1'>\n<volmax-boost value='2'/>\n</profile>\n<preset type='geq' id='1'>\n"
        "</preset>\n<tuning name='first'>\n<device_id id='first' endpoint_port='headphone'/>\n"
        "<data>\n<volmax-boost value='2'/>\n</data>\n</tuning>\n</d>";

bool gRefused = false;

void keepRefusal(const __android_logger_data* data, const char* message) {
    if (data->priority == ANDROID_LOG_ERROR &&
        std::strcmp(message, "Spatializer Tuning XML parses error!") == 0) {
        gRefused = true;
    }
}

/** Whether the store accepted the document. */
bool loadInto(SpatializerParamArray& array, const std::string& path) {
    gRefused = false;
    array.loadSpatializerXMLFile(path);
    return !gRefused;
}

/** The state of store and process that a load can change, except the last document's name. */
std::string stateOf(SpatializerParamArray& array) {
    std::string state;
    array.dump(state, 0);
    state.erase(0, std::min(state.find("current profile: "), state.size()));
    for (const auto* const list :
         {&array.getXMLProfileParams(1), &array.getXMLTuningParams("first")}) {
        state.append(reinterpret_cast<const char*>(list->data()), list->size() * sizeof(int32_t));
    }
    for (const size_t count : {portNameToEndpoint().size(), portNameToAndroidDevice().size(),
                               static_cast<size_t>(TagIterator::mInstanceCount)}) {
        state += ' ' + std::to_string(count);
    }
    return state;
}

void reportParse(Report& report, const std::string& path) {
    MemoryFile first;
    first.write(kFirst);
    require(parse(first.path()));
    measureMean(report, [&path] { return parse(path); });
}

void reportLoad(Report& report, const std::string& path) {
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(keepRefusal);
    MemoryFile first;
    first.write(kFirst);
    SpatializerParamArray array;
    require(loadInto(array, first.path()));
    const std::string before = stateOf(array);
    const Reading old = {array.getTuningProfileCount(), array.getTuningCount()};
    measure(report, [&array, &path] { return loadInto(array, path); });
    report.changesNothing = stateOf(array) == before;
    report.added = {array.getTuningProfileCount() - old.profiles,
                    array.getTuningCount() - old.tunings};
}

/**
 * Runs @p work in its own process.
 *
 * @param maxSeconds processor time after which the process is ended
 * @return its report, and how it ended; empty if it finished
 */
std::pair<Report, std::string> inProcess(const std::function<void(Report&)>& work,
                                         double maxSeconds) {
    SharedReport report;
    const pid_t child = ::fork();
    require(child >= 0);
    if (child == 0) {
        const auto limit = static_cast<rlim_t>(maxSeconds);
        const rlimit seconds = {limit, limit + 1};
        const rlimit bytes = {kMaxBytes, kMaxBytes};
        const rlimit noCore = {0, 0};
        ::setrlimit(RLIMIT_CPU, &seconds);
        ::setrlimit(RLIMIT_AS, &bytes);
        ::setrlimit(RLIMIT_CORE, &noCore);
        ::alarm(kMaxWait);
        require(std::freopen("/dev/null", "w", stderr) != nullptr);
        xmlSetGenericErrorFunc(nullptr, ignoreXmlError);
        work(report.get());
        report.get().isDone = true;
        std::_Exit(0);
    }
    int status = 0;
    rusage usage = {};
    require(::wait4(child, &status, 0, &usage) == child);
    if (report.get().isDone) {
        return {report.get(), ""};
    }
    report.get().seconds = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec);
    report.get().megabytes = megabytesOf(usage);
    const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return {report.get(), signal == SIGXCPU ? "endless" : signal == SIGALRM ? "waits" : "died"};
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

int countOf(const std::string& text, std::string_view piece) {
    int count = 0;
    for (size_t at = 0; (at = text.find(piece, at)) != std::string::npos; at += piece.size()) {
        ++count;
    }
    return count;
}

/** A document made for a device, or grown from one. */
HostileDocument soundDocument(const std::string& text) {
    return {text, {countOf(text, "<profile "), countOf(text, "<device_id ")}};
}

HostileDocument grownDocument(size_t size) {
    const std::string seed = readFile(std::string(kExamples) + "/tablet-quad.xml");
    return soundDocument(bench::growDocument(seed, size));
}

/** The largest document that is read, padded with blanks. */
HostileDocument largestDocument() {
    constexpr size_t kRound = 100'000;
    HostileDocument document = grownDocument(kLargest - kRound);
    require(document.text.size() <= kLargest);
    document.text.resize(kLargest, ' ');
    return document;
}

std::vector<Trial> soundTrials() {
    std::vector<Trial> trials;
    for (const auto& entry : std::filesystem::directory_iterator(kExamples)) {
        if (entry.path().extension() == ".xml") {
            const auto make = [path = entry.path()] { return soundDocument(readFile(path)); };
            trials.push_back({entry.path().filename(), make, true});
        }
    }
    for (const size_t size : kSizes) {
        const auto make = [size] { return grownDocument(size); };
        const auto makeUtf16 = [size] {
            HostileDocument document = grownDocument(size / 2);
            document.text = utf16(document.text.substr(document.text.find('\n')));
            return document;
        };
        trials.push_back({"many examples in one", make, true});
        trials.push_back({"many examples in one in UTF-16", makeUtf16, true});
    }
    trials.push_back({"as many examples as a document may hold", largestDocument, true});
    return trials;
}

std::vector<Trial> allTrials() {
    std::vector<Trial> trials = soundTrials();
    for (const HostileShape& shape : hostileShapes()) {
        for (const size_t size : kSizes) {
            trials.push_back({shape.name, [shape, size] { return makeHostile(shape, size); }});
        }
    }
    return trials;
}

/** The faults of a load; empty if there are none. */
std::string faultOf(const Trial& trial, const Reading& expected, const Report& parsed,
                    const Report& loaded) {
    std::string fault;
    const auto check = [&fault](bool isMet, const char* what) {
        fault += isMet ? "" : std::string(fault.empty() ? "" : ", ") + what;
    };
    check(loaded.seconds <= kTimes * parsed.seconds + kSeconds, "time");
    check(loaded.megabytes <= kMemoryTimes * parsed.megabytes + kMemory, "memory");
    check(!loaded.isAccepted || parsed.isAccepted || !parsed.isDone, "read although malformed");
    check(loaded.isAccepted || !trial.isSound, "refused although sound");
    check(loaded.isAccepted || loaded.changesNothing, "changed");
    check(!loaded.isAccepted || (loaded.added.profiles == expected.profiles &&
                                 loaded.added.tunings == expected.tunings),
          "read wrong");
    return fault;
}

/** Prints a document's row. @return whether the load is within its bounds */
bool run(const Trial& trial) {
    MemoryFile file;
    // Made in its own process too, so that the measured ones do not reuse its freed memory.
    const auto made = inProcess(
            [&trial, &file](Report& report) {
                const HostileDocument document = trial.make();
                file.write(document.text);
                report.added = document.reading;
                report.documentBytes = document.text.size();
            },
            kMaxSeconds);
    require(made.second.empty());
    // A parse that takes too long counts with its cost up to its end.
    const Report parsed =
            inProcess([&file](Report& report) { reportParse(report, file.path()); }, kMaxSeconds)
                    .first;
    const auto [loaded, loadEnd] =
            inProcess([&file](Report& report) { reportLoad(report, file.path()); },
                      kMaxSeconds + 2 * parsed.seconds);

    const std::string fault =
            !loadEnd.empty() ? loadEnd : faultOf(trial, made.first.added, parsed, loaded);
    const char* const outcome = !loadEnd.empty()                      ? loadEnd.c_str()
                                : loaded.isAccepted                   ? "read"
                                : !parsed.isAccepted && parsed.isDone ? "malformed"
                                                                      : "refused";
    std::printf("%-60s %6zu %8.4f %8.4f %7.1f %8.1f %8.1f  %-9s  %s%s\n", trial.name.c_str(),
                made.first.documentBytes / 1000, parsed.seconds, loaded.seconds,
                loaded.seconds / std::max(parsed.seconds, 1e-6), parsed.megabytes, loaded.megabytes,
                outcome, fault.empty() ? "met" : "MISSED: ", fault.c_str());
    (void)std::fflush(stdout);
    return fault.empty();
}

void save(const Trial& trial, const std::string& folder) {
    const std::string text = trial.make().text;
    const std::string name = trial.name + ' ' + std::to_string(text.size() / 1000) + " kB";
    std::ofstream(folder + '/' + name, std::ios::binary) << text;
}

}  // namespace

}  // namespace ormel::fuzz

int main(int argc, char* argv[]) {
    using namespace ormel::fuzz;
    std::vector<std::string> arguments(argv + 1, argv + argc);
    std::string folder;
    if (arguments.size() > 1 && arguments[0] == "--save") {
        folder = arguments[1];
        arguments.erase(arguments.begin(), arguments.begin() + 2);
    }
    const std::string wanted = arguments.empty() ? "" : arguments[0];
    std::vector<Trial> trials = allTrials();
    const auto isOther = [&](const Trial& trial) {
        return trial.name.find(wanted) == std::string::npos;
    };
    trials.erase(std::remove_if(trials.begin(), trials.end(), isOther), trials.end());
    if (trials.empty()) {
        (void)std::fprintf(stderr, "hostile: no document matches '%s'\n", wanted.c_str());
        return 2;
    }
    int missed = 0;
    if (folder.empty()) {
        std::printf("%-60s %6s %8s %8s %7s %8s %8s\n", "document", "kB", "parse s", "load s",
                    "ratio", "parse MB", "load MB");
    }
    for (const Trial& trial : trials) {
        if (folder.empty()) {
            missed += run(trial) ? 0 : 1;
        } else {
            save(trial, folder);
        }
    }
    std::printf("%zu documents, %d missed\n", trials.size(), missed);
    return missed == 0 ? 0 : 1;
}
