#include <zuSceneGraph/resources/zuDynamicResourceCPUDeleteRequest.h>

#include <zuSceneGraph/resources/zuBlockResourceHandler.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>

namespace zu {

zuDynamicResourceCPUDeleteRequest::zuDynamicResourceCPUDeleteRequest(unsigned long resourceID,
                                                                     zuResourceRequestClientInterface* client,
                                                                     zuBlockResourceHandler* handler,
                                                                     SchedulingPolicy policy)
    : zuRequestInterfaceForDynamicResource(resourceID, client, policy), mHandler(handler)
{
}

zuDynamicResourceCPUDeleteRequest::~zuDynamicResourceCPUDeleteRequest()
{
    delete mHandler;
}

void zuDynamicResourceCPUDeleteRequest::execute(zuRC_WorkingThreadContext*)
{
}

void zuDynamicResourceCPUDeleteRequest::finalizeRequest(zuEngineInterface* engine)
{
    finalizeDynamicResourceRequest(findResource(engine), false, false);
}

void zuDynamicResourceCPUDeleteRequest::finalizeDynamicResourceRequest(zuDynamicLoadingResource* resource, bool,
                                                                       bool force)
{
    if (!resource || !mHandler || resource->getResourceHandlerType() != mHandler->getResourceHandlerType())
        return;
    // A block that never came from or went to a file could not be read back.
    if (resource->getResourceFilePath().empty() && !force)
        return;
    char* block = mHandler->getCPUBlock(resource);
    mHandler->setCPUBlock(resource, nullptr);
    zuBlockResourceHandler::FreeBlock(block);
}

} // namespace zu
