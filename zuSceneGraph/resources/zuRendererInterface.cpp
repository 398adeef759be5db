#include <zuSceneGraph/resources/zuRendererInterface.h>

#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuRequestInterfaceForDynamicResource.h>

#include <memory>

namespace zu {

bool zuRendererInterface::LoadCPUData(zuDynamicLoadingResource* resource)
{
    if (!resource)
        return false;
    if (resource->getResourceState() == zuDynamicLoadingResource::RESOURCE_REQUEST_UNDER_WAY
        || resource->isCPUResident())
        return resource->isCPUResident();
    std::unique_ptr<zuRequestInterfaceForDynamicResource> request(
        zuDynamicLoadingResource::CreateCPULoadRequest(resource, nullptr));
    if (!request)
        return false;
    request->execute(nullptr);
    request->finalizeDynamicResourceRequest(resource, true, false);
    return resource->isCPUResident();
}

bool zuRendererInterface::DeleteCPUData(zuDynamicLoadingResource* resource, bool force)
{
    if (!resource)
        return false;
    if (resource->getResourceState() == zuDynamicLoadingResource::RESOURCE_REQUEST_UNDER_WAY
        || !resource->isCPUResident())
        return !resource->isCPUResident();
    std::unique_ptr<zuRequestInterfaceForDynamicResource> request(
        zuDynamicLoadingResource::CreateCPUDeleteRequest(resource, nullptr));
    if (!request)
        return false;
    request->finalizeDynamicResourceRequest(resource, false, force);
    return !resource->isCPUResident();
}

// The scope changes only whether the block is in memory, which a const resource may do.
zuRendererInterface::ResidentScope::ResidentScope(const zuDynamicLoadingResource* resource)
    : mResource(const_cast<zuDynamicLoadingResource*>(resource)), mWasResident(resource && resource->isCPUResident())
{
    LoadCPUData(mResource);
}

zuRendererInterface::ResidentScope::~ResidentScope()
{
    if (!mWasResident)
        DeleteCPUData(mResource, false);
}

} // namespace zu
