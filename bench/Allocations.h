// Counts heap allocations by C++ and by libxml2.
#pragma once

#include <cstddef>
#include <functional>

namespace ormel::bench {

struct HeapUse {
    size_t allocations;
    /** Blocks still in use at the end. Like the bytes, negative if more were freed. */
    ptrdiff_t blocks;
    ptrdiff_t bytes;
    ptrdiff_t peakBytes;
};

/** Counts libxml2's allocations too. Call before any libxml2 function. */
void countXmlMemory();

/**
 * What @p run allocates, what of that is in use at its end, and the peak. Nothing is counted
 * outside of this call, so counting does not slow down timed work.
 */
HeapUse heapUseOf(const std::function<void()>& run);

}  // namespace ormel::bench
