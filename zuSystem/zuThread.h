#pragma once

#include <atomic>
#include <thread>

namespace zu {

// A thread object: derive and implement run(), then start() and wait().
class zuThread {
public:
    zuThread() = default;
    zuThread(const zuThread&) = delete;
    zuThread& operator=(const zuThread&) = delete;
    // Joins the thread if it is still running.
    virtual ~zuThread();

    // Starts run() on a new thread; false when the thread is already started.
    bool start();
    // Waits for run() to return. True when the thread was joined (or never started).
    bool wait();
    bool isRunning() const { return mRunning.load(); }

    static void sleepMs(unsigned long ms);
    static void yieldCurrent();

protected:
    virtual void run() = 0;

private:
    std::thread mThread;
    std::atomic<bool> mRunning{false};
};

} // namespace zu
