// What reading a document may cost.
#pragma once

#include <ormel/DocumentBudget.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "Fuzz.h"

namespace ormel::fuzz {

inline size_t countOf(const std::string& part, std::string text) {
    // As if UTF-16 were ASCII.
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
    size_t count = 0;
    for (size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
        ++count;
    }
    return count;
}

/**
 * Requires that the charged work is in proportion to the document's size. An accepted document is
 * within the bound. A refused one may exceed it by the last step before the check: the lists of one
 * object for three devices, whose numbers were charged once already when they were read; or an
 * element's attributes, whose cost is checked each time that their array doubles, and is then four
 * times as high.
 */
inline void requireLittleWork(const std::string& text, const DocumentBudget& budget,
                              bool isAccepted) {
    constexpr uint64_t kTimesWhenRefused = 8;
    const uint64_t bound = DocumentBudget::kWorkPerByte * text.size() + DocumentBudget::kWorkBase;
    require(!isAccepted || (!budget.isSpent() && budget.getWorkLimit() == bound));
    require(!isAccepted || budget.getHolderBytes() <= DocumentBudget::kMaxHolderBytes);
    require(budget.getWork() <= (isAccepted ? 1 : kTimesWhenRefused) * bound);
}

/**
 * Requires that the allocated bytes are in proportion to the document's size and the charged cost.
 * Each of these may allocate a fixed number of bytes:
 *
 * - A byte of the document. The costliest texts are `<a:b/>` and `&e;x` after a DOCTYPE. Two bytes
 *   of the latter make a node of 120 bytes in libxml2's tree and one of 24 bytes in the block. The
 *   24 bytes count four times, because a doubling array also allocated all its earlier sizes and
 *   has spare capacity. Six bytes of the former make both nodes too, and a message of 600 bytes by
 *   libxml2.
 * - A unit of work, and a byte of payload. A number costs 4 of each, and its 4 bytes are copied
 *   from a row to an object and from there to a list, all of which grow by doubling. Everything
 *   else that is charged takes less, except the text of parameter entities: it is read again at
 *   each reference, so a byte of it, which costs 1, takes as much as one of the document.
 * - A declared entity: libxml2 makes a parser at the first reference to it. A loop of entities ends
 *   at a depth of 40.
 * - The document itself: two parsers, two blocks with room for a usual document, and libxml2's
 *   encoding converters, twice too. Once each without a DOCTYPE.
 */
inline void requireLittleMemory(const std::string& text, const DocumentBudget& budget,
                                uint64_t allocatedBytes) {
    constexpr uint64_t kPerByte = 128;
    constexpr uint64_t kPerPayment = 8;
    constexpr uint64_t kPerEntity = uint64_t{16} << 10;
    constexpr uint64_t kLoopedEntities = 40;
    constexpr uint64_t kPerDocument = uint64_t{256} << 10;
    const bool hasParameterEntities = text.find('%') != std::string::npos;
    const uint64_t declared = countOf("<!ENTITY", text);
    const uint64_t parsers = declared == 0 ? 0 : declared + kLoopedEntities;
    const uint64_t payments = budget.getWork() + budget.getPayloadBytes();
    require(allocatedBytes <= kPerDocument + kPerByte * text.size() +
                                      (hasParameterEntities ? kPerByte : kPerPayment) * payments +
                                      kPerEntity * parsers);
}

}  // namespace ormel::fuzz
