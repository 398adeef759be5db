#include <zuSystem/zuMutex2.h>

namespace zu {

void zuMutex2::lock()
{
    mMutex.lock();
}

bool zuMutex2::tryLock()
{
    return mMutex.try_lock();
}

void zuMutex2::unlock()
{
    mMutex.unlock();
}

} // namespace zu
