// Counts what is allocated on the heap, by C++ and by libxml2.
#pragma once

#include <cstddef>

namespace ormel::bench {

struct HeapUse {
    size_t allocations;
    /** Negative when more was freed than allocated. */
    ptrdiff_t bytes;
    ptrdiff_t peakBytes;
};

/** Routes libxml2's memory through the count. Call before anything of libxml2's. */
void countXmlMemory();

/** Takes what is in use now for nothing: counts, and the peak, begin again from here. */
void resetHeapUse();

/** What was allocated, what is still in use and what was at the most, since resetHeapUse(). */
HeapUse heapUse();

}  // namespace ormel::bench
