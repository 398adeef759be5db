#pragma once

#include <zuSceneGraph/resources/zuEngineInterface.h>
#include <zuSceneGraph/resources/zuRequestInterface.h>

#include <zuSystem/zuMutex.h>
#include <zuSystem/zuWaitCondition.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace zu {

class zuDynamicLoadingResource;
class zuDynamicResourceCPULoadRequest;
class zuRequestInterfaceForDynamicResource;
class zuRC_SchedulerThread;
class zuRC_WorkingThreadContext;
class zuResourceRequestClientInterface;

// Runs resource requests (CPU loads and deletes of vertex, index and image blocks, or any
// zuRequestInterface) on a fixed pool of worker threads, and finalises them on the thread
// that owns the scene.
//
// The library start creates no controller: an application that wants blocks loaded in the
// background creates one (usually one per scene or engine), keeps it for as long as it
// renders and destroys it before the library ends:
//
//     zu::initializeZuSceneGraph();
//     zu::zuResourceController controller(2);         // worker threads; memory cap
//     controller.start();
//     ...                                             // load a stream with load policies false
//     controller.requestCPULoad(buffer, client);      // a block the renderer needs
//     ...                                             // once per frame, on the scene's thread:
//     controller.finalizeRequests(&engine, 0, 2.0);   // hand loaded blocks over, 2 ms at most
//     ...
//     controller.stop();                              // or the destructor; cancels what is left
//     zu::terminateZuSceneGraph();
//
// A request passes through these queues:
// - pending: added, waiting for a worker; ordered by zuRequestInterface::compare (the
//   scheduling policy), then by the order of adding;
// - deferred: taken from pending while its memory (getThreadCPUMemoryAllocation) would
//   push the bytes in flight over the cap; it starts, oldest of the best policy first, as
//   soon as it fits. While a request is deferred, pending requests that allocate memory
//   are deferred behind it (so it cannot starve); requests that allocate nothing still run;
// - working: executing on a worker;
// - finalising: executed, waiting for the owning thread's finalise step.
// A worker that takes a CPU load of a block (zuDynamicResourceCPULoadRequest) takes with it
// the other pending loads from the same file and of the same policy, in their order, up to
// MAX_BATCH_REQUESTS and as far as the memory cap lets them start, and executes them as one
// zuCPULoadBatch: one open of the file and one read per run of neighbouring blocks. Each
// request still passes through the queues, and is finalised or cancelled, on its own; a
// load that finds no companion runs its own execute.
//
// The bytes of a request count as in flight from the start of execute until it is
// finalised or cancelled (its block lives in the request until then), so a scene thread
// that stops finalising stops the loads too. A request larger than the whole cap starts
// when nothing else is in flight. A cap of 0 means no cap.
//
// A request for a resource (addResourceRequest, requestCPULoad, requestCPUDelete) marks
// the resource as having a request under way (state 1) and lists it in
// zuRC_ResourceRegistry, where the default engine interface finds it at finalisation; the
// state is cleared when the request is finalised or cancelled. A resource has at most one
// request under way; a generated buffer (state 2) gets none. A resource destroyed before
// its request is finalised leaves the registry, and the finalisation skips it.
//
// Threads: addRequest, cancelRequest, finalizeRequests, start and stop are called from the
// thread that owns the scene. finalizeRequest, cancelRequest and onFinished of the requests
// run on that thread, inside those calls; execute runs on the workers.
class zuResourceController {
public:
    // Identifies a request in the controller; 0 is "refused".
    using Ticket = uint64_t;

    static constexpr int DEFAULT_THREAD_COUNT = 2;
    static constexpr uint64_t DEFAULT_MEMORY_CAP = uint64_t(256) << 20;
    // Small enough that the workers share the loads of one file, large enough that a
    // batch reads its blocks in few runs.
    static constexpr size_t MAX_BATCH_REQUESTS = 256;

    // `threadCount` worker threads (below 1 is taken as 1), which start with start().
    // `memoryCap`: the bytes that requests under way may allocate together; a request that
    // would pass it waits in the deferred queue (one request alone always runs; 0: no cap).
    explicit zuResourceController(int threadCount = DEFAULT_THREAD_COUNT, uint64_t memoryCap = DEFAULT_MEMORY_CAP);
    zuResourceController(const zuResourceController&) = delete;
    zuResourceController& operator=(const zuResourceController&) = delete;
    // stop().
    ~zuResourceController();

    // Starts the workers; false when they run already or a thread could not start.
    bool start();
    // Lets each worker finish the request it executes, joins the workers and cancels every
    // request left (their clients hear onFinished(false)).
    void stop();
    bool isRunning() const { return mRunning; }
    // True while stop() is under way.
    bool isStopping() const { return mStopping.load(); }
    int getThreadCount() const { return mThreadCount; }
    // The cap of the constructor, in bytes.
    uint64_t getMemoryCap() const;
    void setMemoryCap(uint64_t bytes);

