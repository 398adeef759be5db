#include <zuSceneGraph/resources/zuResourceController.h>

#include <zuSceneGraph/resources/zuBlockResourceHandler.h>
#include <zuSceneGraph/resources/zuCPULoadBatch.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuDynamicResourceCPULoadRequest.h>
#include <zuSceneGraph/resources/zuRC_ResourceRegistry.h>
#include <zuSceneGraph/resources/zuRC_SchedulerThread.h>
#include <zuSceneGraph/resources/zuRequestInterfaceForDynamicResource.h>

#include <zuSystem/zuHighResTimer.h>

#include <algorithm>
#include <mutex>

namespace zu {

bool zuResourceController::EntryOrder::operator()(const Entry* a, const Entry* b) const
{
    const int order = a->request->compare(b->request);
    if (order != 0)
        return order < 0;
    return a->ticket < b->ticket;
}

zuResourceController::zuResourceController(int threadCount, uint64_t memoryCap)
    : mThreadCount(std::max(threadCount, 1)), mMemoryCap(memoryCap)
{
}

zuResourceController::~zuResourceController()
{
    stop();
}

bool zuResourceController::start()
{
    if (mRunning)
        return false;
    {
        std::lock_guard<zuMutex> lock(mMutex);
        mStopping.store(false);
    }
    for (int i = 0; i < mThreadCount; ++i) {
        mThreads.push_back(std::make_unique<zuRC_SchedulerThread>(this, i));
        if (!mThreads.back()->start()) {
            // The queued requests stay: a later start may run them.
            mThreads.pop_back();
            stopThreads();
            return false;
        }
    }
    mRunning = true;
    return true;
}

void zuResourceController::stop()
{
    stopThreads();
    mRunning = false;
    cancelAllRequests();
}

void zuResourceController::stopThreads()
{
    {
        // Raised under the lock, so that no worker misses it between its test and its wait.
        std::lock_guard<zuMutex> lock(mMutex);
        mStopping.store(true);
        mWorkAvailable.wakeAll();
    }
    for (auto& thread : mThreads)
        thread->wait();
    mThreads.clear();
    std::lock_guard<zuMutex> lock(mMutex);
    mStopping.store(false);
}

uint64_t zuResourceController::getMemoryCap() const
{
    std::lock_guard<zuMutex> lock(mMutex);
    return mMemoryCap;
}

void zuResourceController::setMemoryCap(uint64_t bytes)
{
    std::lock_guard<zuMutex> lock(mMutex);
    mMemoryCap = bytes;
    mWorkAvailable.wakeAll();
}

zuResourceController::Ticket zuResourceController::addRequest(zuRequestInterface* request)
{
    if (!request)
        return 0;
    return enqueue(request, false, 0);
}

zuResourceController::Ticket zuResourceController::addResourceRequest(zuRequestInterfaceForDynamicResource* request,
                                                                      zuDynamicLoadingResource* resource)
{
    if (!request)
        return 0;
    if (!resource)
        return enqueue(request, false, 0);
    if (resource->getResourceID() != request->getResourceID())
        return 0;
    if (!zuRC_ResourceRegistry::beginRequest(resource))
        return 0;
    return enqueue(request, true, request->getResourceID());
}

zuResourceController::Ticket zuResourceController::requestCPULoad(zuDynamicLoadingResource* resource,
                                                                  zuResourceRequestClientInterface* client,
                                                                  zuRequestInterface::SchedulingPolicy policy)
{
    zuRequestInterfaceForDynamicResource* request = zuDynamicLoadingResource::CreateCPULoadRequest(resource, client);
    if (!request)
        return 0;
    request->setSchedulingPolicy(policy);
    const Ticket ticket = addResourceRequest(request, resource);
    if (!ticket)
        delete request;
    return ticket;
}

zuResourceController::Ticket zuResourceController::requestCPUDelete(zuDynamicLoadingResource* resource,
                                                                    zuResourceRequestClientInterface* client,
                                                                    zuRequestInterface::SchedulingPolicy policy)
{
    zuRequestInterfaceForDynamicResource* request = zuDynamicLoadingResource::CreateCPUDeleteRequest(resource, client);
    if (!request)
        return 0;
    request->setSchedulingPolicy(policy);
    const Ticket ticket = addResourceRequest(request, resource);
    if (!ticket)
        delete request;
    return ticket;
}

zuResourceController::Ticket zuResourceController::enqueue(zuRequestInterface* request, bool tracked,
                                                           unsigned long resourceID)
{
    // Asked once, on the adding thread: the request is not touched by two threads at once.
    const uint64_t bytes = request->getThreadCPUMemoryAllocation();
    auto* load = dynamic_cast<zuDynamicResourceCPULoadRequest*>(request);
    const zuBlockResourceHandler* handler = load ? load->getHandler() : nullptr;
    if (!handler || load->getBlock() || handler->getResourceFilePath().empty())
        load = nullptr;
    std::lock_guard<zuMutex> lock(mMutex);
    Entry* entry = new Entry{request, mNextTicket++, bytes, resourceID, tracked, false, Queue::Pending,
                             load, load ? &handler->getResourceFilePath() : nullptr};
    mEntries.emplace(entry->ticket, entry);
    mPending.insert(entry);
    if (load)
        mPendingLoads[*entry->file].insert(entry);
    mWorkAvailable.wakeOne();
    return entry->ticket;
}

bool zuResourceController::fitsLocked(uint64_t bytes) const
{
    if (mMemoryCap == 0 || mBytesInFlight == 0)
        return true;
    return mBytesInFlight <= mMemoryCap && bytes <= mMemoryCap - mBytesInFlight;
}

zuResourceController::Entry* zuResourceController::takeNextLocked()
{
    for (;;) {
        if (!mDeferred.empty()) {
            Entry* head = *mDeferred.begin();
            if (fitsLocked(head->bytes)) {
                mDeferred.erase(mDeferred.begin());
                return head;
            }
        }
        if (mPending.empty())
            return nullptr;
        Entry* next = *mPending.begin();
        mPending.erase(mPending.begin());
        unlistLoadLocked(next);
        if (next->bytes == 0 || (mDeferred.empty() && fitsLocked(next->bytes)))
            return next;
        // Behind the deferred ones, or first among them when its policy is better: the loop
        // looks at the head again.
        next->queue = Queue::Deferred;
        mDeferred.insert(next);
        ++mDeferrals;
    }
}

void zuResourceController::unlistLoadLocked(Entry* entry)
{
    if (!entry->load)
        return;
    const auto found = mPendingLoads.find(*entry->file);
    if (found == mPendingLoads.end())
        return;
    found->second.erase(entry);
    if (found->second.empty())
        mPendingLoads.erase(found);
}

void zuResourceController::startBatchLocked(std::vector<Entry*>& batch)
{
    Entry* head = batch.front();
    mBytesInFlight += head->bytes;
    const auto found = head->load ? mPendingLoads.find(*head->file) : mPendingLoads.end();
    if (found != mPendingLoads.end()) {
        EntrySet& loads = found->second;
        while (!loads.empty() && batch.size() < MAX_BATCH_REQUESTS) {
            Entry* next = *loads.begin();
            // Same policy only: a batch never starts a less urgent load before its turn.
            // Memory as for any request: nothing while one is deferred, and only what fits.
            if (next->request->compare(head->request) != 0 || !mDeferred.empty() || !fitsLocked(next->bytes))
                break;
            loads.erase(loads.begin());
            mPending.erase(next);
            batch.push_back(next);
            mBytesInFlight += next->bytes;
        }
        if (loads.empty())
            mPendingLoads.erase(found);
    }
    for (Entry* entry : batch)
        entry->queue = Queue::Working;
    mWorkingCount += batch.size();
    mPeakBytesInFlight = std::max(mPeakBytesInFlight, mBytesInFlight);
}

void zuResourceController::runWorker(zuRC_WorkingThreadContext& context)
{
    std::vector<Entry*> batch;
    std::vector<zuDynamicResourceCPULoadRequest*> loads;
    std::unique_lock<zuMutex> lock(mMutex);
    while (!mStopping.load()) {
        Entry* entry = takeNextLocked();
        if (!entry) {
            mWorkAvailable.wait(mMutex);
            continue;
        }
        batch.assign(1, entry);
        startBatchLocked(batch);
        lock.unlock();
        if (batch.size() == 1) {
            entry->request->execute(&context);
        } else {
            loads.clear();
            for (Entry* member : batch)
                loads.push_back(member->load);
            zuCPULoadBatch::execute(loads, &context);
        }
        lock.lock();
        mWorkingCount -= batch.size();
        for (Entry* member : batch) {
            member->queue = Queue::Finalising;
            mFinalising.push_back(member);
        }
        mRequestExecuted.wakeAll();
    }
}

void zuResourceController::finish(Entry* entry, bool finalize, zuEngineInterface* engine)
{
    zuRequestInterface* request = entry->request;
    if (finalize)
        request->finalizeRequest(engine);
    else
        request->cancelRequest();
    if (entry->tracked)
        zuRC_ResourceRegistry::endRequest(entry->resourceID);
    request->onFinished(finalize);
    delete request;
    delete entry;
}

void zuResourceController::releaseBytes(uint64_t bytes)
{
    if (bytes == 0)
        return;
    std::lock_guard<zuMutex> lock(mMutex);
    mBytesInFlight -= std::min(bytes, mBytesInFlight);
    // Deferred requests may fit now.
    mWorkAvailable.wakeAll();
}

bool zuResourceController::cancelRequest(Ticket ticket)
{
    Entry* entry = nullptr;
    uint64_t inFlight = 0;
    {
        std::lock_guard<zuMutex> lock(mMutex);
        const auto found = mEntries.find(ticket);
        if (found == mEntries.end())
            return false;
        entry = found->second;
        switch (entry->queue) {
        case Queue::Pending:
            mPending.erase(entry);
            unlistLoadLocked(entry);
            break;
        case Queue::Deferred:
            mDeferred.erase(entry);
            break;
        case Queue::Working:
            // Its execute cannot be interrupted; the finalise step cancels it afterwards.
            entry->cancelled = true;
            return true;
        case Queue::Finalising:
            mFinalising.erase(std::find(mFinalising.begin(), mFinalising.end(), entry));
            inFlight = entry->bytes;
            break;
        }
        mEntries.erase(found);
    }
    finish(entry, false, nullptr);
    releaseBytes(inFlight);
    return true;
}

int zuResourceController::cancelAllRequests()
{
    std::vector<Ticket> tickets;
    {
        std::lock_guard<zuMutex> lock(mMutex);
        tickets.reserve(mEntries.size());
        for (const auto& item : mEntries)
            tickets.push_back(item.first);
    }
    // In the order of adding, so that clients hear of them in that order.
    std::sort(tickets.begin(), tickets.end());
    int count = 0;
    for (Ticket ticket : tickets)
        if (cancelRequest(ticket))
            ++count;
    return count;
}

int zuResourceController::finalizeRequests(zuEngineInterface* engine, int maxRequests, double maxMilliseconds)
{
    zuEngineInterface* target = engine ? engine : &mDefaultEngine;
    const zuHighResTimer timer;
    int finalized = 0;
    for (;;) {
        if (maxRequests > 0 && finalized >= maxRequests)
            break;
        if (maxMilliseconds > 0.0 && finalized > 0 && timer.elapsedMs() >= maxMilliseconds)
            break;
        Entry* entry = nullptr;
        {
            std::lock_guard<zuMutex> lock(mMutex);
            if (mFinalising.empty())
                break;
            entry = mFinalising.front();
            mFinalising.pop_front();
            mEntries.erase(entry->ticket);
        }
        const bool cancelled = entry->cancelled;
        const uint64_t bytes = entry->bytes;
        finish(entry, !cancelled, target);
        releaseBytes(bytes);
        if (!cancelled)
            ++finalized;
    }
    return finalized;
}

bool zuResourceController::waitForFinishedRequests(long timeoutMs)
{
    std::lock_guard<zuMutex> lock(mMutex);
    if (mFinalising.empty() && !mEntries.empty())
        mRequestExecuted.wait(mMutex, timeoutMs);
    return !mFinalising.empty();
}

bool zuResourceController::isIdle() const
{
    std::lock_guard<zuMutex> lock(mMutex);
    return mEntries.empty();
}

size_t zuResourceController::getPendingCount() const
{
    std::lock_guard<zuMutex> lock(mMutex);
    return mPending.size();
}

size_t zuResourceController::getDeferredCount() const
{
    std::lock_guard<zuMutex> lock(mMutex);
    return mDeferred.size();
}

size_t zuResourceController::getWorkingCount() const
{
    std::lock_guard<zuMutex> lock(mMutex);
    return mWorkingCount;
}

size_t zuResourceController::getFinalisingCount() const
{
    std::lock_guard<zuMutex> lock(mMutex);
    return mFinalising.size();
}

uint64_t zuResourceController::getBytesInFlight() const
{
    std::lock_guard<zuMutex> lock(mMutex);
    return mBytesInFlight;
}

uint64_t zuResourceController::getPeakBytesInFlight() const
{
    std::lock_guard<zuMutex> lock(mMutex);
    return mPeakBytesInFlight;
}

uint64_t zuResourceController::getDeferralCount() const
{
    std::lock_guard<zuMutex> lock(mMutex);
    return mDeferrals;
}

} // namespace zu
