// The resource controller: worker threads, queues, memory cap, cancellation and the
// finalise step on the owning thread. These tests also run under ThreadSanitizer.

#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/resources/zuDynamicResourceCPULoadRequest.h>
#include <zuSceneGraph/resources/zuRC_ResourceRegistry.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/resources/zuResourceController.h>
#include <zuSceneGraph/resources/zuResourceRequestClientInterface.h>

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <thread>
#include <utility>
#include <vector>

namespace zu::test {
namespace {

using Controller = zuResourceController;

// Hears how each resource request ended, and on which thread.
class RecordingClient : public zuResourceRequestClientInterface {
public:
    void onRequestFinished(zuRequestInterfaceForDynamicResource* request, bool finalized) override
    {
        if (std::this_thread::get_id() != mOwner)
            ++mOnOtherThread;
        const auto* load = dynamic_cast<const zuDynamicResourceCPULoadRequest*>(request);
        mHeard[request->getResourceID()].push_back({finalized, load ? load->getStatus() : -1});
    }

    std::thread::id mOwner = std::this_thread::get_id();
    int mOnOtherThread = 0;
    // Per resource identifier: (finalised, status) of each request, in order.
    std::map<unsigned long, std::vector<std::pair<bool, int>>> mHeard;
};

class ResourceController : public ResourceLibrary {
protected:
    // `count` test resources saved to one file and loaded back without their blocks.
    std::vector<zuPointer<zuTestBlockResource>> resourcesOnDisk(int count, int (*sizeOf)(int))
    {
        std::vector<zuPointer<zuTestBlockResource>> originals;
        std::vector<zuRttiInterface*> objects;
        for (int i = 0; i < count; ++i) {
            originals.emplace_back(new zuTestBlockResource(sizeOf(i), i));
            objects.push_back(originals.back());
        }
        const std::string path = dir.file("many.mvk");
        EXPECT_TRUE(saveResources(path, objects));
        zuDynamicLoadingResource::SetLoadPolicy(zuTestBlockResource::TYPE, false);
        std::vector<zuPointer<zuTestBlockResource>> loaded = loadResources(path);
        zuDynamicLoadingResource::ClearLoadingPolicies();
        return loaded;
    }

