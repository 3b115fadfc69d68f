// The place where libxml2 reads a document.
#pragma once

#include <ormel/DocumentBudget.h>

#include <cstddef>
#include <memory>
#include <string>

#include "tuning/Document.h"

namespace ormel {

/** The longest text that a document may have, which is the longest that libxml2 puts together. */
constexpr size_t kMaxTextBytes = size_t{10000000} >> ORMEL_BOUND_SHIFT;

/**
 * Reads a document into one block. The nodes are those of libxml2's tree without options, but for
 * an entity reference, which has no children here.
 *
 * No other file is opened, and nothing that libxml2 has to say reaches stderr.
 *
 * @param source     path of the document, or its text when @p fromMemory
 * @param fromMemory says which
 * @param budget     what the document may cost: learns its size, and pays for what entities add
 * @param error      says why there is no document: the line and libxml2's words, or what else
 * @return null for a document that cannot be read, is malformed, or exceeds a bound
 */
std::unique_ptr<Document> readDocument(const std::string& source, bool fromMemory,
                                       DocumentBudget& budget, std::string& error);

/** Tears down libxml2's global state. The next document that is read sets it up again. */
void cleanUpXmlParser();

}  // namespace ormel
