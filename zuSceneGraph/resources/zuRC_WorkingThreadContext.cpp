#include <zuSceneGraph/resources/zuRC_WorkingThreadContext.h>

#include <zuSceneGraph/resources/zuResourceController.h>

namespace zu {

bool zuRC_WorkingThreadContext::isStopRequested() const
{
    return mController && mController->isStopping();
}

} // namespace zu
