// The mutator of targets whose input is a byte of settings and then a document. It mostly changes
// the document's structure, and sometimes lets the fuzzer change bytes.
#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include "DocumentMutator.h"

/** libFuzzer's mutator; null without libFuzzer. */
extern "C" __attribute__((weak)) size_t LLVMFuzzerMutate(uint8_t* data, size_t size,
                                                         size_t maxSize);

namespace ormel::fuzz {

namespace {

/** One in this many inputs is changed as bytes. */
constexpr unsigned kBytesShare = 8;

/**
 * Number of bytes before the document's text: one of settings, and the moves of a cursor if the
 * settings ask for them. In targets without a cursor, the text directly follows the settings.
 */
size_t textBegin(const uint8_t* data, size_t size) {
    constexpr uint8_t kAsksForMoves = 8;
    constexpr size_t kMoves = 32;
    const bool hasMoves = size > 1 && (data[0] & kAsksForMoves) != 0 && data[1] != '<';
    return std::min(size, hasMoves ? 1 + kMoves : 1);
}

size_t mutateBytes(uint8_t* data, size_t size, size_t maxSize) {
    return LLVMFuzzerMutate == nullptr ? size : LLVMFuzzerMutate(data, size, maxSize);
}

std::string textOf(const uint8_t* data, size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

}  // namespace

}  // namespace ormel::fuzz

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize,
                                          unsigned seed) {
    using namespace ormel::fuzz;
    const size_t begin = textBegin(data, size);
    if (seed % kBytesShare == 0 || begin > maxSize) {
        return mutateBytes(data, size, maxSize);
    }
    const std::optional<std::string> changed =
            mutateDocument(textOf(data + begin, size - begin), maxSize - begin, seed);
    if (!changed) {
        return mutateBytes(data, size, maxSize);
    }
    std::copy(changed->begin(), changed->end(), data + begin);
    return begin + changed->size();
}

extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* data, size_t size, const uint8_t* other,
                                            size_t otherSize, uint8_t* out, size_t maxSize,
                                            unsigned seed) {
    using namespace ormel::fuzz;
    const size_t begin = textBegin(data, size);
    const size_t otherBegin = textBegin(other, otherSize);
    if (begin > maxSize) {
        return 0;
    }
    const std::optional<std::string> changed = crossDocuments(
            textOf(data + begin, size - begin), textOf(other + otherBegin, otherSize - otherBegin),
            maxSize - begin, seed);
    if (!changed) {
        return 0;
    }
    std::copy(changed->begin(), changed->end(), std::copy(data, data + begin, out));
    return begin + changed->size();
}
