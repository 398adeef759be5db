// The resource controller: worker threads, queues, memory cap, cancellation and the
// finalise step on the owning thread. These tests also run under ThreadSanitizer.

#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/resources/zuDynamicResourceCPULoadRequest.h>
#include <zuSceneGraph/resources/zuRC_ResourceRegistry.h>
#include <zuSceneGraph/resources/zuRC_WorkingThreadContext.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/resources/zuResourceController.h>
#include <zuSceneGraph/resources/zuResourceRequestClientInterface.h>

#include <zuSystem/zuThread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
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

// What the probe requests did, from any thread.
struct ProbeLog {
    std::mutex mutex;
    std::vector<int> executed;
    std::vector<int> finalized;
    std::vector<int> cancelled;
    std::vector<std::pair<int, bool>> finished;
    std::vector<std::thread::id> executeThreads;
    std::vector<std::thread::id> finalizeThreads;
    int contextsWithoutController = 0;
};

// A request that allocates nothing but claims `bytes`, optionally held in execute until
// the gate opens.
class ProbeRequest : public zuRequestInterface {
public:
    ProbeRequest(int id, ProbeLog& log, uint64_t bytes = 0, SchedulingPolicy policy = SCHEDULING_NORMAL,
                 const std::atomic<bool>* gate = nullptr)
        : zuRequestInterface(policy), mID(id), mLog(log), mBytes(bytes), mGate(gate)
    {
    }
    void execute(zuRC_WorkingThreadContext* context) override
    {
        while (mGate && !mGate->load())
            zuThread::sleepMs(1);
        std::lock_guard<std::mutex> lock(mLog.mutex);
        mLog.executed.push_back(mID);
        mLog.executeThreads.push_back(std::this_thread::get_id());
        if (!context || !context->getController())
            ++mLog.contextsWithoutController;
    }
    uint64_t getThreadCPUMemoryAllocation() const override { return mBytes; }
    void cancelRequest() override { mLog.cancelled.push_back(mID); }
    void finalizeRequest(zuEngineInterface*) override
    {
        mLog.finalized.push_back(mID);
        mLog.finalizeThreads.push_back(std::this_thread::get_id());
    }
    void onFinished(bool finalized) override { mLog.finished.push_back({mID, finalized}); }

private:
    int mID;
    ProbeLog& mLog;
    uint64_t mBytes;
    const std::atomic<bool>* mGate;
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

