#include <zuSceneGraph/resources/zuEngineInterface.h>

#include <zuSceneGraph/resources/zuRC_ResourceRegistry.h>

namespace zu {

zuDynamicLoadingResource* zuEngineInterface::findDynamicResource(unsigned long resourceID)
{
    return zuRC_ResourceRegistry::find(resourceID);
}

} // namespace zu
