// Counts what is allocated on the heap, by C++ and by libxml2.
#pragma once

#include <cstddef>
#include <functional>

namespace ormel::bench {

struct HeapUse {
    size_t allocations;
    /** Blocks still in use at the end. Like the bytes, negative when more was freed. */
    ptrdiff_t blocks;
    ptrdiff_t bytes;
    ptrdiff_t peakBytes;
};

/** Routes libxml2's memory through the count. Call before anything of libxml2's. */
void countXmlMemory();

/**
 * What @p run allocates, what of it is still in use at its end and what was at the most. Outside of
 * this nothing is counted, so that what is timed does not count.
 */
HeapUse heapUseOf(const std::function<void()>& run);

}  // namespace ormel::bench
