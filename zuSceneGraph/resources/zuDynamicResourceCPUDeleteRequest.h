#pragma once

#include <zuSceneGraph/resources/zuRequestInterfaceForDynamicResource.h>

namespace zu {

class zuBlockResourceHandler;

// Drops a resource's CPU block: the same request for every resource kind whose handler
// derives from zuBlockResourceHandler (the handler gives access to the kind's block).
// There is nothing to do on a worker; everything happens at finalisation.
class zuDynamicResourceCPUDeleteRequest : public zuRequestInterfaceForDynamicResource {
public:
    // Takes ownership of `handler` (not null).
    zuDynamicResourceCPUDeleteRequest(unsigned long resourceID, zuResourceRequestClientInterface* client,
                                      zuBlockResourceHandler* handler, SchedulingPolicy policy = SCHEDULING_NORMAL);
    ~zuDynamicResourceCPUDeleteRequest() override;

    // Does nothing.
    void execute(zuRC_WorkingThreadContext* context) override;
    // Finds the resource by identifier and deletes its block (not forced).
    void finalizeRequest(zuEngineInterface* engine) override;
    // Nothing when the resource is gone or of another type, or when it has no file path and
    // `force` is false (its bytes could not be reloaded); otherwise its block is freed and
    // it becomes non-resident.
    void finalizeDynamicResourceRequest(zuDynamicLoadingResource* resource, bool load, bool force) override;

    const zuBlockResourceHandler* getHandler() const { return mHandler; }

private:
    zuBlockResourceHandler* mHandler;
};

} // namespace zu
