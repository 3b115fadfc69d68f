// Tests that use the process's store, and temporary files to load into it.
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

/** A temporary file, deleted with the object. */
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

/** Tests that use the process's store, reset to its initial state before each. */
class StoreTest : public ::testing::Test {
  protected:
    StoreTest() {
        mArray.~SpatializerParamArray();
        new (&mArray) SpatializerParamArray;
        log.take();
    }

    /** Loads a document and drops the messages of the load. */
    void load(const std::string& document) {
        mArray.loadSpatializerXMLFile(TempFile(document).path());
        log.take();
    }

    LogCapture log;
    SpatializerParamArray& mArray = SpatializerParamArray::getInstance();
};

}  // namespace ormel::test
