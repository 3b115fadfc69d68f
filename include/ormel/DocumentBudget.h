// What one tuning document may cost, in work and in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Builds that look for faults at the bounds divide these by two so many times.
#ifndef ORMEL_BOUND_SHIFT
#define ORMEL_BOUND_SHIFT 0
#endif

namespace ormel {

/**
 * The account of one document. Whoever reads or translates it enters what that takes, and gives the
 * document up once isSpent().
 *
 * Prices and bounds are the same on every platform, so that a document is refused on all of them or
 * on none. An account belongs to one thread.
 */
class DocumentBudget {
  public:
    /** The largest document, in bytes. */
    static constexpr size_t kMaxDocumentBytes = (size_t{16} << 20) >> ORMEL_BOUND_SHIFT;
    /** Work that a document may take: so much for each of its bytes, and so much beside that. */
    static constexpr uint64_t kWorkPerByte = 16;
    static constexpr uint64_t kWorkBase = (uint64_t{1} << 20) >> ORMEL_BOUND_SHIFT;
    /** Bytes of lists, values and names together, and of text that entities add. */
    static constexpr uint64_t kMaxPayloadBytes = (uint64_t{16} << 20) >> ORMEL_BOUND_SHIFT;
    /** Bytes of the objects and map entries that hold them. */
    static constexpr uint64_t kMaxHolderBytes = (uint64_t{32} << 20) >> ORMEL_BOUND_SHIFT;

    /** Prices in work; a byte of text or name that is handed out or expanded costs 1. */
    static constexpr uint64_t kStepPrice = 4;
    static constexpr uint64_t kMessagePrice = 64;
    static constexpr size_t kFewAttributes = 1000;
    static constexpr uint64_t kComparisonsPerWork = 64;
    /** Prices in work, and in bytes of holders too. */
    static constexpr uint64_t kEntryPrice = 64;
    static constexpr uint64_t kObjectPrice = 128;

    /** Allows for the document's size, which is known once it has been read. */
    void setDocumentSize(size_t bytes) { mWorkLimit = kWorkPerByte * bytes + kWorkBase; }

    /** Text or names were handed out. */
    void chargeText(size_t bytes) { mWork += bytes; }

    /** Moves of the cursor, attributes looked at, or nodes visited while an entity is expanded. */
    void chargeSteps(size_t count) { mWork += kStepPrice * count; }

    /**
     * libxml2 compared an element's attributes with one another. Of few, that is part of parsing.
     */
    void chargeAttributes(size_t count) {
        mWork += count > kFewAttributes ? uint64_t{count} * count / kComparisonsPerWork : 0;
    }

    /** A message was logged that quotes so many bytes. */
    void chargeMessage(size_t quotedBytes) { mWork += kMessagePrice + quotedBytes; }

    /** Numbers were stored in a value or a list. */
    void chargeNumbers(size_t count) {
        mWork += kStepPrice * count;
        mPayloadBytes += sizeof(int32_t) * count;
    }

    /** A name, or a text that an entity adds, is kept. */
    void chargeKeptText(size_t bytes) { mPayloadBytes += bytes; }

    /** Map entries were made. */
    void chargeEntries(size_t count) {
        mWork += kEntryPrice * count;
        mHolderBytes += kEntryPrice * count;
    }

    /** An object of the model was made. */
    void chargeObject() {
        mWork += kObjectPrice;
        mHolderBytes += kObjectPrice;
    }

    /** Whether a bound is exceeded. */
    bool isSpent() const {
        return mWork > mWorkLimit || mPayloadBytes > kMaxPayloadBytes ||
               mHolderBytes > kMaxHolderBytes;
    }

    /** Says which bound is exceeded, and by what; empty while none is. */
    std::string describe() const;

    uint64_t getWork() const { return mWork; }
    uint64_t getWorkLimit() const { return mWorkLimit; }
    uint64_t getPayloadBytes() const { return mPayloadBytes; }
    uint64_t getHolderBytes() const { return mHolderBytes; }

  private:
    uint64_t mWork = 0;
    uint64_t mWorkLimit = kWorkBase;
    uint64_t mPayloadBytes = 0;
    uint64_t mHolderBytes = 0;
};

}  // namespace ormel
