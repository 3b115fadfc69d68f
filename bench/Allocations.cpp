#include "Allocations.h"

#include <libxml/xmlmemory.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

size_t gAllocations = 0;
ptrdiff_t gBytes = 0;
ptrdiff_t gPeakBytes = 0;

/** What the allocator really gave. */
ptrdiff_t sizeOf(void* block) {
    return static_cast<ptrdiff_t>(malloc_usable_size(block));
}

void* counted(void* block) {
    if (block != nullptr) {
        ++gAllocations;
        gBytes += sizeOf(block);
        gPeakBytes = std::max(gPeakBytes, gBytes);
    }
    return block;
}

void* allocate(size_t size) {
    return counted(std::malloc(size));
}

void release(void* block) {
    gBytes -= sizeOf(block);
    std::free(block);
}

void* reallocate(void* block, size_t size) {
    gBytes -= sizeOf(block);
    return counted(std::realloc(block, size));
}

char* duplicate(const char* text) {
    const size_t size = std::strlen(text) + 1;
    void* const copy = allocate(size);
    return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text, size));
}

}  // namespace

void* operator new(size_t size) {
    void* const block = allocate(size);
    if (block == nullptr) {
        std::abort();
    }
    return block;
}

void operator delete(void* block) noexcept {
    release(block);
}

void operator delete(void* block, size_t /* size */) noexcept {
    release(block);
}

namespace ormel::bench {

void countXmlMemory() {
    xmlMemSetup(release, allocate, reallocate, duplicate);
}

void resetHeapUse() {
    gAllocations = 0;
    gBytes = 0;
    gPeakBytes = 0;
}

HeapUse heapUse() {
    return {gAllocations, gBytes, gPeakBytes};
}

}  // namespace ormel::bench
