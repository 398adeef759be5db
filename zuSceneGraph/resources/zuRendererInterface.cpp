#include <zuSceneGraph/resources/zuRendererInterface.h>

#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
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
