#pragma once

#include <cstddef>
#include <vector>

namespace zu {

class zuDynamicLoadingResource;

// The renderer's side of the library. Its static operations are the synchronous path of
// the dynamically loaded resources: they run a resource's CPU request at once on the
// calling thread (the thread that owns the scene), without a resource controller.
class zuRendererInterface {
public:
    virtual ~zuRendererInterface() = default;

    // Nothing when a request for the resource is under way (state 1) or its block is
    // resident; otherwise builds the resource's CPU load request (no client), executes it,
    // hands the block to the resource and deletes the request. True when the resource is
    // resident afterwards.
    static bool LoadCPUData(zuDynamicLoadingResource* resource);
    // The same for many resources at once, as when a frame needs the blocks of every
    // visible leaf: the block resources' requests run as one zuCPULoadBatch, which opens
    // each file once and reads neighbouring blocks together; a resource listed twice is
    // read once. The number of listed resources resident afterwards (nulls not counted).
    static size_t LoadCPUData(const std::vector<zuDynamicLoadingResource*>& resources);
    // Nothing when a request is under way (state 1) or the block is not resident;
    // otherwise builds the CPU delete request and applies it: the block is freed only when
    // the resource has a file to reload it from, or when `force` is set. True when the
    // resource is not resident afterwards.
    static bool DeleteCPUData(zuDynamicLoadingResource* resource, bool force);

    // Keeps a resource's block in memory while it lives: LoadCPUData when it starts and, when
    // the block was not resident before, DeleteCPUData (not forced) when it ends. A Save
    // writes within one, so that saving leaves a block where it was.
    // `whileUnderWay`: the same even while a request for the resource is under way, for a
    // caller that must have the bytes now (a save); the request, finalised later on this
    // thread, then replaces or drops whatever block it finds, as it would have anyway.
    class ResidentScope {
    public:
        explicit ResidentScope(const zuDynamicLoadingResource* resource, bool whileUnderWay = false);
        ~ResidentScope();
        ResidentScope(const ResidentScope&) = delete;
        ResidentScope& operator=(const ResidentScope&) = delete;

    private:
        zuDynamicLoadingResource* mResource;
        bool mWasResident;
        bool mWhileUnderWay;
    };
};

} // namespace zu
