// What an effect keeps of a document.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "LoadedDocument.h"
#include "PackedEntries.h"
#include "RecordingEffect.h"

namespace ormel::tools {

/** A list of a document, and what an effect keeps of it once the front has applied it. */
struct AppliedList {
    EffectList list;
    RecordingEffect::Values values;
};

/** Every list of a document, in the document's order. Loads it into the process's store. */
std::vector<AppliedList> appliedLists(const LoadedDocument& document);

/** The values that an effect keeps for a device under a code; null where it keeps none. */
const std::vector<int32_t>* valuesOf(const AppliedList& applied, int32_t device, int32_t code);

/**
 * The shape of those values. Where the front puts the mix matrix of the speaker's tuning into the
 * speaker's output mode, the matrix begins behind the first value.
 */
std::optional<Shape> shapeOf(const AppliedList& applied, int32_t device, int32_t code);

}  // namespace ormel::tools
