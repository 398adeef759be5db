#pragma once

#include <zuSceneGraph/resources/zuRequestInterfaceForDynamicResource.h>

#include <cstdint>

namespace zu {

class zuBlockReader;
class zuBlockResourceHandler;

// Reads a resource's CPU block back from its file: the same request for every resource
// kind whose handler derives from zuBlockResourceHandler. execute reads into a block of
// its own (worker thread); finalisation hands the block to the resource, if it is alive.
//
// A kind registers it through zuBlockResourceRequests, which builds it from a handler or
// from the resource.
class zuDynamicResourceCPULoadRequest : public zuRequestInterfaceForDynamicResource {
public:
    enum Status : int {
        STATUS_DONE = 0,
        STATUS_NOT_RUN = 2,
        STATUS_IO_ERROR = 64,       // open, seek or short read (or invalid packed data)
        STATUS_OUT_OF_MEMORY = 128,
        STATUS_NO_FILE = 512,       // the block never came from or went to a file
    };

    // Takes ownership of `handler` (not null).
    zuDynamicResourceCPULoadRequest(unsigned long resourceID, zuResourceRequestClientInterface* client,
                                    zuBlockResourceHandler* handler, SchedulingPolicy policy = SCHEDULING_NORMAL);
    ~zuDynamicResourceCPULoadRequest() override;

    // 0 when the request already holds a block; 512 without a file path; 64 when the file
    // cannot be opened or positioned; 128 when the block cannot be allocated; 64 when fewer
    // bytes arrive than the block needs (the block is freed); else 0. The file is closed in
    // every case.
    void execute(zuRC_WorkingThreadContext* context) override;
    // The handler's CPU size.
    uint64_t getThreadCPUMemoryAllocation() const override;
    // Frees the block read, if any; the status stays as execute left it.
    void cancelRequest() override;
    // Finds the resource by identifier and hands it the block.
    void finalizeRequest(zuEngineInterface* engine) override;
    // When the resource is alive, of this handler's type and still of the size read, and
    // a block was read: the resource's current block (unless it is this very block) is
    // freed and replaced by the loaded one, which the request gives up. Otherwise nothing
    // changes (a failed load leaves the resource as it was: non-resident).
    void finalizeDynamicResourceRequest(zuDynamicLoadingResource* resource, bool load, bool force) override;

    int getStatus() const { return mStatus; }
    // The block read and not yet handed over, or null.
    const char* getBlock() const { return mBlock; }
    const zuBlockResourceHandler* getHandler() const { return mHandler; }

private:
    // The batch reads blocks for many requests and lets each decode its own.
    friend class zuCPULoadBatch;
    // The allocation and the read of execute, from a reader at the stream offset.
    void readBlock(zuBlockReader& reader);

    zuBlockResourceHandler* mHandler;
    int mStatus = STATUS_NOT_RUN;
    char* mBlock = nullptr;
};

} // namespace zu
