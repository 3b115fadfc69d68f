// What the effect gets of each profile and tuning device, as parts of a page.
#pragma once

#include <cstddef>

#include "document/LoadedDocument.h"
#include "text/Json.h"

namespace ormel::tools {

/** A page shows no more lists than this. */
constexpr size_t kMaxLists = 200;

/**
 * [{id, title, sentence, isChanged, groups: [{devices, rows}]}]: every list of a document, beside
 * the one that @p old has under its name where there is an old document.
 */
Json listsJson(const LoadedDocument& document, const LoadedDocument* old);

}  // namespace ormel::tools
