#include "Allocations.h"

#include <libxml/xmlmemory.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

bool gCounting = false;
ormel::bench::HeapUse gUse = {};

/** The size that the allocator really gave. */
ptrdiff_t sizeOf(void* block) {
    return static_cast<ptrdiff_t>(malloc_usable_size(block));
}

void* counted(void* block) {
    if (gCounting && block != nullptr) {
        ++gUse.allocations;
        ++gUse.blocks;
        gUse.bytes += sizeOf(block);
        gUse.peakBytes = std::max(gUse.peakBytes, gUse.bytes);
    }
    return block;
}

void countGone(void* block) {
    if (gCounting && block != nullptr) {
        --gUse.blocks;
        gUse.bytes -= sizeOf(block);
    }
}

void* allocate(size_t size) {
    return counted(std::malloc(size));
}

void release(void* block) {
    countGone(block);
    std::free(block);
}

void* reallocate(void* block, size_t size) {
    countGone(block);
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

HeapUse heapUseOf(const std::function<void()>& run) {
    gUse = {};
    gCounting = true;
    run();
    gCounting = false;
    return gUse;
}

}  // namespace ormel::bench
