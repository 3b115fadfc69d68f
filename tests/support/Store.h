// The process's store, fresh for each test, and documents to load into it.
#pragma once

#include <gtest/gtest.h>
#include <ormel/SpatializerParamArray.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <new>
#include <string>

#include "LogCapture.h"

namespace ormel::test {

/** A file of its own, gone with the object. */
class TempFile {
  public:
    explicit TempFile(const std::string& content) {
        std::string pattern = ::testing::TempDir() + "ormel-XXXXXX";
        const int fd = ::mkstemp(pattern.data());
        ::close(fd);
        mPath = pattern;
        std::ofstream(mPath, std::ios::binary) << content;
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile() { ::unlink(mPath.c_str()); }

    const std::string& path() const { return mPath; }

  private:
    std::string mPath;
};

/** Tests that work on the process's store, each on one as the process first makes it. */
class StoreTest : public ::testing::Test {
  protected:
    StoreTest() {
        mArray.~SpatializerParamArray();
        new (&mArray) SpatializerParamArray;
        log.take();
    }

    /** Loads a document and forgets what was logged on the way. */
    void load(const std::string& document) {
        mArray.loadSpatializerXMLFile(TempFile(document).path());
        log.take();
    }

    LogCapture log;
    SpatializerParamArray& mArray = SpatializerParamArray::getInstance();
};

}  // namespace ormel::test
