#pragma once

#include <cstdint>

namespace zu {

class zuEngineInterface;
class zuRC_WorkingThreadContext;

// The unit of work of the resource controller. `execute` runs once on a worker thread and
// may touch only the request's own data (file reads, decoding); `finalizeRequest` runs
// later on the thread that owns the scene, where the request may change scene objects.
// Exactly one of finalizeRequest and cancelRequest is called, and onFinished last of all,
// both on the owning thread and never while execute runs; the controller then deletes the
// request.
class zuRequestInterface {
public:
    // How urgent a request is: the controller starts requests in this order (smaller
    // first), and requests of equal policy in the order they were added.
    enum SchedulingPolicy : int32_t {
        SCHEDULING_URGENT = 0,     // needed for the frame being drawn
        SCHEDULING_HIGH = 1,       // needed soon (visible, not drawn yet)
        SCHEDULING_NORMAL = 2,     // the default
        SCHEDULING_BACKGROUND = 3, // prefetching and clean-up
    };

    explicit zuRequestInterface(SchedulingPolicy policy = SCHEDULING_NORMAL) : mSchedulingPolicy(policy) {}
    zuRequestInterface(const zuRequestInterface&) = delete;
    zuRequestInterface& operator=(const zuRequestInterface&) = delete;

    // The virtual operations keep this slot order.
    virtual ~zuRequestInterface() = default;
    // Runs on a worker thread (or on the caller's thread with a null context).
    virtual void execute(zuRC_WorkingThreadContext* context) = 0;
    // Negative when this request should start before `other`, positive after, 0 when
    // neither comes first. It must order requests consistently (a strict weak order) and
    // must not change while the request is queued. By default: the scheduling policy.
    virtual int compare(zuRequestInterface* other) const;
    // The bytes execute will allocate and keep until the request is finalised or
    // cancelled; the controller caps the sum over the requests in flight.
    virtual uint64_t getThreadCPUMemoryAllocation() const { return 0; }
    // Drops what execute produced; the request will not be finalised.
    virtual void cancelRequest() {}
    // Hands the result to the scene.
    virtual void finalizeRequest(zuEngineInterface* engine) = 0;
    // The last call: true after finalizeRequest, false after cancelRequest.
    virtual void onFinished(bool finalized);

    SchedulingPolicy getSchedulingPolicy() const { return mSchedulingPolicy; }
    // Only before the request is handed to a controller.
    void setSchedulingPolicy(SchedulingPolicy policy) { mSchedulingPolicy = policy; }

private:
    SchedulingPolicy mSchedulingPolicy;
};

} // namespace zu
