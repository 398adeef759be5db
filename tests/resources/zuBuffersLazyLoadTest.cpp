// Vertex and index buffers left on disk by a stream load and brought back: synchronously,
// in batches, and through the resource controller's worker threads. These tests also run
// under ThreadSanitizer.

#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/resources/zuCPULoadBatch.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/resources/zuRequestInterfaceForDynamicResource.h>
#include <zuSceneGraph/resources/zuResourceRequestClientInterface.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>

#include <zuSystem/zuDelegateIoDevice.h>
#include <zuSystem/zuFileIoDevice.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace zu::test {
namespace {

constexpr int PAIRS = 5000;  // vertex buffers, and as many index buffers

// A small deterministic generator, so that every buffer differs.
struct Numbers {
    uint64_t state;
    uint32_t next()
    {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<uint32_t>(state >> 33);
    }
};

// Positions, normals and one texture-coordinate unit (32 bytes a vertex), 4 to 12
// vertices: 128 to 384 bytes.
zuVertexBuffer* makeVertexBuffer(Numbers& numbers)
{
    zuAttributes layout;
    layout.SetPositionChannels(3);
    layout.SetNormalChannels(3);
    layout.SetTCoordChannels(0, 2);
    zuVertexBuffer* buffer = new zuVertexBuffer(layout, 4 + static_cast<int>(numbers.next() % 9));
    for (int k = 0; k < buffer->GetDataSize() / 4; ++k) {
        const float value = static_cast<float>(numbers.next() % 100000) / 7.0f;
        std::memcpy(buffer->GetData() + 4 * k, &value, 4);
    }
    return buffer;
}

// 40 to 140 indices; every fourth buffer 16-bit, the others 32-bit with neighbour
// differences that need 1, 2 or 4 bytes.
zuIndexBuffer* makeIndexBuffer(Numbers& numbers, int i)
{
    const int count = 40 + static_cast<int>(numbers.next() % 101);
    const bool is16 = i % 4 == 3;
    zuIndexBuffer* buffer = new zuIndexBuffer(count, is16 ? zuIndexBuffer::INDEX_16 : zuIndexBuffer::INDEX_32);
    const uint32_t spread = is16 ? 65536 : (i % 4 == 0 ? 100 : (i % 4 == 1 ? 20000 : 4000000));
    uint32_t value = numbers.next() % spread;
    for (int k = 0; k < count; ++k) {
        buffer->SetIndex(k, is16 ? value % 65536 : value);
        value += numbers.next() % spread;
        value -= numbers.next() % spread;
    }
    return buffer;
}

zuDynamicLoadingResource* resourceOf(zuObject* object)
{
    if (object->IsExactly(zuVertexBuffer::TYPE))
        return static_cast<zuVertexBuffer*>(object);
    if (object->IsExactly(zuIndexBuffer::TYPE))
        return static_cast<zuIndexBuffer*>(object);
    return nullptr;
}

class ResourceBuffersLazyLoad : public ResourceLibrary {
protected:
    void SetUp() override
    {
        ResourceLibrary::SetUp();
        path = dir.file("buffers.mvk");
        Numbers numbers{42};
        std::vector<zuRttiInterface*> objects;
        for (int i = 0; i < PAIRS; ++i) {
            originals.emplace_back(makeVertexBuffer(numbers));
            objects.push_back(originals.back());
            originals.emplace_back(makeIndexBuffer(numbers, i));
            objects.push_back(originals.back());
        }
        ASSERT_TRUE(saveResources(path, objects));
    }

    // Loads the file with both buffer kinds left on disk.
    std::vector<zuPointer<zuObject>> loadLazily(const std::string& file)
    {
        zuDynamicLoadingResource::SetLoadPolicy(zuVertexBuffer::TYPE, false);
        zuDynamicLoadingResource::SetLoadPolicy(zuIndexBuffer::TYPE, false);
        return loadResources<zuObject>(file);
    }

