// Mutates the structure of tuning documents. The results are mostly well-formed, and consist of
// what the library reads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace ormel::fuzz {

/**
 * Makes a few edits to a document: moves, copies and removes nodes; adds sections, parameters,
 * attributes, comments, references and declarations; changes names and values; adds or removes
 * blanks between elements.
 *
 * Of a malformed document, only the part that can be read is kept.
 *
 * @param text    document
 * @param maxSize largest size of the result, in bytes
 * @param seed    selects the edits
 * @return the changed document; nothing if @p text cannot be read or no change fits
 */
std::optional<std::string> mutateDocument(const std::string& text, size_t maxSize, uint32_t seed);

/** Like mutateDocument(), but one edit copies an element of @p other into the document. */
std::optional<std::string> crossDocuments(const std::string& text, const std::string& other,
                                          size_t maxSize, uint32_t seed);

}  // namespace ormel::fuzz
