// Changes tuning documents as documents: what comes out is mostly well-formed, and made of what the
// library reads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace ormel::fuzz {

/**
 * Changes a document by a few edits: moves, copies and removes nodes, adds sections, parameters,
 * attributes, comments, references and declarations, changes names and values, adds or removes the
 * blanks between elements.
 *
 * A malformed document is changed as far as it can be read.
 *
 * @param text    document
 * @param maxSize bytes that the result may have
 * @param seed    decides what is changed
 * @return the changed document; none when nothing of @p text can be read or no change fits
 */
std::optional<std::string> mutateDocument(const std::string& text, size_t maxSize, uint32_t seed);

/** As mutateDocument(), but one of the edits puts an element of @p other into the document. */
std::optional<std::string> crossDocuments(const std::string& text, const std::string& other,
                                          size_t maxSize, uint32_t seed);

}  // namespace ormel::fuzz