    zuTempDir dir;
    std::string path;
    std::vector<zuPointer<zuObject>> originals;
};

// Counts the bytes read and the seeks past the start; can refuse those seeks.
class SeekCountingDevice : public zuDelegateIoDevice {
public:
    SeekCountingDevice(zuIoDevice* target, bool refuseSeeks) : zuDelegateIoDevice(target), mRefuse(refuseSeeks) {}
    int64_t read(void* destination, int64_t size) override
    {
        const int64_t got = zuDelegateIoDevice::read(destination, size);
        bytesRead += got > 0 ? got : 0;
        return got;
    }
    bool seek(int64_t offset, SeekOrigin origin) override
    {
        // The load's own size probe (end, then back to 0) is not a skip.
        if (origin == SeekSet && offset > 0) {
            ++skips;
            if (mRefuse) {
                setError();
                return false;
            }
        }
        return zuDelegateIoDevice::seek(offset, origin);
    }
    int64_t bytesRead = 0;
    int skips = 0;

private:
    bool mRefuse;
};

// A load with 64-byte blocks (every vertex block, 128 to 384 bytes, runs past the window)
// seeks over the blocks it leaves on disk, and records where each lies in the file.
TEST_F(ResourceBuffersLazyLoad, EveryBufferStaysOnDiskWithItsPlaceRecordedAndComesBack)
{
    zuDynamicLoadingResource::SetLoadPolicy(zuVertexBuffer::TYPE, false);
    zuDynamicLoadingResource::SetLoadPolicy(zuIndexBuffer::TYPE, false);
    std::vector<zuPointer<zuObject>> loaded;
    {
        zuFileStream stream(64);
        zuFileIoDevice file(path, zuFileIoDevice::ReadOnly);
        SeekCountingDevice device(&file, false);
        ASSERT_TRUE(stream.Load(device, path));
        EXPECT_GT(device.skips, 0);
        EXPECT_LT(device.bytesRead, static_cast<int64_t>(std::filesystem::file_size(path)));
        for (int i = 0; i < stream.GetObjectCount(); ++i)
            loaded.emplace_back(static_cast<zuObject*>(stream.GetObjectAt(i)));
    }
    ASSERT_EQ(loaded.size(), originals.size());

    uint64_t previousOffset = 0;
    const std::string* sharedPath = nullptr;
    for (size_t i = 0; i < loaded.size(); ++i) {
        SCOPED_TRACE(i);
        ASSERT_TRUE(loaded[i]->IsExactly(originals[i]->GetType()));
        zuDynamicLoadingResource* resource = resourceOf(loaded[i]);
        EXPECT_FALSE(resource->isCPUResident());
        EXPECT_EQ(resource->getResourceFilePath(), path);
        // One path string for the whole load.
        if (!sharedPath)
            sharedPath = &resource->getResourceFilePath();
        EXPECT_EQ(&resource->getResourceFilePath(), sharedPath);
        EXPECT_EQ(resource->getStreamVersion(), zuStreamVersion(6, 32));
        EXPECT_GT(resource->getStreamOffset(), previousOffset);
        previousOffset = resource->getStreamOffset();

        // The recorded offset is where the data lies in the file: the vertices, or the
        // packed width and first index (raw 16-bit indices).
        if (loaded[i]->IsExactly(zuVertexBuffer::TYPE)) {
            const auto* original = static_cast<const zuVertexBuffer*>(originals[i].get());
            EXPECT_EQ(readFileBytes(path, resource->getStreamOffset(), resource->getCPUSize()),
                      std::vector<char>(original->GetData(), original->GetData() + original->GetDataSize()));
        } else {
            const auto* original = static_cast<const zuIndexBuffer*>(originals[i].get());
            const std::vector<char> head = readFileBytes(path, resource->getStreamOffset(), 5);
            ASSERT_EQ(head.size(), 5u);
            if (const unsigned int* indices = original->GetIndices32()) {
                EXPECT_EQ(head[0], zuIndexBuffer::PackedDeltaWidth(original->GetIndexQuantity(), indices));
                EXPECT_EQ(std::memcmp(head.data() + 1, indices, 4), 0);
            } else {
                EXPECT_EQ(std::memcmp(head.data(), original->GetIndices16(), 4), 0);
            }
        }
    }

    // Saving them writes their data, bringing each in for the write and dropping it again;
    // they then refer to the new file, and come back from it.
    std::vector<zuRttiInterface*> objects(loaded.begin(), loaded.end());
    const std::string copy = dir.file("copy.mvk");
    ASSERT_TRUE(saveResources(copy, objects));
    // A device that cannot seek fails the load at the first block left on disk.
    zuFileStream refused(64);
    zuFileIoDevice file(path, zuFileIoDevice::ReadOnly);
    SeekCountingDevice noSeek(&file, true);
    EXPECT_FALSE(refused.Load(noSeek, path));
    EXPECT_EQ(noSeek.skips, 1);
    EXPECT_TRUE(refused.isStreamError());

    for (size_t i = 0; i < loaded.size(); ++i) {
        zuDynamicLoadingResource* resource = resourceOf(loaded[i]);
        ASSERT_FALSE(resource->isCPUResident()) << i;
        ASSERT_EQ(resource->getResourceFilePath(), copy) << i;
        ASSERT_TRUE(zuRendererInterface::LoadCPUData(resource)) << i;
        ASSERT_TRUE(loaded[i]->Equals(originals[i])) << i;
    }
    zuDynamicLoadingResource::ClearLoadingPolicies();
    std::vector<zuPointer<zuObject>> again = loadResources<zuObject>(copy);
    ASSERT_EQ(again.size(), originals.size());
    for (size_t i = 0; i < again.size(); ++i)
        ASSERT_TRUE(again[i]->Equals(originals[i])) << i;
}

// The batch form reads what one request per buffer reads: from the whole file, and from a
// file cut inside a block (the buffers past the cut stay on disk). The list mixes three
// files, names some buffers twice and holds nulls; the third file puts a block larger than
// a batch's read between two small ones.
TEST_F(ResourceBuffersLazyLoad, ABatchReadsWhatOneRequestPerBufferReads)
{
    const std::string other = dir.file("other.mvk");
    const std::string large = dir.file("large.mvk");
    std::filesystem::copy_file(path, other);
    Numbers numbers{9};
    zuAttributes layout;
    layout.SetPositionChannels(4);
    zuPointer<zuVertexBuffer> big = new zuVertexBuffer(layout, 70000);
    // Past a large block the load reads records alone; one larger than such a read (the long
    // name) and a second large block follow.
    zuTestFactories factories;
    std::vector<zuPointer<zuObject>> bigOriginals = {makeVertexBuffer(numbers), big.get(),
        new zuTestNode(std::string(3000, 'n')), new zuVertexBuffer(layout, 4000), makeIndexBuffer(numbers, 2)};
    ASSERT_TRUE(saveResources(large, std::vector<zuRttiInterface*>(bigOriginals.begin(), bigOriginals.end())));
    ASSERT_GT(static_cast<uint64_t>(big->GetDataSize()), zuCPULoadBatch::SPAN_BYTES);

    for (const bool cut : {false, true}) {
        SCOPED_TRACE(cut);
        std::vector<zuPointer<zuObject>> single = loadLazily(path), first = loadLazily(path), second = loadLazily(other);
        std::vector<zuPointer<zuObject>> third = loadLazily(large);
        ASSERT_EQ(first.size(), originals.size());
        ASSERT_EQ(second.size(), originals.size());
        ASSERT_EQ(third.size(), bigOriginals.size());
        if (cut) {
            const uint64_t end = resourceOf(first[PAIRS + 1])->getStreamOffset() + 3;
            std::filesystem::resize_file(path, end);
            std::filesystem::resize_file(other, end);
        }
        std::vector<zuDynamicLoadingResource*> list = {nullptr};
        for (size_t i = 0; i < first.size(); ++i) {
            list.push_back(resourceOf(first[i]));
            list.push_back(resourceOf(second[i]));
            if (i % 1000 == 0)
                list.insert(list.end(), {resourceOf(first[i]), nullptr});
            if (i < third.size())
                list.push_back(resourceOf(third[i]));
        }
        size_t resident = 0;
        const size_t answer = zuRendererInterface::LoadCPUData(list);
        for (const zuDynamicLoadingResource* resource : list)
            resident += resource && resource->isCPUResident() ? 1 : 0;
        EXPECT_EQ(answer, resident);
        for (size_t i = 0; i < first.size(); ++i) {
            const bool alone = zuRendererInterface::LoadCPUData(resourceOf(single[i]));
            ASSERT_EQ(alone, !cut || i <= PAIRS) << i;
            ASSERT_EQ(resourceOf(first[i])->isCPUResident(), alone) << i;
            ASSERT_EQ(resourceOf(second[i])->isCPUResident(), alone) << i;
            ASSERT_EQ(resourceOf(first[i])->getResourceState(), zuDynamicLoadingResource::RESOURCE_IDLE) << i;
            if (alone) {
                ASSERT_TRUE(first[i]->Equals(originals[i])) << i;
                ASSERT_TRUE(second[i]->Equals(originals[i])) << i;
            }
        }
        for (size_t i = 0; i < third.size(); ++i)
            EXPECT_TRUE(third[i]->Equals(bigOriginals[i])) << i;
    }
}

// The controller gives its workers batches of one file's loads. Requests cancelled before
// the start, while the batches run, and by a stop in the middle end as cancelled requests
// always do: heard once, the buffer on disk and idle; the others are whole.
TEST_F(ResourceBuffersLazyLoad, TheControllersBatchesOfTwoFilesCanBeCancelledAnywhere)
{
    struct Client : zuResourceRequestClientInterface {
        void onRequestFinished(zuRequestInterfaceForDynamicResource* request, bool finalized) override
        {
            heard[request->getResourceID()] += finalized ? 1 : 100;
        }
        std::map<unsigned long, int> heard;
    };
    const std::string other = dir.file("other.mvk");
    std::filesystem::copy_file(path, other);
    for (const bool stopEarly : {false, true}) {
        SCOPED_TRACE(stopEarly);
        std::vector<zuPointer<zuObject>> first = loadLazily(path), second = loadLazily(other);
        ASSERT_EQ(first.size(), second.size());
        Client client;
        zuResourceController controller(2);
        std::vector<zuResourceController::Ticket> tickets;
        for (size_t i = 0; i < first.size(); ++i)
            for (const zuPointer<zuObject>* object : {&first[i], &second[i]})
                tickets.push_back(controller.requestCPULoad(resourceOf(*object), &client));
        for (size_t t = 0; t < tickets.size(); t += 7)
            ASSERT_TRUE(controller.cancelRequest(tickets[t]));
        ASSERT_TRUE(controller.start());
        for (size_t t = 3; t < tickets.size(); t += 13)
            controller.cancelRequest(tickets[t]);
        if (stopEarly)
            controller.stop();
        ASSERT_TRUE(finalizeUntilIdle(controller));
        controller.stop();
        ASSERT_EQ(client.heard.size(), tickets.size());
        for (size_t i = 0; i < first.size(); ++i) {
            for (const zuPointer<zuObject>* object : {&first[i], &second[i]}) {
                const zuDynamicLoadingResource* resource = resourceOf(*object);
                const int heard = client.heard[resource->getResourceID()];
                ASSERT_TRUE(heard == 1 || heard == 100) << i;
                ASSERT_EQ(resource->isCPUResident(), heard == 1) << i;
                ASSERT_EQ(resource->getResourceState(), zuDynamicLoadingResource::RESOURCE_IDLE) << i;
                if (heard == 1) {
                    ASSERT_TRUE((*object)->Equals(originals[i])) << i;
                }
            }
        }
    }
}

class ResourceBuffersRepack : public ResourceLibrary {};

TEST_F(ResourceBuffersRepack, IndicesOfAnOlderFileLeftOnDiskArePackedWhenSavedAgain)
{
    zuTempDir dir;
    const std::string older = dir.file("older.mvk");
    Numbers numbers{7};
    std::vector<zuPointer<zuObject>> originals;
    {
        zuFileStream stream;
        stream.SetVersion(zuStreamVersion(6, 0));
        for (int i = 0; i < 8; ++i) {
            originals.emplace_back(makeIndexBuffer(numbers, i));
            stream.InsertTopLevel(originals.back());
        }
        zuFileIoDevice device(older, zuFileIoDevice::WriteOnly);
        ASSERT_TRUE(stream.Save(device, older, false));
    }
    zuDynamicLoadingResource::SetLoadPolicy(zuIndexBuffer::TYPE, false);
    std::vector<zuPointer<zuObject>> loaded = loadResources<zuObject>(older);
    ASSERT_EQ(loaded.size(), originals.size());

    // Saving at 6.32 needs each delta width before the write: the indices are read for it
    // and dropped again.
    const std::string newer = dir.file("newer.mvk");
    std::vector<zuRttiInterface*> objects(loaded.begin(), loaded.end());
    ASSERT_TRUE(saveResources(newer, objects));
    for (const zuPointer<zuObject>& object : loaded)
        EXPECT_FALSE(resourceOf(object)->isCPUResident());
    zuDynamicLoadingResource::ClearLoadingPolicies();
    std::vector<zuPointer<zuObject>> again = loadResources<zuObject>(newer);
    ASSERT_EQ(again.size(), originals.size());
    for (size_t i = 0; i < again.size(); ++i)
        EXPECT_TRUE(again[i]->Equals(originals[i])) << i;
}

} // namespace
} // namespace zu::test
