// Counts allocated bytes.
#pragma once

#include <cstddef>
#include <cstdint>

/** The sanitizers' hooks; null in builds without a sanitizer, where nothing is counted. */
extern "C" __attribute__((weak)) int __sanitizer_install_malloc_and_free_hooks(
        void (*onMalloc)(const volatile void*, size_t), void (*onFree)(const volatile void*));

namespace ormel::fuzz {

/** Adds up the bytes of all blocks, freed ones too, that this thread allocates while it exists. */
class AllocatedBytes {
  public:
    AllocatedBytes() {
        static const bool isInstalled = install();
        static_cast<void>(isInstalled);
        sBytes = 0;
        sIsCounting = true;
    }
    AllocatedBytes(const AllocatedBytes&) = delete;
    AllocatedBytes& operator=(const AllocatedBytes&) = delete;
    ~AllocatedBytes() { sIsCounting = false; }

    uint64_t get() const { return sBytes; }

    /** Excludes what the fuzz target itself allocates. */
    class Pause {
      public:
        Pause() : mWasCounting(sIsCounting) { sIsCounting = false; }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
        ~Pause() { sIsCounting = mWasCounting; }

      private:
        const bool mWasCounting;
    };

  private:
    static bool install() {
        const auto count = [](const volatile void*, size_t size) {
            sBytes += sIsCounting ? size : 0;
        };
        const auto ignore = [](const volatile void*) {};
        return __sanitizer_install_malloc_and_free_hooks != nullptr &&
               __sanitizer_install_malloc_and_free_hooks(count, ignore) != 0;
    }

    static inline thread_local bool sIsCounting = false;
    static inline thread_local uint64_t sBytes = 0;
};

/** The bytes that an operation allocates; 0 in builds that do not count. */
template <typename Operation>
uint64_t bytesAllocatedBy(Operation operation) {
    const AllocatedBytes allocated;
    operation();
    return allocated.get();
}

}  // namespace ormel::fuzz
