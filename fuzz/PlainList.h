// Plain writing and reading of packed parameter lists.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace ormel::fuzz {

using Words = std::vector<int32_t>;

/** A packed list under construction. */
class PlainList {
  public:
    int32_t device = -1;
    Words words = {0x40000000, 0};

    int32_t count() const { return words[1]; }

    /** Appends an entry with the values of all parts in order. */
    void add(const char* code, std::initializer_list<Words> parts) {
        words.insert(words.end(), {device, codeOf(code), 0});
        const size_t count = words.size() - 1;
        for (const Words& part : parts) {
            words.insert(words.end(), part.begin(), part.end());
            words[count] += static_cast<int32_t>(part.size());
        }
        ++words[1];
    }

    /** The letters, the first in the least significant byte. */
    static int32_t codeOf(const char* letters) {
        int32_t code = 0;
        for (int shift = 0; *letters != '\0'; ++letters, shift += 8) {
            code += *letters << shift;
        }
        return code;
    }
};

struct PlainEntry {
    int32_t device = 0;
    int32_t code = 0;
    int32_t count = 0;
    Words values;
};

/** Reads a packed list. A negative value count moves it backwards; offsets wrap at 32 bits. */
class PlainReader {
  public:
    explicit PlainReader(const Words& words) : mWords(words) {}

    bool begin() {
        int32_t profile = 0;
        mIndex = 0;
        mOffset = 0;
        return readWord(profile) && readWord(mCount);
    }

    bool next(PlainEntry& entry) {
        if (mIndex >= mCount) {
            return false;
        }
        ++mIndex;
        if (!readWord(entry.device) || !readWord(entry.code) || !readWord(entry.count)) {
            return false;
        }
        const int64_t valuesEnd = mOffset + int64_t{4} * entry.count;
        const auto end = static_cast<int32_t>(static_cast<uint32_t>(valuesEnd));
        if (end > sizeInBytes() || valuesEnd > sizeInBytes()) {
            return false;
        }
        const auto first = mWords.begin() + mOffset / 4;
        entry.values.assign(first, first + std::max(entry.count, 0));
        mOffset = end;
        return true;
    }

    bool validate() {
        if (!begin()) {
            return false;
        }
        PlainEntry entry;
        while (next(entry)) {
            if (isLooping()) {
                return true;
            }
        }
        return mIndex == mCount;
    }

    /** Whether an entry was read twice. Reading then repeats up to the announced count. */
    bool isLooping() const { return mIndex > sizeInWords(); }

    int32_t sizeInWords() const { return static_cast<int32_t>(mWords.size()); }

  private:
    int32_t sizeInBytes() const { return 4 * sizeInWords(); }

    bool readWord(int32_t& word) {
        if (mOffset < 0 || mOffset + 4 > sizeInBytes()) {
            return false;
        }
        word = mWords[static_cast<size_t>(mOffset / 4)];
        mOffset += 4;
        return true;
    }

    const Words mWords;
    int32_t mOffset = 0;
    int32_t mCount = 0;
    int32_t mIndex = 0;
};

}  // namespace ormel::fuzz
