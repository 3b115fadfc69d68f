// libxml2 counts the lines of elements to 65,535 only, and to the end of a start tag at that.
#include "ReadTrace.h"

#include <algorithm>
#include <string_view>

namespace ormel::tools {

namespace {

/** Walks over a document that is known to be well-formed. */
class TagScanner {
  public:
    explicit TagScanner(std::string_view text) : mText(text) {}

    std::vector<long> scan() {
        while (moveTo("<")) {
            if (startsWith("<!--")) {
                mAt += 4;
                moveBehind("-->");
            } else if (startsWith("<![CDATA[")) {
                moveBehind("]]>");
            } else if (startsWith("<?")) {
                moveBehind("?>");
            } else if (startsWith("<!")) {
                skipDocumentType();
            } else {
                if (!startsWith("</")) {
                    mLines.push_back(mLine);
                }
                skipTag();
            }
        }
        return std::move(mLines);
    }

  private:
    bool startsWith(std::string_view marker) const {
        return mText.compare(mAt, marker.size(), marker) == 0;
    }

    bool moveTo(std::string_view marker) {
        const size_t found = std::min(mText.find(marker, mAt), mText.size());
        const auto from = mText.begin() + static_cast<std::ptrdiff_t>(mAt);
        const auto to = mText.begin() + static_cast<std::ptrdiff_t>(found);
        mLine += std::count(from, to, '\n');
        mAt = found;
        return found < mText.size();
    }

    void moveBehind(std::string_view marker) {
        if (moveTo(marker)) {
            mAt += marker.size();
        }
    }

    void skipQuoted() {
        const char quote[] = {mText[mAt++], '\0'};
        moveBehind(quote);
    }

    void skipTag() {
        while (mAt < mText.size() && mText[mAt] != '>') {
            if (mText[mAt] == '"' || mText[mAt] == '\'') {
                skipQuoted();
            } else {
                mLine += mText[mAt++] == '\n' ? 1 : 0;
            }
        }
    }

    /** Its declarations may have brackets in quotes, and quotes in comments. */
    void skipDocumentType() {
        int depth = 0;
        do {
            if (startsWith("<!--")) {
                mAt += 4;
                moveBehind("-->");
                continue;
            }
            if (startsWith("<?")) {
                moveBehind("?>");
                continue;
            }
            const char character = mText[mAt];
            if (character == '"' || character == '\'') {
                skipQuoted();
                continue;
            }
            depth += character == '<' ? 1 : character == '>' ? -1 : 0;
            mLine += character == '\n' ? 1 : 0;
            ++mAt;
        } while (depth > 0 && mAt < mText.size());
    }

    std::string_view mText;
    size_t mAt = 0;
    long mLine = 1;
    std::vector<long> mLines;
};

/** Of 16-bit characters those that matter, as bytes; what is no ASCII becomes a letter. */
std::string narrowed(const std::string& text, size_t high) {
    std::string bytes;
    bytes.reserve(text.size() / 2);
    for (size_t at = 0; at + 1 < text.size(); at += 2) {
        bytes += text[at + high] == '\0' ? text[at + 1 - high] : 'x';
    }
    return bytes;
}

}  // namespace

std::vector<long> startTagLines(const std::string& text) {
    const std::string_view start = std::string_view(text).substr(0, 2);
    if (start == "\xff\xfe" || start == std::string_view("<\0", 2)) {
        return TagScanner(narrowed(text, 1)).scan();
    }
    if (start == "\xfe\xff" || start == std::string_view("\0<", 2)) {
        return TagScanner(narrowed(text, 0)).scan();
    }
    return TagScanner(text).scan();
}

}  // namespace ormel::tools
