#pragma once

#include <zuSceneGraph/resources/zuRequestInterface.h>

namespace zu {

class zuDynamicLoadingResource;
class zuResourceRequestClientInterface;

// A request that concerns one dynamically loaded resource, known by its identifier only:
// the resource may be destroyed while the request is under way, so the request finds it
// again at finalisation (through the engine interface) and does nothing when it is gone.
class zuRequestInterfaceForDynamicResource : public zuRequestInterface {
public:
    zuRequestInterfaceForDynamicResource(zuResourceRequestClientInterface* client, SchedulingPolicy policy)
        : zuRequestInterface(policy), mClient(client)
    {
    }
    zuRequestInterfaceForDynamicResource(unsigned long resourceID, zuResourceRequestClientInterface* client,
                                         SchedulingPolicy policy)
        : zuRequestInterface(policy), mResourceID(resourceID), mClient(client)
    {
    }

    // Applies the request to a resource found alive (or given directly on the synchronous
    // path): `load` tells a load from a delete, `force` lets a delete drop a block that has
    // no file to come back from.
    virtual void finalizeDynamicResourceRequest(zuDynamicLoadingResource* resource, bool load, bool force) = 0;
    // Tells the client, if any.
    void onFinished(bool finalized) override;

    unsigned long getResourceID() const { return mResourceID; }
    zuResourceRequestClientInterface* getClient() const { return mClient; }

protected:
    void setResourceID(unsigned long resourceID) { mResourceID = resourceID; }
    // The resource of this request, alive, or null.
    zuDynamicLoadingResource* findResource(zuEngineInterface* engine) const;

private:
    unsigned long mResourceID = 0;
    zuResourceRequestClientInterface* mClient;
};

} // namespace zu
