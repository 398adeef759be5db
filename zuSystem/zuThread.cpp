#include <zuSystem/zuThread.h>

#include <chrono>

namespace zu {

zuThread::~zuThread()
{
    wait();
}

bool zuThread::start()
{
    if (mRunning.load())
        return false;
    // A previous run has returned but its thread was never joined.
    wait();
    // Raised before the thread exists, so that isRunning() is true as soon as start() returns.
    mRunning.store(true);
    try {
        mThread = std::thread([this] {
            // Recorded by the thread itself: the assignment to mThread may still be under way.
            mThreadId.store(std::this_thread::get_id());
            run();
            mRunning.store(false);
        });
    } catch (...) {
        mRunning.store(false);
        return false;
    }
    return true;
}

bool zuThread::wait()
{
    if (mThreadId.load() == std::this_thread::get_id())
        return false;
    if (!mThread.joinable())
        return true;
    mThread.join();
    mThreadId.store(std::thread::id());
    return true;
}

void zuThread::sleepMs(unsigned long ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void zuThread::yieldCurrent()
{
    std::this_thread::yield();
}

} // namespace zu
