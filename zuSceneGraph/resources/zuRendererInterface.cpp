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

} // namespace zu
