#include "Loads.h"

#include <libxml/parser.h>
#include <ormel/SpatializerParamArray.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <string_view>

#include "Allocations.h"
#include "BenchDocument.h"

// libxml2 uses this to seed the hashes of its dictionaries with the time of day. With a fixed seed,
// the counts are the same in every run.
extern "C" int rand_r(unsigned* /* seed */) noexcept {
    return 1;
}

namespace ormel::bench {

/** A temporary file, deleted with the object. */
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

namespace {

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
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

Document makeDocument(const std::string& name, const std::string& text) {
    auto file = std::make_shared<const TempFile>(text);
    const std::string path = file->path();
    return {name, path, text.size(), countProfiles(text), std::move(file)};
}

void checkLoaded(SpatializerParamArray& array, const Document& document) {
    check(array.getTuningProfileCount() == static_cast<int32_t>(document.profiles), "profiles");
    check(array.getTuningCount() == static_cast<int32_t>(document.profiles), "tunings");
    const auto last = static_cast<int>(document.profiles) - 1;
    check(array.getXMLProfileParams(last).size() > 500, "words of the last profile");
}

/**
 * Makes malloc merge freed blocks, which it otherwise delays until the next large allocation. So
 * the time for that counts for the code that freed them.
 */
void settleHeap() {
    std::vector<char> large(size_t{4} << 10);
    benchmark::DoNotOptimize(large.data());
}

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

/** Number of words in the lists and matrices of a loaded document. */
size_t countWords(SpatializerParamArray& array, const Document& document) {
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
    return words;
}

double ratioOf(ptrdiff_t bytes, ptrdiff_t floor) {
    return static_cast<double>(bytes) / static_cast<double>(floor);
}

}  // namespace

std::vector<Document> makeDocuments() {
    const std::string seed = readFile(kTablet);
    check(!seed.empty(), "reading the tablet's document");
    return {
            makeDocument("20 KB", shrinkDocument(seed)),
            {"tablet example", kTablet, seed.size(), countProfiles(seed), nullptr},
            makeDocument("100 KB", growDocument(seed, 100'000)),
            makeDocument("1 MB", growDocument(seed, 1'000'000)),
            makeDocument("10 MB", growDocument(seed, 10'000'000)),
    };
}

void parseOnly(const std::string& path) {
    xmlDoc* const document = xmlReadFile(path.c_str(), nullptr, 0);
    check(document != nullptr, "parse");
    xmlFreeDoc(document);
}

void loadIntoStore(const std::string& path) {
    auto& array = SpatializerParamArray::getInstance();
    array.~SpatializerParamArray();
    new (&array) SpatializerParamArray;
    array.loadSpatializerXMLFile(path);
    check(array.getTuningCount() > 0, "load");
}

Comparison compareLoad(const Document& document) {
    return {document.name, [&document] { return loadOnce(document); },
            [&document] { return parseOnce(document); }};
}

HeapOfLoad heapOfLoad(const Document& document) {
    const HeapUse parse = heapUseOf([&] { parseOnly(document.path); });
    SpatializerParamArray array;
    const HeapUse load = heapUseOf([&] { array.loadSpatializerXMLFile(document.path); });
    checkLoaded(array, document);
    const size_t lists = countWords(array, document) * sizeof(int32_t);
    return {ratioOf(load.peakBytes, parse.peakBytes),
            ratioOf(load.bytes, static_cast<ptrdiff_t>(lists)),
            static_cast<double>(load.allocations)};
}

}  // namespace ormel::bench
