// What one tuning document may cost, in work and in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Right shift of the bounds below, for builds that look for faults at the bounds.
#ifndef ORMEL_BOUND_SHIFT
#define ORMEL_BOUND_SHIFT 0
#endif

namespace ormel {

/**
 * The cost account of one document. Code that reads or translates the document charges its cost
 * here, and gives the document up once isSpent().
 *
 * Prices and bounds are the same on every platform, so every platform refuses the same documents.
 * An account belongs to one thread.
 */
class DocumentBudget {
  public:
    /** Largest document, in bytes. */
    static constexpr size_t kMaxDocumentBytes = (size_t{16} << 20) >> ORMEL_BOUND_SHIFT;
    /** Work limit: kWorkPerByte for each byte of the document, plus kWorkBase. */
    static constexpr uint64_t kWorkPerByte = 16;
    static constexpr uint64_t kWorkBase = (uint64_t{1} << 20) >> ORMEL_BOUND_SHIFT;
    /** Limit on bytes of lists, values, names and text added by entities, together. */
    static constexpr uint64_t kMaxPayloadBytes = (uint64_t{16} << 20) >> ORMEL_BOUND_SHIFT;
    /** Limit on bytes of the objects and map entries that hold them. */
    static constexpr uint64_t kMaxHolderBytes = (uint64_t{32} << 20) >> ORMEL_BOUND_SHIFT;

    /** Prices in work. A byte of text or name, returned or expanded, costs 1. */
    static constexpr uint64_t kStepPrice = 4;
    static constexpr uint64_t kMessagePrice = 64;
    /** Prices both in work and in holder bytes. */
    static constexpr uint64_t kEntryPrice = 64;
    static constexpr uint64_t kObjectPrice = 128;
    /**
     * Comparing n attributes of an element with one another costs n * n / kComparisonsPerWork, and
     * nothing for up to kFewAttributes.
     */
    static constexpr size_t kFewAttributes = 1000;
    static constexpr uint64_t kComparisonsPerWork = 64;

    /** Sets the work limit for a document of @p bytes. */
    void setDocumentSize(size_t bytes) { mWorkLimit = kWorkPerByte * bytes + kWorkBase; }

    /** Text or names returned. */
    void chargeText(size_t bytes) { mWork += bytes; }

    /** Cursor moves, attributes looked at, or nodes visited while an entity is expanded. */
    void chargeSteps(size_t count) { mWork += kStepPrice * count; }

    /** Comparisons of an element's attributes with one another. */
    void chargeAttributes(size_t count) {
        mWork += count > kFewAttributes ? uint64_t{count} * count / kComparisonsPerWork : 0;
    }

    /** A logged message that quotes @p quotedBytes. */
    void chargeMessage(size_t quotedBytes) { mWork += kMessagePrice + quotedBytes; }

    /** Numbers stored in a value or a list. */
    void chargeNumbers(size_t count) {
        mWork += kStepPrice * count;
        mPayloadBytes += sizeof(int32_t) * count;
    }

    /** A stored name, or stored text added by an entity. */
    void chargeKeptText(size_t bytes) { mPayloadBytes += bytes; }

    /** Map entries made. */
    void chargeEntries(size_t count) {
        mWork += kEntryPrice * count;
        mHolderBytes += kEntryPrice * count;
    }

    /** A model object made. */
    void chargeObject() {
        mWork += kObjectPrice;
        mHolderBytes += kObjectPrice;
    }

    /** Whether any bound is exceeded. */
    bool isSpent() const {
        return mWork > mWorkLimit || mPayloadBytes > kMaxPayloadBytes ||
               mHolderBytes > kMaxHolderBytes;
    }

    /** The exceeded bound and the amount; empty if none is exceeded. */
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
