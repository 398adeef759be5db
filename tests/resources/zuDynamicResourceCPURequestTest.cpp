// The generic CPU load and delete requests and the synchronous path of zuRendererInterface,
// against real files.

#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/resources/zuDynamicResourceCPUDeleteRequest.h>
#include <zuSceneGraph/resources/zuDynamicResourceCPULoadRequest.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <memory>

// The out-of-memory case asks for an impossible block; the sanitizers' allocators must
// answer null, as the system's does, instead of stopping the test.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

namespace zu::test {
namespace {

using LoadRequest = zuDynamicResourceCPULoadRequest;

std::unique_ptr<LoadRequest> loadRequest(zuDynamicLoadingResource* resource)
{
    return std::unique_ptr<LoadRequest>(
        static_cast<LoadRequest*>(zuDynamicLoadingResource::CreateCPULoadRequest(resource, nullptr)));
}

// A resource saved to a file of its own, so that its block can leave and come back.
class ResourceCPURequest : public ResourceLibrary {
protected:
    void SetUp() override
    {
        ResourceLibrary::SetUp();
        path = dir.file("one.mvk");
        resource = new zuTestBlockResource(SIZE, SEED);
        ASSERT_TRUE(saveResources(path, {resource}));
        ASSERT_EQ(path, resource->getResourceFilePath());
    }

    // A load request from a handler snapshot of the resource, changed by `edit`.
    std::unique_ptr<LoadRequest> loadRequestWith(const std::function<void(zuTestBlockHandler&)>& edit)
    {
        std::unique_ptr<zuTestBlockHandler> handler(static_cast<zuTestBlockHandler*>(resource->createHandler()));
        edit(*handler);
        return std::unique_ptr<LoadRequest>(static_cast<LoadRequest*>(
            zuDynamicLoadingResource::CreateCPULoadRequest(resource->getResourceID(), nullptr, handler.get())));
    }

