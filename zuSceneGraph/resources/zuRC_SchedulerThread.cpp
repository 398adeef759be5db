#include <zuSceneGraph/resources/zuRC_SchedulerThread.h>

#include <zuSceneGraph/resources/zuResourceController.h>

namespace zu {

void zuRC_SchedulerThread::run()
{
    mController->runWorker(mContext);
}

} // namespace zu