    // Queues a request; the controller owns it once the ticket is not 0. Requests can be
    // added before start(): they wait in the pending queue.
    Ticket addRequest(zuRequestInterface* request);
    // Queues a request for `resource` and marks the resource (see above). 0, with the caller
    // still owning the request, when the resource is not the request's (identifiers differ)
    // or cannot take a request now (state 1 or 2).
    Ticket addResourceRequest(zuRequestInterfaceForDynamicResource* request, zuDynamicLoadingResource* resource);
    // Builds the resource's CPU load (delete) request through its registered builders and
    // queues it; 0 when there is no builder or the resource is refused. `client`, when
    // given, hears how the request ended; `policy` places it in the pending queue.
    Ticket requestCPULoad(zuDynamicLoadingResource* resource, zuResourceRequestClientInterface* client = nullptr,
                          zuRequestInterface::SchedulingPolicy policy = zuRequestInterface::SCHEDULING_NORMAL);
    Ticket requestCPUDelete(zuDynamicLoadingResource* resource, zuResourceRequestClientInterface* client = nullptr,
                            zuRequestInterface::SchedulingPolicy policy = zuRequestInterface::SCHEDULING_NORMAL);

    // Cancels a request that is pending, deferred or finalising at once (cancelRequest,
    // resource state cleared, onFinished(false), deleted). A request executing now is
    // cancelled when its execute returns, by the next finalise step. False when the ticket
    // is unknown (finalised already).
    bool cancelRequest(Ticket ticket);
    // Cancels every request; the number of requests concerned.
    int cancelAllRequests();

    // The finalise step, on the thread that owns the scene: finalises executed requests in
    // the order their execution ended, until `maxRequests` were finalised or
    // `maxMilliseconds` have passed (0 or less: no limit; at least one request is finalised
    // when one is ready). A null engine is a default zuEngineInterface. Requests cancelled
    // while executing are cancelled here and not counted. Returns the number finalised.
    int finalizeRequests(zuEngineInterface* engine = nullptr, int maxRequests = 0, double maxMilliseconds = 0.0);
    // Waits until a request is ready for finalisation, at most `timeoutMs` (negative:
    // without limit; only sensible while the workers run). Returns at once when the
    // controller holds no request. True when one is ready.
    bool waitForFinishedRequests(long timeoutMs);
    // True when the controller holds no request at all.
    bool isIdle() const;

    size_t getPendingCount() const;
    size_t getDeferredCount() const;
    size_t getWorkingCount() const;
    size_t getFinalisingCount() const;
    uint64_t getBytesInFlight() const;
    // The most bytes in flight at any time, and how often a request was deferred.
    uint64_t getPeakBytesInFlight() const;
    uint64_t getDeferralCount() const;

private:
    friend class zuRC_SchedulerThread;

    enum class Queue { Pending, Deferred, Working, Finalising };
    struct Entry {
        zuRequestInterface* request;
        Ticket ticket;
        uint64_t bytes;           // getThreadCPUMemoryAllocation, asked once when added
        unsigned long resourceID; // of a tracked request
        bool tracked;             // the resource is listed in the registry for this request
        bool cancelled;           // cancelled while executing
        Queue queue;
        // A load that can join a batch, and its file (held by the request's handler).
        zuDynamicResourceCPULoadRequest* load;
        const std::string* file;
    };
    struct EntryOrder {
        bool operator()(const Entry* a, const Entry* b) const;
    };
    using EntrySet = std::set<Entry*, EntryOrder>;

    // Stops and joins the workers; the queues stay as they are.
    void stopThreads();
    Ticket enqueue(zuRequestInterface* request, bool tracked, unsigned long resourceID);
    // The worker loop of zuRC_SchedulerThread.
    void runWorker(zuRC_WorkingThreadContext& context);
    // The next request a worker may start, taken out of its queue, or null.
    Entry* takeNextLocked();
    // Takes the pending loads that join the batch of `batch[0]` (see above), and starts all.
    void startBatchLocked(std::vector<Entry*>& batch);
    // Takes a pending entry out of the loads by file.
    void unlistLoadLocked(Entry* entry);
    bool fitsLocked(uint64_t bytes) const;
    // Finalises or cancels a request taken out of every queue, and deletes it.
    void finish(Entry* entry, bool finalize, zuEngineInterface* engine);
    void releaseBytes(uint64_t bytes);

    const int mThreadCount;
    mutable zuMutex mMutex;
    zuWaitCondition mWorkAvailable;
    zuWaitCondition mRequestExecuted;
    EntrySet mPending;
    EntrySet mDeferred;
    // The pending entries that can join a batch, by file.
    std::unordered_map<std::string, EntrySet> mPendingLoads;
    std::deque<Entry*> mFinalising;
    std::unordered_map<Ticket, Entry*> mEntries;
    size_t mWorkingCount = 0;
    Ticket mNextTicket = 1;
    uint64_t mMemoryCap;
    uint64_t mBytesInFlight = 0;
    uint64_t mPeakBytesInFlight = 0;
    uint64_t mDeferrals = 0;
    std::vector<std::unique_ptr<zuRC_SchedulerThread>> mThreads;
    std::atomic<bool> mStopping{false};
    bool mRunning = false;
    zuEngineInterface mDefaultEngine;
};

} // namespace zu