    static constexpr int SIZE = 300;
    static constexpr int SEED = 9;
    zuTempDir dir;
    std::string path;
    zuPointer<zuTestBlockResource> resource;
};

TEST_F(ResourceCPURequest, LoadReadsTheBlockAndHandsItOverOrFreesItWhenCancelled)
{
    ASSERT_TRUE(zuRendererInterface::DeleteCPUData(resource, false));
    ASSERT_FALSE(resource->isCPUResident());
    std::unique_ptr<LoadRequest> request = loadRequest(resource);
    ASSERT_TRUE(request);
    EXPECT_EQ(LoadRequest::STATUS_NOT_RUN, request->getStatus());
    EXPECT_EQ(uint64_t(SIZE), request->getThreadCPUMemoryAllocation());
    EXPECT_EQ(resource->getResourceID(), request->getResourceID());
    request->execute(nullptr);
    EXPECT_EQ(LoadRequest::STATUS_DONE, request->getStatus());
    const char* block = request->getBlock();
    ASSERT_NE(nullptr, block);
    EXPECT_FALSE(resource->isCPUResident());
    // A second execute keeps the block it holds.
    request->execute(nullptr);
    EXPECT_EQ(block, request->getBlock());
    request->finalizeDynamicResourceRequest(resource, true, false);
    EXPECT_EQ(block, resource->GetData());
    EXPECT_EQ(nullptr, request->getBlock());
    EXPECT_TRUE(resource->HasPattern(SEED));

    // Over a resident block: the old one is freed (the leak checker would tell otherwise).
    request = loadRequest(resource);
    request->execute(nullptr);
    const char* loaded = request->getBlock();
    ASSERT_NE(resource->GetData(), loaded);
    request->finalizeDynamicResourceRequest(resource, true, false);
    EXPECT_EQ(loaded, resource->GetData());
    EXPECT_TRUE(resource->HasPattern(SEED));

    // Cancelled after its execute: the block read is freed.
    request = loadRequest(resource);
    request->execute(nullptr);
    ASSERT_NE(nullptr, request->getBlock());
    request->cancelRequest();
    EXPECT_EQ(nullptr, request->getBlock());
    EXPECT_EQ(LoadRequest::STATUS_DONE, request->getStatus());
}

TEST_F(ResourceCPURequest, FailedLoadsTellWhyAndHoldNoBlock)
{
    struct Case {
        const char* what;
        std::function<void(zuTestBlockHandler&)> edit;
        int status;
    };
    const std::string missing = dir.file("missing.mvk");
    const Case cases[] = {
        {"no path", [](zuTestBlockHandler& h) { h.setResourceFilePath(""); }, LoadRequest::STATUS_NO_FILE},
        {"missing file", [&](zuTestBlockHandler& h) { h.setResourceFilePath(missing); }, LoadRequest::STATUS_IO_ERROR},
        {"offset beyond any file", [](zuTestBlockHandler& h) { h.setStreamOffset(std::numeric_limits<uint64_t>::max()); },
         LoadRequest::STATUS_IO_ERROR},
        {"too large for memory", [](zuTestBlockHandler& h) { h.setCPUSize(uint64_t(1) << 62); },
         LoadRequest::STATUS_OUT_OF_MEMORY},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        std::unique_ptr<LoadRequest> request = loadRequestWith(c.edit);
        request->execute(nullptr);
        EXPECT_EQ(c.status, request->getStatus());
        EXPECT_EQ(nullptr, request->getBlock());
    }

}

TEST_F(ResourceCPURequest, LoadIsNotHandedToAResourceOfAnotherSize)
{
    ASSERT_TRUE(zuRendererInterface::DeleteCPUData(resource, false));
    // The snapshot says 4 bytes fewer than the resource now has.
    std::unique_ptr<LoadRequest> request = loadRequestWith([](zuTestBlockHandler& h) { h.setCPUSize(SIZE - 4); });
    request->execute(nullptr);
    ASSERT_EQ(LoadRequest::STATUS_DONE, request->getStatus());
    request->finalizeDynamicResourceRequest(resource, true, false);
    EXPECT_FALSE(resource->isCPUResident());
    EXPECT_NE(nullptr, request->getBlock());
    // Nor to no resource at all; the request frees its block.
    request->finalizeDynamicResourceRequest(nullptr, true, false);
}

// The index buffer's handler reads its data in the file's form: 32-bit indices of a 6.32
// stream packed as a width byte, the first index and the differences; 16-bit indices of a
// stream before 5.2 widened to ints. The files are written by hand, the data at offset 10.
TEST_F(ResourceCPURequest, LoadDecodesIndicesThroughTheIndexBufferHandler)
{
    const std::string indexPath = dir.file("indices.bin");
    auto loadFrom = [&](const std::vector<char>& data, zuIndexBuffer* buffer, zuStreamVersion version) {
        std::vector<char> file = data;
        file.insert(file.begin(), 10, 'x');
        writeFileBytes(indexPath, file);
        zuPositionedStream stream(indexPath, 10, version);
        buffer->storeStreamInfo(&stream);
        EXPECT_TRUE(zuRendererInterface::DeleteCPUData(buffer, false));
        std::unique_ptr<LoadRequest> request = loadRequest(buffer);
        request->execute(nullptr);
        request->finalizeDynamicResourceRequest(buffer, true, false);
        return request->getStatus();
    };
    zuPointer<zuIndexBuffer> packed = new zuIndexBuffer(5, zuIndexBuffer::INDEX_32);
    zuBytes deltas = zuBytes().u8(1).i32(1000);
    for (signed char delta : {1, -2, 127, -128})
        deltas.u8(static_cast<uint8_t>(delta));
    ASSERT_EQ(LoadRequest::STATUS_DONE, loadFrom(deltas.bytes(), packed, {6, 32}));
    const unsigned int values[] = {1000, 1001, 999, 1126, 998};
    ASSERT_TRUE(packed->isCPUResident());
    EXPECT_EQ(0, std::memcmp(values, packed->GetIndices32(), sizeof values));

    zuPointer<zuIndexBuffer> widened = new zuIndexBuffer(3, zuIndexBuffer::INDEX_16);
    ASSERT_EQ(LoadRequest::STATUS_DONE, loadFrom(ints({65535, 0, 7}).bytes(), widened, {5, 1}));
    const unsigned short shorts[] = {65535, 0, 7};
    ASSERT_TRUE(widened->isCPUResident());
    EXPECT_EQ(0, std::memcmp(shorts, widened->GetIndices16(), sizeof shorts));

    // An unknown width is invalid data; so is a packed run cut short.
    std::vector<char> bad = deltas.bytes();
    bad[0] = 3;
    EXPECT_EQ(LoadRequest::STATUS_IO_ERROR, loadFrom(bad, packed, {6, 32}));
    EXPECT_FALSE(packed->isCPUResident());
    bad = deltas.bytes();
    bad.pop_back();
    EXPECT_EQ(LoadRequest::STATUS_IO_ERROR, loadFrom(bad, packed, {6, 32}));
    EXPECT_FALSE(packed->isCPUResident());
}

TEST_F(ResourceCPURequest, DeleteOfABlockWithoutAFileNeedsForce)
{
    zuPointer<zuTestBlockResource> memoryOnly = new zuTestBlockResource(64, 4);
    const char* block = memoryOnly->GetData();
    EXPECT_FALSE(zuRendererInterface::DeleteCPUData(memoryOnly, false));
    EXPECT_EQ(block, memoryOnly->GetData());

    std::unique_ptr<zuRequestInterfaceForDynamicResource> request(
        zuDynamicLoadingResource::CreateCPUDeleteRequest(memoryOnly, nullptr));
    ASSERT_TRUE(request);
    request->execute(nullptr);
    request->finalizeDynamicResourceRequest(memoryOnly, false, false);
    EXPECT_TRUE(memoryOnly->HasPattern(4));
    request->finalizeDynamicResourceRequest(memoryOnly, false, true);
    EXPECT_FALSE(memoryOnly->isCPUResident());

    // A block with a file is dropped without force, and dropping it twice is no failure.
    EXPECT_TRUE(zuRendererInterface::DeleteCPUData(resource, false));
    EXPECT_FALSE(resource->isCPUResident());
    EXPECT_TRUE(zuRendererInterface::DeleteCPUData(resource, false));
}

TEST_F(ResourceCPURequest, SynchronousPathLeavesAResourceUnderRequestAlone)
{
    ASSERT_TRUE(zuRendererInterface::DeleteCPUData(resource, false));
    resource->setResourceState(zuDynamicLoadingResource::RESOURCE_REQUEST_UNDER_WAY);
    EXPECT_FALSE(zuRendererInterface::LoadCPUData(resource));
    EXPECT_FALSE(resource->isCPUResident());
    resource->setResourceState(zuDynamicLoadingResource::RESOURCE_IDLE);
    ASSERT_TRUE(zuRendererInterface::LoadCPUData(resource));
    const char* block = resource->GetData();

    resource->setResourceState(zuDynamicLoadingResource::RESOURCE_REQUEST_UNDER_WAY);
    EXPECT_FALSE(zuRendererInterface::DeleteCPUData(resource, true));
    EXPECT_EQ(block, resource->GetData());
    resource->setResourceState(zuDynamicLoadingResource::RESOURCE_IDLE);

    // A resident resource is not read again.
    EXPECT_TRUE(zuRendererInterface::LoadCPUData(resource));
    EXPECT_EQ(block, resource->GetData());
    // A generated buffer is loaded and deleted like any other.
    resource->setResourceState(zuDynamicLoadingResource::RESOURCE_GENERATED);
    EXPECT_TRUE(zuRendererInterface::DeleteCPUData(resource, false));
    EXPECT_TRUE(zuRendererInterface::LoadCPUData(resource));
    resource->setResourceState(zuDynamicLoadingResource::RESOURCE_IDLE);
}

} // namespace
} // namespace zu::test
