#pragma once

#include <atomic>
#include <thread>

namespace zu {

// A thread object: derive and implement run(), then start() and wait(). isRunning() is true
// from start() until run() returns. A derived class whose run() uses its own members must
// wait() in its destructor: the base destructor joins only after the derived part is gone.
// run() must not destroy its own thread object.
class zuThread {
public:
    zuThread() = default;
    zuThread(const zuThread&) = delete;
    zuThread& operator=(const zuThread&) = delete;
    // Joins the thread if it is still running.
    virtual ~zuThread();

    // Starts run() on a new thread; false while a previous run() is still running. A thread
    // whose run() has returned may be started again.
    bool start();
    // Waits for run() to return. True when the thread was joined (or never started); false
    // when called from the thread itself.
    bool wait();
    bool isRunning() const { return mRunning.load(); }

    static void sleepMs(unsigned long ms);
    static void yieldCurrent();

protected:
    virtual void run() = 0;

private:
    std::thread mThread;
    std::atomic<bool> mRunning{false};
    std::atomic<std::thread::id> mThreadId{}; // of the running thread, set by that thread
};

} // namespace zu
