// Loads of documents of several sizes. The floor of each is libxml2's parsing of the same file.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Measure.h"

namespace ormel::bench {

constexpr char kTablet[] = ORMEL_EXAMPLES "/tablet-quad.xml";
constexpr char kPhone[] = ORMEL_EXAMPLES "/phone-stereo.xml";

class TempFile;

/** A tuning document in a file, and the expected result of its load. */
struct Document {
    std::string name;
    std::string path;
    size_t size;
    size_t profiles;
    /** Owner of a temporary file; null for an existing file. */
    std::shared_ptr<const TempFile> file;
};

/** Documents of up to 10 MB, smallest first. */
std::vector<Document> makeDocuments();

/** The floor: parsing into a tree, and freeing it. */
void parseOnly(const std::string& path);

/** Loads a document into the process's store, which drops all others. */
void loadIntoStore(const std::string& path);

/** Compares a load with the parse. */
Comparison compareLoad(const Document& document);

struct HeapOfLoad {
    double peakToPeakOfParse;
    double keptToLists;
    double allocations;
};

HeapOfLoad heapOfLoad(const Document& document);

}  // namespace ormel::bench
