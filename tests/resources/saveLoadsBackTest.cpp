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

// A save needs the block of a buffer left on disk: when its file has gone the save fails,
// names the buffer and leaves it referring to its file; under a queued request it is read.
TEST_F(SaveLoadsBack, ABufferLeftOnDiskIsReadForTheSaveOrTheSaveFails)
{
    zuTempDir dir;
    const zuPointer<zuIndexBuffer> original = new zuIndexBuffer(3, zuIndexBuffer::INDEX_32);
    original->SetIndex(2, 70000);
    ASSERT_TRUE(saveResources(dir.file("a.mvk"), {original}));
    zuDynamicLoadingResource::SetLoadPolicy(zuIndexBuffer::TYPE, false);
    for (bool gone : {true, false}) {
        const zuPointer<zuObject> object = loadFile(dir.file("a.mvk"));
        auto* buffer = dynamic_cast<zuIndexBuffer*>(object.get());
        ASSERT_TRUE(buffer && !buffer->isCPUResident());
        zuResourceController controller;
        if (gone)
            std::filesystem::rename(dir.file("a.mvk"), dir.file("b.mvk"));
        else
            controller.requestCPULoad(buffer);
        zuLogCapture log;
        const bool saved = saveResources(dir.file("c.mvk"), {buffer});
        EXPECT_EQ(saved, !gone);
        if (gone) {
            ASSERT_EQ(log.mMessages.size(), 1u);
            EXPECT_EQ(log.mMessages[0].second.find("Cannot save \"zuCore.zuIndexBuffer\""), 0u) << log.mMessages[0].second;
            EXPECT_EQ(buffer->getResourceFilePath(), dir.file("a.mvk"));
            std::filesystem::rename(dir.file("b.mvk"), dir.file("a.mvk"));
        } else {
            zuDynamicLoadingResource::ClearLoadingPolicies();
            const zuPointer<zuObject> copy = loadFile(dir.file("c.mvk"));
            EXPECT_TRUE(copy && copy->Equals(original));
        }
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

// Up to 5.1 vertex sizes are stored in floats: a vertex of 15 bytes is refused, by name.
TEST_F(SaveLoadsBack, VertexSizesOldStreamsCannotHoldAreRefused)
{
    zuAttributes layout;
    layout.SetPositionChannels(3);
    layout.SetUserShortChannels(0, 1);
    const zuPointer<zuVertexBuffer> buffer = new zuVertexBuffer(layout, 2);
    zuLogCapture log;
    EXPECT_TRUE(saveToBytes({buffer}, {5, 1}).empty());
    ASSERT_EQ(log.mMessages.size(), 1u);
    EXPECT_NE(log.mMessages[0].second.find("a vertex of 14 bytes"), std::string::npos) << log.mMessages[0].second;
    EXPECT_FALSE(saveToBytes({buffer}, {5, 2}).empty());
}

// A load before the library is started says so, once, beside the lines of skipped types.
TEST(LoadBeforeStart, SaysThatNoFactoryIsRegistered)
{
    std::vector<char> bytes = recordStream("zuCore.zuNode", {}, 1, {6, 0});
    bytes.insert(bytes.end(), bytes.begin(), bytes.end());
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
