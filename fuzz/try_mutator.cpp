// Mutates the inputs in a folder like the document fuzzer, each several times in a row, and prints
// how many documents stay well-formed: try_mutator FOLDER [COUNT].
#include <libxml/parser.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "Fuzz.h"

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize,
                                          unsigned seed);
extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* data, size_t size, const uint8_t* other,
                                            size_t otherSize, uint8_t* out, size_t maxSize,
                                            unsigned seed);

namespace ormel::fuzz {

namespace {

/** The same as in script/fuzz. */
constexpr size_t kMaxSize = 1500;
/** Mutations in a row of one input. */
constexpr unsigned kInARow = 5;

using Bytes = std::vector<uint8_t>;

std::vector<Bytes> readInputs(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<Bytes> inputs;
    for (const auto& path : paths) {
        std::ifstream file(path, std::ios::binary);
        inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        inputs.back().resize(std::min(inputs.back().size(), kMaxSize));
    }
    return inputs;
}

/** Whether the bytes from @p begin on are a well-formed document. */
bool isWellFormed(const Bytes& input, size_t begin) {
    if (begin >= input.size()) {
        return false;
    }
    xmlDoc* const document = xmlReadMemory(reinterpret_cast<const char*>(input.data()) + begin,
                                           static_cast<int>(input.size() - begin), "", nullptr, 0);
    xmlFreeDoc(document);
    return document != nullptr;
}

/** The text starts after one byte, or after the moves of a cursor too. */
bool isWellFormed(const Bytes& input) {
    return isWellFormed(input, 1) || isWellFormed(input, 33);
}

Bytes mutated(Bytes input, unsigned seed) {
    const size_t size = input.size();
    input.resize(kMaxSize);
    input.resize(LLVMFuzzerCustomMutator(input.data(), size, kMaxSize, seed));
    return input;
}

Bytes crossed(const Bytes& input, const Bytes& other, unsigned seed) {
    Bytes out(kMaxSize);
    out.resize(LLVMFuzzerCustomCrossOver(input.data(), input.size(), other.data(), other.size(),
                                         out.data(), kMaxSize, seed));
    return out;
}

}  // namespace

}  // namespace ormel::fuzz

int main(int argc, char* argv[]) {
    using namespace ormel::fuzz;
    if (argc < 2) {
        return 2;
    }
    setUp();
    const std::vector<Bytes> inputs = readInputs(argv[1]);
    const unsigned count =
            argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)) : 2000;
    unsigned wellFormed = 0;
    unsigned changes = 0;
    Bytes input;
    for (unsigned i = 0; i < count; ++i) {
        if (i % kInARow == 0) {
            input = inputs.at(i / kInARow % inputs.size());
        }
        // Seeds that are not multiples of 8 change the structure.
        const unsigned seed = i * 8 + 1;
        Bytes changed = mutated(input, seed);
        require(changed.size() <= kMaxSize && changed == mutated(input, seed));
        require(crossed(input, inputs[i % inputs.size()], seed).size() <= kMaxSize);
        changes += changed != input ? 1 : 0;
        wellFormed += isWellFormed(changed) ? 1 : 0;
        input = std::move(changed);
    }
    std::printf("%u inputs, %u changed, %u well-formed\n", count, changes, wellFormed);
    return wellFormed > count / 2 ? 0 : 1;
}
