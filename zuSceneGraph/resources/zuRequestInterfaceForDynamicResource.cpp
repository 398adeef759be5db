#include <zuSceneGraph/resources/zuRequestInterfaceForDynamicResource.h>

#include <zuSceneGraph/resources/zuEngineInterface.h>
#include <zuSceneGraph/resources/zuResourceRequestClientInterface.h>

namespace zu {

void zuRequestInterfaceForDynamicResource::onFinished(bool finalized)
{
    if (mClient)
        mClient->onRequestFinished(this, finalized);
}

zuDynamicLoadingResource* zuRequestInterfaceForDynamicResource::findResource(zuEngineInterface* engine) const
{
    return engine ? engine->findDynamicResource(mResourceID) : nullptr;
}

} // namespace zu
