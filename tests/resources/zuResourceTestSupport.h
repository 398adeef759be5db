#pragma once

// Helpers of the resource tests: a temporary directory, saving and loading test resources
// through real files, a stream that stands at a chosen file position, and a fixture that
// starts the library with the test resource registered.

#include "resources/zuTestBlockResource.h"

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/stream/zuFileStream.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zu::test {

// A directory of its own under the system's temporary directory, removed with its files.
class zuTempDir {
public:
    zuTempDir();
    ~zuTempDir();
    zuTempDir(const zuTempDir&) = delete;
    zuTempDir& operator=(const zuTempDir&) = delete;

    const std::string& path() const { return mPath; }
    std::string file(const std::string& name) const { return mPath + "/" + name; }

private:
    std::string mPath;
};

// A stream container that stands at `offset` of the file `name`, for storeStreamInfo.
class zuPositionedStream : public zuFileStream {
public:
    zuPositionedStream(const std::string& name, uint64_t offset, zuStreamVersion version) : zuFileStream(8)
    {
        SetName(name);
        setWindow(windowBuffer(), offset, 0);
        SetVersion(version);
    }
};

// Saves the objects as the top level of a zuFileStream file (blocks of `blockSize` bytes).
bool saveResources(const std::string& path, const std::vector<zuRttiInterface*>& objects,
                   int blockSize = zuFileStream::DEFAULT_BLOCK_SIZE);
// Loads the top-level test resources of a file (empty on failure).
std::vector<zuPointer<zuTestBlockResource>> loadResources(const std::string& path,
                                                          int blockSize = zuFileStream::DEFAULT_BLOCK_SIZE);
// The bytes of a file from `offset` on, at most `size`.
std::vector<char> readFileBytes(const std::string& path, uint64_t offset, uint64_t size);
void writeFileBytes(const std::string& path, const std::vector<char>& bytes);

// Starts the library, registers the test resource's factory and requests, and clears the
// load policies it may leave behind.
class ResourceLibrary : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
};

} // namespace zu::test
