// Where a document's bytes come from.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace ormel {

/**
 * The bytes of a regular file, or of a text in memory, handed out piece by piece and at most
 * DocumentBudget::kMaxDocumentBytes of them.
 */
class DocumentSource {
  public:
    /**
     * @param source     path of the file, or the text itself when @p fromMemory; a text must
     *                   outlive this object
     * @param fromMemory says which
     */
    DocumentSource(const std::string& source, bool fromMemory);
    DocumentSource(const DocumentSource&) = delete;
    DocumentSource& operator=(const DocumentSource&) = delete;
    ~DocumentSource();

    /** Reads on. @return number of bytes, 0 at the end, -1 on failure */
    int read(char* out, int room);

    /** Starts over. */
    void rewind();

    /** Number of bytes in all, as far as it is known: files say one, and may grow beyond it. */
    size_t getSize() const { return std::max(mSaidSize, mSize); }

    /** Why nothing more can be read; empty while all is well. */
    const std::string& getError() const { return mError; }

  private:
    /** @return the size that the file says it has, 0 when there is no such file to read */
    size_t open(const char* path);
    void fail(int error);
    void failTooLarge();
    int readFile(char* out, size_t room);
    int readText(char* out, size_t room);

    const std::string_view mText;
    /** The open file, -1 for a text. */
    int mFile = -1;
    size_t mSaidSize = 0;
    /** Number of bytes read since the start. */
    size_t mSize = 0;
    std::string mError;
};

}  // namespace ormel
