// Where a document's bytes come from.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace ormel {

/**
 * Reads a regular file, or a text in memory, piece by piece: at most
 * DocumentBudget::kMaxDocumentBytes in all.
 */
class DocumentSource {
  public:
    /**
     * @param source     path of the file, or the text if @p fromMemory; a text must outlive this
     *                   object
     * @param fromMemory whether @p source is the text
     */
    DocumentSource(const std::string& source, bool fromMemory);
    DocumentSource(const DocumentSource&) = delete;
    DocumentSource& operator=(const DocumentSource&) = delete;
    ~DocumentSource();

    /** Reads the next bytes. @return number of bytes, 0 at the end, -1 on failure */
    int read(char* out, int room);

    /** Returns to the start. */
    void rewind();

    /** Total size in bytes as far as known: a file states one, and may grow beyond it. */
    size_t getSize() const { return std::max(mStatedSize, mSize); }

    /** Why reading failed; empty if it did not. */
    const std::string& getError() const { return mError; }

  private:
    /** @return the size that the file states; 0 if there is no such file to read */
    size_t open(const char* path);
    void fail(int error);
    void failTooLarge();
    int readFile(char* out, size_t room);
    int readText(char* out, size_t room);

    const std::string_view mText;
    /** The open file, -1 for a text. */
    int mFile = -1;
    size_t mStatedSize = 0;
    /** Number of bytes read since the start. */
    size_t mSize = 0;
    std::string mError;
};

}  // namespace ormel