    zuTempDir dir;
};

int variedSize(int i)
{
    return 64 + (i * 37) % 1985;
}

TEST_F(ResourceController, TwoWorkersLoadThousandsOfBlocksFinalisedOnTheOwningThread)
{
    constexpr int COUNT = 3000;
    constexpr uint64_t CAP = 64 * 1024;
    std::vector<zuPointer<zuTestBlockResource>> resources = resourcesOnDisk(COUNT, variedSize);
    ASSERT_EQ(size_t(COUNT), resources.size());
    ASSERT_FALSE(resources[0]->isCPUResident());

    RecordingClient client;
    Controller controller(2, CAP);
    EXPECT_EQ(2, controller.getThreadCount());
    std::vector<Controller::Ticket> tickets;
    std::vector<unsigned long> ids;
    // Everything is queued before the workers start, so that the cap must defer requests.
    for (const auto& resource : resources) {
        tickets.push_back(controller.requestCPULoad(resource, &client));
        ids.push_back(resource->getResourceID());
        ASSERT_NE(0u, tickets.back());
    }
    EXPECT_EQ(size_t(COUNT), controller.getPendingCount());
    EXPECT_EQ(size_t(COUNT), zuRC_ResourceRegistry::size());
    EXPECT_EQ(zuDynamicLoadingResource::RESOURCE_REQUEST_UNDER_WAY, resources[0]->getResourceState());
    // One request per resource at a time, and the synchronous path keeps off.
    EXPECT_EQ(0u, controller.requestCPULoad(resources[0], &client));
    EXPECT_FALSE(zuRendererInterface::LoadCPUData(resources[0]));

    ASSERT_TRUE(controller.start());
    for (int i = 0; i < COUNT; i += 7)
        EXPECT_TRUE(controller.cancelRequest(tickets[static_cast<size_t>(i)])) << i;
    // Destroyed before their requests are finalised: the finalisation skips them.
    for (int i = 0; i < COUNT; i += 11)
        resources[static_cast<size_t>(i)] = nullptr;

    // Budgets of requests and of time, in turn.
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (int calls = 0; !controller.isIdle() && std::chrono::steady_clock::now() < limit; ++calls) {
        controller.waitForFinishedRequests(100);
        if (calls % 2 == 0)
            EXPECT_LE(controller.finalizeRequests(nullptr, 16), 16);
        else
            controller.finalizeRequests(nullptr, 0, 0.5);
    }
    ASSERT_TRUE(controller.isIdle());
    EXPECT_LE(controller.getPeakBytesInFlight(), CAP);
    EXPECT_GT(controller.getPeakBytesInFlight(), CAP / 2);
    EXPECT_GT(controller.getDeferralCount(), 0u);
    EXPECT_EQ(0u, controller.getBytesInFlight());
    EXPECT_EQ(0u, zuRC_ResourceRegistry::size());

    EXPECT_EQ(0, client.mOnOtherThread);
    ASSERT_EQ(size_t(COUNT), client.mHeard.size());
    for (int i = 0; i < COUNT; ++i) {
        const bool cancelled = i % 7 == 0;
        const auto& heard = client.mHeard[ids[static_cast<size_t>(i)]];
        ASSERT_EQ(1u, heard.size()) << i;
        EXPECT_EQ(!cancelled, heard[0].first) << i;
        if (!cancelled) {
            EXPECT_EQ(0, heard[0].second) << i;
        }
        const zuTestBlockResource* resource = resources[static_cast<size_t>(i)];
        if (!resource)
            continue;
        EXPECT_EQ(zuDynamicLoadingResource::RESOURCE_IDLE, resource->getResourceState()) << i;
        if (cancelled) {
            EXPECT_FALSE(resource->isCPUResident()) << i;
        } else {
            EXPECT_TRUE(resource->HasPattern(i)) << i;
        }
    }
}

TEST_F(ResourceController, RefusedRequestsLeaveTheResourceAsItWas)
{
    std::vector<zuPointer<zuTestBlockResource>> resources = resourcesOnDisk(2, [](int) { return 16; });
    Controller controller;
    // A generated buffer gets no request, and keeps its state.
    resources[0]->setResourceState(zuDynamicLoadingResource::RESOURCE_GENERATED);
    EXPECT_EQ(0u, controller.requestCPULoad(resources[0]));
    EXPECT_EQ(zuDynamicLoadingResource::RESOURCE_GENERATED, resources[0]->getResourceState());
    resources[0]->setResourceState(zuDynamicLoadingResource::RESOURCE_IDLE);

    // A request for one resource is not accepted for another.
    zuRequestInterfaceForDynamicResource* request = zuDynamicLoadingResource::CreateCPULoadRequest(resources[0], nullptr);
    EXPECT_EQ(0u, controller.addResourceRequest(request, resources[1]));
    EXPECT_EQ(zuDynamicLoadingResource::RESOURCE_IDLE, resources[1]->getResourceState());
    delete request;
    EXPECT_EQ(0u, controller.requestCPULoad(nullptr));
    EXPECT_TRUE(controller.isIdle());
}

TEST_F(ResourceController, StopAndDestructionCancelWhatIsLeft)
{
    std::vector<zuPointer<zuTestBlockResource>> resources = resourcesOnDisk(20, [](int i) { return 100 + i; });
    RecordingClient client;
    {
        Controller controller(2);
        for (int i = 0; i < 10; ++i)
            ASSERT_NE(0u, controller.requestCPULoad(resources[static_cast<size_t>(i)], &client));
        controller.stop();
        EXPECT_TRUE(controller.isIdle());
        EXPECT_EQ(10u, client.mHeard.size());
        for (int i = 0; i < 10; ++i)
            EXPECT_EQ(zuDynamicLoadingResource::RESOURCE_IDLE, resources[static_cast<size_t>(i)]->getResourceState());

        // Started again, it works; what is still queued at destruction is cancelled.
        ASSERT_TRUE(controller.start());
        EXPECT_FALSE(controller.start());
        ASSERT_NE(0u, controller.requestCPULoad(resources[10], &client));
        ASSERT_TRUE(finalizeUntilIdle(controller));
        EXPECT_TRUE(resources[10]->HasPattern(10));
        controller.stop();
        for (int i = 11; i < 20; ++i)
            ASSERT_NE(0u, controller.requestCPULoad(resources[static_cast<size_t>(i)], &client));
    }
    EXPECT_EQ(20u, client.mHeard.size());
    for (const auto& heard : client.mHeard)
        EXPECT_EQ(1u, heard.second.size());
    EXPECT_EQ(0u, zuRC_ResourceRegistry::size());
    for (const auto& resource : resources)
        EXPECT_EQ(zuDynamicLoadingResource::RESOURCE_IDLE, resource->getResourceState());
}

} // namespace
} // namespace zu::test
