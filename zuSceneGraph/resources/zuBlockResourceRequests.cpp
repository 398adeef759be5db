#include <zuSceneGraph/resources/zuBlockResourceRequests.h>

#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>

namespace zu {

void zuBlockResourceRequests::Register(unsigned int& resourceType, unsigned int& handlerType)
{
    if (resourceType == 0) {
        resourceType = zuDynamicLoadingResource::GetNextResourceIdentifier();
        handlerType = zuDynamicLoadingResource::GetNextHandlerIdentifier();
    }
    zuDynamicLoadingResource::RegisterCPURequestBuilder(handlerType, LoadFromHandler, DeleteFromHandler,
                                                        LoadFromResource, DeleteFromResource);
}

void zuBlockResourceRequests::Unregister(unsigned int handlerType)
{
    if (handlerType != 0)
        zuDynamicLoadingResource::UnregisterRequestBuilder(handlerType);
}

} // namespace zu
