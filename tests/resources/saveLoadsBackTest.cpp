// Saves that once wrote what could not be read back, or handed back wrong data.

#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>

#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuMemoryIoDevice.h>

#include <filesystem>

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

// Indices made 16-bit after they were saved stay what they are: the file holds the packed
// 32-bit form, so the buffer keeps them in memory instead of reading that back as shorts.
TEST_F(SaveLoadsBack, IndicesMade16BitAfterASaveComeBackUnchanged)
{
    zuTempDir dir;
    const zuPointer<zuIndexBuffer> buffer = new zuIndexBuffer(4, zuIndexBuffer::INDEX_32);
    for (int k = 0; k < 4; ++k)
        buffer->SetIndex(k, 1000u * static_cast<unsigned>(k));
    ASSERT_TRUE(saveResources(dir.file("a.mvk"), {buffer}));
    ASSERT_TRUE(buffer->ConvertToShort());
    zuRendererInterface::DeleteCPUData(buffer, false);
    zuRendererInterface::LoadCPUData(buffer);
    for (int k = 0; k < 4; ++k)
        EXPECT_EQ(buffer->GetIndex(k), 1000u * static_cast<unsigned>(k));
}

} // namespace
} // namespace zu::test
