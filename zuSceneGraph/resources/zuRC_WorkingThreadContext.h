#pragma once

namespace zu {

class zuResourceController;

// What a request's execute learns about the worker thread it runs on. One context per
// worker, alive as long as the worker.
class zuRC_WorkingThreadContext {
public:
    zuRC_WorkingThreadContext(zuResourceController* controller, int threadIndex)
        : mController(controller), mThreadIndex(threadIndex)
    {
    }

    zuResourceController* getController() const { return mController; }
    // 0 .. thread count - 1.
    int getThreadIndex() const { return mThreadIndex; }
    // True once the controller is stopping: a long execute may return early (its request
    // will be cancelled, not finalised).
    bool isStopRequested() const;

private:
    zuResourceController* mController;
    int mThreadIndex;
};

} // namespace zu
