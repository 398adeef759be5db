#include <zuSystem/zuMutex.h>

namespace zu {

void zuMutex::lock()
{
    mMutex.lock();
}

bool zuMutex::tryLock()
{
    return mMutex.try_lock();
}

void zuMutex::unlock()
{
    mMutex.unlock();
}

} // namespace zu