    std::thread::id owner = std::this_thread::get_id();
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

TEST_F(ResourceController, RequestsStartByPolicyThenInOrderAndRunOnlyTheirExecuteOnWorkers)
{
    ProbeLog log;
    {
        Controller controller(1, 0);
        const zuRequestInterface::SchedulingPolicy policies[] = {
            zuRequestInterface::SCHEDULING_BACKGROUND, zuRequestInterface::SCHEDULING_NORMAL,
            zuRequestInterface::SCHEDULING_URGENT,     zuRequestInterface::SCHEDULING_NORMAL,
            zuRequestInterface::SCHEDULING_HIGH,       zuRequestInterface::SCHEDULING_URGENT};
        for (int i = 0; i < 6; ++i)
            ASSERT_NE(0u, controller.addRequest(new ProbeRequest(i, log, 0, policies[i])));
        ASSERT_TRUE(controller.start());
        ASSERT_TRUE(finalizeUntilIdle(controller));
    }
    EXPECT_EQ((std::vector<int>{2, 5, 4, 1, 3, 0}), log.executed);
    EXPECT_EQ(log.executed, log.finalized);
    EXPECT_TRUE(log.cancelled.empty());
    EXPECT_EQ(0, log.contextsWithoutController);
    for (const std::thread::id& thread : log.executeThreads)
        EXPECT_NE(owner, thread);
    for (const std::thread::id& thread : log.finalizeThreads)
        EXPECT_EQ(owner, thread);
    ASSERT_EQ(6u, log.finished.size());
    for (const auto& finished : log.finished)
        EXPECT_TRUE(finished.second);
}

TEST_F(ResourceController, FinaliseStepKeepsToItsRequestBudget)
{
    ProbeLog log;
    Controller controller(2, 0);
    for (int i = 0; i < 10; ++i)
        controller.addRequest(new ProbeRequest(i, log));
    ASSERT_TRUE(controller.start());
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (controller.getFinalisingCount() < 10 && std::chrono::steady_clock::now() < limit)
        controller.waitForFinishedRequests(100);
    ASSERT_EQ(10u, controller.getFinalisingCount());
    EXPECT_EQ(3, controller.finalizeRequests(nullptr, 3));
    EXPECT_EQ(7u, controller.getFinalisingCount());
    // A time budget still finalises at least one request.
    EXPECT_GE(controller.finalizeRequests(nullptr, 0, 1e-9), 1);
    EXPECT_GE(controller.finalizeRequests(nullptr), 1);
    EXPECT_TRUE(controller.isIdle());
    EXPECT_EQ(10u, log.finalized.size());
    EXPECT_EQ(0, controller.finalizeRequests(nullptr));
}

TEST_F(ResourceController, QueuedRequestsAreCancelledAtOnceAndARunningOneAfterItsExecute)
{
    ProbeLog log;
    std::atomic<bool> gate{false};
    Controller controller(2, 0);
    const Controller::Ticket held = controller.addRequest(new ProbeRequest(1, log, 0, zuRequestInterface::SCHEDULING_URGENT, &gate));
    const Controller::Ticket queued = controller.addRequest(new ProbeRequest(2, log));
    // Cancelled before any worker ran: at once, without execute.
    EXPECT_TRUE(controller.cancelRequest(queued));
    EXPECT_FALSE(controller.cancelRequest(queued));
    EXPECT_EQ((std::vector<int>{2}), log.cancelled);
    EXPECT_EQ((std::vector<std::pair<int, bool>>{{2, false}}), log.finished);

    ASSERT_TRUE(controller.start());
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (controller.getWorkingCount() == 0 && std::chrono::steady_clock::now() < limit)
        zuThread::sleepMs(1);
    ASSERT_EQ(1u, controller.getWorkingCount());
    EXPECT_TRUE(controller.cancelRequest(held));
    EXPECT_EQ(1u, log.cancelled.size());
    gate.store(true);
    ASSERT_TRUE(controller.waitForFinishedRequests(30000));
    // Cancelled, not finalised, and not counted.
    EXPECT_EQ(0, controller.finalizeRequests(nullptr));
    EXPECT_TRUE(controller.isIdle());
    EXPECT_TRUE(log.finalized.empty());
    EXPECT_EQ((std::vector<int>{2, 1}), log.cancelled);
    EXPECT_EQ((std::vector<std::pair<int, bool>>{{2, false}, {1, false}}), log.finished);
    EXPECT_EQ(0u, controller.addRequest(nullptr));
    EXPECT_FALSE(controller.cancelRequest(12345));
}

TEST_F(ResourceController, MemoryCapDefersRequestsAndARequestLargerThanTheCapRunsAlone)
{
    ProbeLog log;
    Controller controller(2, 1000);
    // Three small requests fit together; the large one waits for them to be finalised, and
    // those added after it wait for it.
    for (int i = 0; i < 3; ++i)
        controller.addRequest(new ProbeRequest(i, log, 300));
    controller.addRequest(new ProbeRequest(100, log, 5000));
    for (int i = 3; i < 13; ++i)
        controller.addRequest(new ProbeRequest(i, log, 300));
    // A request that allocates nothing is never held back.
    controller.addRequest(new ProbeRequest(200, log, 0));
    ASSERT_TRUE(controller.start());
    ASSERT_TRUE(finalizeUntilIdle(controller, nullptr, 1));

    ASSERT_EQ(15u, log.executed.size());
    std::vector<int> withBytes;
    for (int id : log.executed)
        if (id != 200)
            withBytes.push_back(id);
    ASSERT_EQ(14u, withBytes.size());
    EXPECT_EQ(100, withBytes[3]);
    for (size_t k = 0; k < 3; ++k)
        EXPECT_LT(withBytes[k], 3);
    EXPECT_EQ(5000u, controller.getPeakBytesInFlight());
    EXPECT_GT(controller.getDeferralCount(), 0u);
    EXPECT_EQ(0u, controller.getBytesInFlight());
}

TEST_F(ResourceController, AResourceDestroyedBeforeFinalisationIsSkipped)
{
    std::vector<zuPointer<zuTestBlockResource>> resources = resourcesOnDisk(2, [](int) { return 128; });
    ASSERT_EQ(2u, resources.size());
    struct CountingEngine : zuEngineInterface {
        zuDynamicLoadingResource* findDynamicResource(unsigned long id) override
        {
            ++lookups;
            return zuEngineInterface::findDynamicResource(id);
        }
        int lookups = 0;
    } engine;
    RecordingClient client;
    Controller controller;
    ASSERT_NE(0u, controller.requestCPULoad(resources[0], &client));
    ASSERT_NE(0u, controller.requestCPULoad(resources[1], &client));
    EXPECT_EQ(2u, zuRC_ResourceRegistry::size());
    const int aliveBefore = zuTestBlockResource::msLiving;
    resources[1] = nullptr;
    EXPECT_EQ(aliveBefore - 1, zuTestBlockResource::msLiving);
    EXPECT_EQ(1u, zuRC_ResourceRegistry::size());

    ASSERT_TRUE(controller.start());
    ASSERT_TRUE(finalizeUntilIdle(controller, &engine));
    EXPECT_EQ(2, engine.lookups);
    EXPECT_TRUE(resources[0]->HasPattern(0));
    EXPECT_EQ(2u, client.mHeard.size());
    EXPECT_EQ(0u, zuRC_ResourceRegistry::size());
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
