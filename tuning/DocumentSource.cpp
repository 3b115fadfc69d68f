#include "tuning/DocumentSource.h"

#include <fcntl.h>
#include <ormel/DocumentBudget.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>

namespace ormel {

namespace {

constexpr size_t kMaxSize = DocumentBudget::kMaxDocumentBytes;

}  // namespace

DocumentSource::DocumentSource(const std::string& source, bool fromMemory)
    : mText(fromMemory ? source : std::string_view()) {
    mStatedSize = fromMemory ? mText.size() : open(source.c_str());
    if (mStatedSize > kMaxSize) {
        failTooLarge();
    }
}

DocumentSource::~DocumentSource() {
    if (mFile >= 0) {
        ::close(mFile);
    }
}

size_t DocumentSource::open(const char* path) {
    // Non-blocking, so as not to wait for a pipe at the path.
    mFile = ::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    struct stat status = {};
    if (mFile < 0 || ::fstat(mFile, &status) != 0) {
        fail(errno);
    } else if (!S_ISREG(status.st_mode)) {
        mError = "not a regular file";
    } else {
        // The size may need more than 32 bits, and only whether it exceeds the bound matters.
        return static_cast<size_t>(
                std::min<int64_t>(status.st_size, static_cast<int64_t>(kMaxSize) + 1));
    }
    return 0;
}

void DocumentSource::fail(int error) {
    mError = std::generic_category().message(error);
}

void DocumentSource::failTooLarge() {
    mError = "larger than " + std::to_string(kMaxSize) + " bytes";
}

int DocumentSource::read(char* out, int room) {
    if (!mError.empty() || room <= 0) {
        return mError.empty() ? 0 : -1;
    }
    const auto size = static_cast<size_t>(room);
    return mFile < 0 ? readText(out, size) : readFile(out, size);
}

int DocumentSource::readText(char* out, size_t room) {
    const size_t count = mText.copy(out, room, mSize);
    mSize += count;
    return static_cast<int>(count);
}

int DocumentSource::readFile(char* out, size_t room) {
    // The stated size is not reliable: files grow, and some state 0.
    const ssize_t count = TEMP_FAILURE_RETRY(::read(mFile, out, room));
    if (count < 0) {
        fail(errno);
        return -1;
    }
    mSize += static_cast<size_t>(count);
    if (mSize > kMaxSize) {
        failTooLarge();
        return -1;
    }
    return static_cast<int>(count);
}

void DocumentSource::rewind() {
    mSize = 0;
    if (mFile >= 0 && ::lseek(mFile, 0, SEEK_SET) != 0) {
        fail(errno);
    }
}

}  // namespace ormel
