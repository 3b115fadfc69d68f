// Shared by the fuzz targets.
#pragma once

#include <android/log.h>
#include <libxml/xmlerror.h>
#include <ormel/IEffectOrm.h>
#include <ormel/SpatializerParamArray.h>
#include <ormel/TagIterator.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "AllocatedBytes.h"

namespace ormel::fuzz {

/** Aborts the process unless @p condition holds. */
inline void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

// libxml2 prints errors through a C-style variadic function.
// NOLINTNEXTLINE(cert-dcl50-cpp)
inline void ignoreXmlError(void* /* context */, const char* /* format */, ...) {}

/**
 * Formats the library's messages and drops them, as well as libxml2's. Keeps a cursor so that
 * libxml2 stays set up from one input to the next; setting it up would take most of the time.
 */
inline void setUp() {
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger([](const __android_logger_data*, const char*) {});
    // Its destructor cleans up libxml2 once.
    TagIterator{};
    static const auto& cursor = *new TagIterator;
    static_cast<void>(cursor);
    xmlSetGenericErrorFunc(nullptr, ignoreXmlError);
}

/** The messages kept since keepMessages(). */
inline std::vector<std::string>& keptMessages() {
    static auto& messages = *new std::vector<std::string>;
    return messages;
}

/** The messages since the last call, each after the digit of its priority. */
inline std::vector<std::string> takeMessages() {
    return std::exchange(keptMessages(), {});
}

/** From now on keeps the messages of the store, its front and the reader. */
inline void keepMessages() {
    __android_log_set_logger([](const __android_logger_data* data, const char* message) {
        const AllocatedBytes::Pause pause;
        if (std::strcmp(data->tag, "OrmSpatializerParamArray") == 0 ||
            std::strcmp(data->tag, "OrmSpatializerParamCache") == 0 ||
            std::strcmp(data->tag, "TuningFileParser") == 0 ||
            std::strcmp(data->tag, "ValueSetter") == 0) {
            keptMessages().push_back(std::to_string(data->priority) + message);
        }
    });
}

/** Reads numbers and flags from a fuzzer's bytes; 0 after their end. */
class Input {
  public:
    Input(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

    bool empty() const { return mSize == 0; }

    uint8_t byte() {
        if (mSize == 0) {
            return 0;
        }
        --mSize;
        return *mData++;
    }

    int32_t word() {
        uint32_t word = 0;
        for (int i = 0; i < 4; ++i) {
            word = word << 8 | byte();
        }
        return static_cast<int32_t>(word);
    }

    /** The next @p count bytes, or all that are left. */
    std::string bytes(size_t count) {
        const size_t size = std::min(count, mSize);
        const std::string taken(reinterpret_cast<const char*>(mData), size);
        mData += size;
        mSize -= size;
        return taken;
    }

    std::string rest() { return bytes(mSize); }

  private:
    const uint8_t* mData;
    size_t mSize;
};

/** A file in memory, with a path. */
class MemoryFile {
  public:
    MemoryFile() : mFd(::memfd_create("fuzz", 0)) { require(mFd >= 0); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(mFd); }

    void write(const std::string& content) {
        mContent = content;
        require(::ftruncate(mFd, 0) == 0);
        require(::pwrite(mFd, content.data(), content.size(), 0) ==
                static_cast<ssize_t>(content.size()));
    }

    std::string path() const { return "/proc/self/fd/" + std::to_string(mFd); }
    const std::string& content() const { return mContent; }

  private:
    int mFd;
    std::string mContent;
};

/** An effect that reads every value that it gets, and gives the answers that were set. */
class TouchingEffect : public IEffectOrm {
  public:
    int32_t setEffectParam(int32_t, int32_t, const int32_t* values, int32_t count) override {
        for (int32_t i = 0; i < count; ++i) {
            mTouched += static_cast<uint32_t>(values[i]);
        }
        return readStatus;
    }

    int32_t getEffectParam(int32_t, int32_t, int32_t* values, int32_t* count) override {
        for (int32_t i = 0; i < *count; ++i) {
            values[i] = answerValue;
        }
        if (answersCount) {
            *count = answerCount;
        }
        return readStatus;
    }

    int32_t commitEffectParams(int32_t) override { return readStatus; }

    int32_t readStatus = 0;
    int32_t answerValue = 0;
    bool answersCount = false;
    int32_t answerCount = 0;

  private:
    // Keeps the reads from being optimised away.
    volatile uint32_t mTouched = 0;
};

struct Call {
    enum What { SET, GET, COMMIT } what;
    int32_t device;
    int32_t code;
    int32_t count;
    std::vector<int32_t> values;

    bool operator==(const Call& other) const {
        return what == other.what && device == other.device && code == other.code &&
               count == other.count && values == other.values;
    }
};

/** Records all calls in order, and gives the answers that were set. */
class RecordingEffect : public TouchingEffect {
  public:
    int32_t setEffectParam(int32_t device, int32_t code, const int32_t* values,
                           int32_t count) override {
        calls.push_back({Call::SET, device, code, count, {values, values + std::max(count, 0)}});
        return TouchingEffect::setEffectParam(device, code, values, count);
    }

    int32_t getEffectParam(int32_t device, int32_t code, int32_t* values, int32_t* count) override {
        const int32_t room = *count;
        calls.push_back({Call::GET, device, code, room, {}});
        const int32_t status = TouchingEffect::getEffectParam(device, code, values, count);
        // Different values, so that one in the wrong place shows.
        for (int32_t i = 0; i < room; ++i) {
            values[i] ^= i;
        }
        return status;
    }

    int32_t commitEffectParams(int32_t device) override {
        calls.push_back({Call::COMMIT, device, 0, 0, {}});
        return TouchingEffect::commitEffectParams(device);
    }

    std::vector<Call> calls;
};

/** The process's store, reset to its initial state. */
inline SpatializerParamArray& freshStore() {
    auto& array = SpatializerParamArray::getInstance();
    array.~SpatializerParamArray();
    return *new (&array) SpatializerParamArray;
}

}  // namespace ormel::fuzz
