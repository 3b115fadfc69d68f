// What the effect gets of each profile and tuning device, as data for a page.
#pragma once

#include <cstddef>

#include "document/LoadedDocument.h"
#include "text/Json.h"

namespace ormel::tools {

/** A page shows no more lists than this. */
constexpr size_t kMaxLists = 200;

/**
 * [{id, title, sentence, isChanged, groups: [{devices, isChanged, rows}]}]: what the effect gets of
 * each profile and tuning device, beside what it gets of @p old where there is an old document.
 */
Json listsJson(const LoadedDocument& document, const LoadedDocument* old);

}  // namespace ormel::tools
