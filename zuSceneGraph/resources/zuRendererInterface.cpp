#include <zuSceneGraph/resources/zuRendererInterface.h>

#include <zuSceneGraph/resources/zuCPULoadBatch.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuDynamicResourceCPULoadRequest.h>
#include <zuSceneGraph/resources/zuRequestInterfaceForDynamicResource.h>

#include <memory>

namespace zu {

namespace {

bool underWay(const zuDynamicLoadingResource* resource)
{
    return resource->getResourceState() == zuDynamicLoadingResource::RESOURCE_REQUEST_UNDER_WAY;
}

// The synchronous load and delete themselves, whatever the resource's state.
void loadNow(zuDynamicLoadingResource* resource)
{
    std::unique_ptr<zuRequestInterfaceForDynamicResource> request(
        zuDynamicLoadingResource::CreateCPULoadRequest(resource, nullptr));
    if (!request)
        return;
    request->execute(nullptr);
    request->finalizeDynamicResourceRequest(resource, true, false);
}

void deleteNow(zuDynamicLoadingResource* resource, bool force)
{
    std::unique_ptr<zuRequestInterfaceForDynamicResource> request(
        zuDynamicLoadingResource::CreateCPUDeleteRequest(resource, nullptr));
    if (request)
        request->finalizeDynamicResourceRequest(resource, false, force);
}

} // namespace

bool zuRendererInterface::LoadCPUData(zuDynamicLoadingResource* resource)
{
    if (!resource)
        return false;
    if (!underWay(resource) && !resource->isCPUResident())
        loadNow(resource);
    return resource->isCPUResident();
}

size_t zuRendererInterface::LoadCPUData(const std::vector<zuDynamicLoadingResource*>& resources)
{
    struct Load {
        zuDynamicLoadingResource* resource;
        std::unique_ptr<zuRequestInterfaceForDynamicResource> request;
        zuDynamicLoadingResource::DynamicResourceState state;
    };
    std::vector<Load> loads;
    std::vector<zuDynamicResourceCPULoadRequest*> batch;
    for (zuDynamicLoadingResource* resource : resources) {
        if (!resource || resource->getResourceState() == zuDynamicLoadingResource::RESOURCE_REQUEST_UNDER_WAY
            || resource->isCPUResident())
            continue;
        std::unique_ptr<zuRequestInterfaceForDynamicResource> request(
            zuDynamicLoadingResource::CreateCPULoadRequest(resource, nullptr));
        if (!request)
            continue;
        if (auto* load = dynamic_cast<zuDynamicResourceCPULoadRequest*>(request.get()))
            batch.push_back(load);
        else
            request->execute(nullptr);
        // Marked as under way until its block is handed over, so that a second listing
        // passes it by.
        loads.push_back({resource, std::move(request), resource->getResourceState()});
        resource->setResourceState(zuDynamicLoadingResource::RESOURCE_REQUEST_UNDER_WAY);
    }
    zuCPULoadBatch::execute(batch, nullptr);
    for (Load& load : loads) {
        load.resource->setResourceState(load.state);
        load.request->finalizeDynamicResourceRequest(load.resource, true, false);
    }
    size_t resident = 0;
    for (const zuDynamicLoadingResource* resource : resources)
        resident += resource && resource->isCPUResident() ? 1 : 0;
    return resident;
}

bool zuRendererInterface::DeleteCPUData(zuDynamicLoadingResource* resource, bool force)
{
    if (!resource)
        return false;
    if (!underWay(resource) && resource->isCPUResident())
        deleteNow(resource, force);
    return !resource->isCPUResident();
}

// The scope changes only whether the block is in memory, which a const resource may do.
zuRendererInterface::ResidentScope::ResidentScope(const zuDynamicLoadingResource* resource, bool whileUnderWay)
    : mResource(const_cast<zuDynamicLoadingResource*>(resource)), mWasResident(resource && resource->isCPUResident()),
      mWhileUnderWay(whileUnderWay)
{
    if (mResource && !mWasResident && (whileUnderWay || !underWay(mResource)))
        loadNow(mResource);
}

zuRendererInterface::ResidentScope::~ResidentScope()
{
    if (mResource && !mWasResident && mResource->isCPUResident() && (mWhileUnderWay || !underWay(mResource)))
        deleteNow(mResource, false);
}

} // namespace zu
