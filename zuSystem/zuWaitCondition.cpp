#include <zuSystem/zuWaitCondition.h>

#include <zuSystem/zuMutex.h>

#include <chrono>

namespace zu {

bool zuWaitCondition::wait(zuMutex& mutex, long timeoutMs)
{
    if (timeoutMs < 0) {
        mCondition.wait(mutex);
        return true;
    }
    return mCondition.wait_for(mutex, std::chrono::milliseconds(timeoutMs)) == std::cv_status::no_timeout;
}

void zuWaitCondition::wakeOne()
{
    mCondition.notify_one();
}

void zuWaitCondition::wakeAll()
{
    mCondition.notify_all();
}

} // namespace zu
