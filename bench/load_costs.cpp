// Loads a library whose dependencies are already loaded, and prints the cost, for script/size:
// load_costs LIBRARY [CYCLES]. Loads it once; with CYCLES, loads and unloads it that many times.
#include <dlfcn.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

// The C library's names for the functions counted here.
extern "C" {
void* __libc_malloc(size_t size);                 // NOLINT
void* __libc_calloc(size_t count, size_t size);   // NOLINT
void* __libc_realloc(void* memory, size_t size);  // NOLINT
}

namespace {

long allocations = 0;

}  // namespace

extern "C" {

void* malloc(size_t size) {
    ++allocations;
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* memory, size_t size) {
    ++allocations;
    return __libc_realloc(memory, size);
}

/** Has a fixed name, so that script/size can count its instructions. */
[[gnu::noinline]] void* load_library(const char* path) {
    return ::dlopen(path, RTLD_NOW);
}

}  // extern "C"

namespace {

struct Memory {
    long allocations;
    long bytes;
    /** Of the whole process, in kB. */
    long dirty;
};

long dirtyMemory() {
    std::ifstream file("/proc/self/smaps_rollup");
    for (std::string name; file >> name;) {
        if (name == "Private_Dirty:") {
            long kilobytes = 0;
            file >> kilobytes;
            return kilobytes;
        }
    }
    return -1;
}

Memory measure() {
    const long dirty = dirtyMemory();
    return {allocations, static_cast<long>(::mallinfo2().uordblks), dirty};
}

/** Why the dynamic linker failed last. */
std::string linkerError() {
    return ::dlerror();  // NOLINT(concurrency-mt-unsafe): the program has one thread.
}

int fail(const std::string& what) {
    (void)std::fprintf(stderr, "load_costs: %s\n", what.c_str());
    return EXIT_FAILURE;
}

int loadOnce(const char* path) {
    // The first measurement allocates too, and must not be counted.
    measure();
    const Memory before = measure();
    if (load_library(path) == nullptr) {
        return fail(linkerError());
    }
    const Memory after = measure();
    std::printf("allocations %ld\nbytes %ld\ndirty %ld\n", after.allocations - before.allocations,
                after.bytes - before.bytes, after.dirty - before.dirty);
    return EXIT_SUCCESS;
}

int loadAndUnload(const char* path, long cycles) {
    long before = 0;
    for (long cycle = 0; cycle <= cycles; ++cycle) {
        // The first cycle also allocates what the dynamic linker keeps.
        before = cycle == 1 ? measure().bytes : before;
        void* const library = load_library(path);
        if (library == nullptr) {
            return fail(linkerError());
        }
        ::dlclose(library);
        if (::dlopen(path, RTLD_NOW | RTLD_NOLOAD) != nullptr) {
            return fail(std::string(path) + " was not unloaded");
        }
    }
    std::printf("left %ld\n", (measure().bytes - before) / cycles);
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        return fail("usage: load_costs LIBRARY [CYCLES]");
    }
    if (argc == 2) {
        return loadOnce(argv[1]);
    }
    const long cycles = std::strtol(argv[2], nullptr, 10);
    return cycles > 0 ? loadAndUnload(argv[1], cycles) : fail("CYCLES is a number above 0");
}
