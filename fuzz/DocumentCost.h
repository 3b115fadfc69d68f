// What a document may cost whoever reads it.
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
 * The work that was entered into an account keeps to the document's size. An accepted document has
 * kept to the bound. A refused one may have gone over it by the last thing that was done before
 * somebody looked: the lists of one object for three devices, whose numbers had been paid for once
 * when they were read; or an element's attributes, whose price is looked at each time that the room
 * for them doubles, and is four times as high then.
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
 * The bytes that were allocated keep to the document's size and to what was paid for.
 *
 * - A byte of the document. The dearest are `<a:b/>` and `&e;x` behind a DOCTYPE. Two bytes of the
 *   latter make a node of libxml2's tree, of 120 bytes, and one of the block, whose 24 bytes come
 *   four times, since an array that doubles has all its earlier sizes besides and room to spare.
 *   Six of the former make a node of each too, and libxml2 writes a message of 600 bytes.
 * - A unit of work, and a byte of payload. A number costs 4 of either, and its 4 bytes are copied
 *   from a row to an object and from there to a list, all of which grow by doubling. What else is
 *   paid for takes less, but for one thing: parameter entities' text is read again at each
 *   reference, so that a byte of it, which costs 1, is as dear as one of the document.
 * - A declared entity: libxml2 makes a parser when it is first referred to. A loop of entities ends
 *   at a depth of 40.
 * - Two parsers and two blocks with room for a usual document, one each where there is no DOCTYPE,
 *   and what libxml2 converts an encoding with, as often.
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
