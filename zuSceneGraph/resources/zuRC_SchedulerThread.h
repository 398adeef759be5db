#pragma once

#include <zuSceneGraph/resources/zuRC_WorkingThreadContext.h>

#include <zuSystem/zuThread.h>

namespace zu {

class zuResourceController;

// One worker of a resource controller's fixed pool: it takes the next request the
// controller's scheduling allows, executes it and hands it back for finalisation, until
// the controller stops.
class zuRC_SchedulerThread : public zuThread {
public:
    zuRC_SchedulerThread(zuResourceController* controller, int threadIndex)
        : mController(controller), mContext(controller, threadIndex)
    {
    }
    // run() uses the context: join before it goes.
    ~zuRC_SchedulerThread() override { wait(); }

    const zuRC_WorkingThreadContext& getContext() const { return mContext; }

protected:
    void run() override;

private:
    zuResourceController* mController;
    zuRC_WorkingThreadContext mContext;
};

} // namespace zu
