// Loads that once failed on what the library itself wrote, or said nothing useful. The
// saves that did so are rows of the table in saveEveryStateTest.cpp.

#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/resources/zuIndexBuffer.h>

#include <zuSystem/zuFileIoDevice.h>

namespace zu::test {
namespace {

using SaveLoadsBack = ResourceLibrary;

// The single top-level object of a stream file, or null.
zuPointer<zuObject> loadFile(const std::string& path)
{
    zuFileStream stream;
    zuFileIoDevice device(path, zuFileIoDevice::ReadOnly);
    const bool loaded = stream.Load(device, path);
    return loaded && stream.GetObjectCount() == 1 ? static_cast<zuObject*>(stream.GetObjectAt(0)) : nullptr;
}

// An empty 32-bit buffer at 6.32: this writer stops after the type, other writers add a
// delta width and a first index. Both load, with the data read or left on disk.
TEST_F(SaveLoadsBack, EmptyIndexBufferLoadsWithOrWithoutAFirstIndex)
{
    const zuPointer<zuIndexBuffer> empty = new zuIndexBuffer;
    zuTempDir dir;
    ASSERT_TRUE(saveResources(dir.file("ours.mvk"), {empty}));
    const std::vector<char> record = recordStream("zuCore.zuIndexBuffer", ints({0, 1}).u8(4).i32(9), 1, {6, 32});
    const std::string theirs = std::string("MVK 6.32", 9) + std::string(record.begin(), record.end());
    writeFileBytes(dir.file("theirs.mvk"), std::vector<char>(theirs.begin(), theirs.end()));
    for (bool lazily : {false, true})
        for (const char* file : {"ours.mvk", "theirs.mvk"}) {
            zuDynamicLoadingResource::SetLoadPolicy(zuIndexBuffer::TYPE, !lazily);
            const zuPointer<zuObject> loaded = loadFile(dir.file(file));
            EXPECT_TRUE(loaded && loaded->Equals(empty)) << file << (lazily ? ", lazily" : "");
        }
}

// A load before the library is started says so, once, beside the lines of skipped types.
TEST(LoadBeforeStart, SaysThatNoFactoryIsRegistered)
{
    const std::vector<char> record = recordStream("zuCore.zuNode", {}, 1, {6, 0});
    std::vector<char> bytes = record;
    bytes.insert(bytes.end(), record.begin(), record.end());
    zuLogCapture log;
    zuBaseStream stream;
    stream.SetVersion({6, 0});
    EXPECT_TRUE(stream.Load(bytes.data(), bytes.size()));
    ASSERT_EQ(log.mMessages.size(), 1u);
    EXPECT_EQ(log.mMessages[0].first, "zustream");
    EXPECT_NE(log.mMessages[0].second.find("zu::initializeZuSceneGraph()"), std::string::npos);
}

} // namespace
} // namespace zu::test
