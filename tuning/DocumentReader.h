// Reads documents with libxml2.
#pragma once

#include <ormel/DocumentBudget.h>

#include <cstddef>
#include <memory>
#include <string>

#include "tuning/Document.h"

namespace ormel {

/** The longest allowed text: libxml2 assembles none that is longer. */
constexpr size_t kMaxTextBytes = size_t{10000000} >> ORMEL_BOUND_SHIFT;

/**
 * Reads a document into one block. The nodes are those of libxml2's tree without options, except
 * that an entity reference has no children here.
 *
 * Opens no other file, and keeps libxml2's messages off stderr.
 *
 * @param source     path of the document, or its text if @p fromMemory
 * @param fromMemory whether @p source is the text
 * @param budget     account of the document: gets its size, and is charged for what entities add
 * @param error      receives why there is no document: line and libxml2's message, or another
 *                   reason
 * @return null if the document cannot be read, is malformed, or exceeds a bound
 */
std::unique_ptr<Document> readDocument(const std::string& source, bool fromMemory,
                                       DocumentBudget& budget, std::string& error);

/** Tears down libxml2's global state. The next read sets it up again. */
void cleanUpXmlParser();

}  // namespace ormel
