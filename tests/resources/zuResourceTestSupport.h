#pragma once

// Helpers of the resource tests: a temporary directory, saving and loading test resources
// through real files, a stream that stands at a chosen file position, hand-built records,
// the controller's finalise loop, and a fixture that starts the library with the test
// resource registered.

#include "resources/zuTestBlockResource.h"
#include "support/zuTestObjects.h"

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/resources/zuResourceController.h>
#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuFileIoDevice.h>

#include <gtest/gtest.h>

#include <initializer_list>
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
// Loads the top-level objects of a file that are a T (empty on failure).
template <class T = zuTestBlockResource>
std::vector<zuPointer<T>> loadResources(const std::string& path, int blockSize = zuFileStream::DEFAULT_BLOCK_SIZE)
{
    std::vector<zuPointer<T>> resources;
    zuFileStream stream(blockSize);
    zuFileIoDevice device(path, zuFileIoDevice::ReadOnly);
    if (stream.Load(device, path))
        for (int i = 0; i < stream.GetObjectCount(); ++i)
            if (zuRttiInterface* object = stream.GetObjectAt(i); object && object->IsDerived(T::TYPE))
                resources.emplace_back(static_cast<T*>(object));
    return resources;
}
// The bytes of a file from `offset` on, at most `size`.
std::vector<char> readFileBytes(const std::string& path, uint64_t offset, uint64_t size);
void writeFileBytes(const std::string& path, const std::vector<char>& bytes);

// The identity the stream writes for an object.
inline uint64_t idOf(const void* object)
{
    return reinterpret_cast<uintptr_t>(object);
}

// The 32-bit integers as little-endian bytes.
zuBytes ints(std::initializer_list<int32_t> values);

// A whole stream of one top-level record of `type`: the marker, the type name, the size
// field from 6.0 on, the identity, the name, no controllers, then `fields`.
std::vector<char> recordStream(const std::string& type, const zuBytes& fields, uint64_t identity,
                               zuStreamVersion version, const std::string& name = "");

// The single top-level object of `bytes` loaded at `version` when it is exactly a T; null
// when the load fails or gives anything else.
template <class T>
zuPointer<T> loadSingle(std::vector<char> bytes, zuStreamVersion version)
{
    zuBaseStream stream;
    stream.SetVersion(version);
    if (!stream.Load(bytes.data(), bytes.size()) || stream.GetObjectCount() != 1)
        return nullptr;
    zuRttiInterface* object = stream.GetObjectAt(0);
    return object && object->IsExactly(T::TYPE) ? static_cast<T*>(object) : nullptr;
}

// Finalises on this thread until the controller is empty; false when that takes a minute.
bool finalizeUntilIdle(zuResourceController& controller, zuEngineInterface* engine = nullptr, int maxRequests = 0,
                       double maxMilliseconds = 0.0);

// Starts the library, registers the test resource's factory and requests, and clears the
// load policies it may leave behind.
class ResourceLibrary : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
};

} // namespace zu::test
