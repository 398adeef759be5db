#include <zuSystem/zuMutex.h>
#include <zuSystem/zuMutex2.h>
#include <zuSystem/zuThread.h>
#include <zuSystem/zuWaitCondition.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

using zu::zuMutex;
using zu::zuThread;
using zu::zuWaitCondition;

namespace {

// Blocks in run() until released, so the test decides when the thread ends.
class GatedThread : public zuThread {
public:
    ~GatedThread() override
    {
        release();
        wait();
    }

    void release()
    {
        std::lock_guard<zuMutex> lock(mMutex);
        mOpen = true;
        mGate.wakeAll();
    }

    std::atomic<int> runs{0};
    std::atomic<int> waitResult{-1}; // what wait() said when run() called it on itself

protected:
    void run() override
    {
        waitResult = wait() ? 1 : 0;
        std::lock_guard<zuMutex> lock(mMutex);
        while (!mOpen)
            mGate.wait(mMutex);
        mOpen = false;
        ++runs;
    }

private:
    zuMutex mMutex;
    zuWaitCondition mGate;
    bool mOpen = false;
};

bool lockedElsewhere(zuMutex& mutex)
{
    bool got = false;
    std::thread([&] {
        got = mutex.tryLock();
        if (got)
            mutex.unlock();
    }).join();
    return !got;
}

} // namespace

TEST(zuThreadTest, RunningFlagFollowsRunAndRestarts)
{
    GatedThread thread;
    EXPECT_TRUE(thread.wait()); // never started
    ASSERT_TRUE(thread.start());
    EXPECT_TRUE(thread.isRunning());
    EXPECT_FALSE(thread.start());
    thread.release();
    EXPECT_TRUE(thread.wait());
    EXPECT_FALSE(thread.isRunning());
    EXPECT_EQ(thread.waitResult, 0);

    ASSERT_TRUE(thread.start()); // a finished thread starts again
    thread.release();
    EXPECT_TRUE(thread.wait());
    EXPECT_EQ(thread.runs, 2);

    // The destructor joins a thread that is still running (a leaked one would abort).
    auto running = std::make_unique<GatedThread>();
    ASSERT_TRUE(running->start());
    running.reset();
}

TEST(zuMutexTest, TryLockAndRecursion)
{
    zuMutex mutex;
    mutex.lock();
    EXPECT_TRUE(lockedElsewhere(mutex));
    mutex.unlock();
    EXPECT_FALSE(lockedElsewhere(mutex));

    // Locked twice by its holder, the recursive mutex stays held until unlocked twice.
    zu::zuMutex2 recursive;
    recursive.lock();
    EXPECT_TRUE(recursive.tryLock());
    recursive.unlock();
    bool got = true;
    std::thread([&] { got = recursive.tryLock(); }).join();
    EXPECT_FALSE(got);
    recursive.unlock();
}

TEST(zuWaitConditionTest, TimeoutAndHandOffBetweenThreads)
{
    zuMutex mutex;
    zuWaitCondition condition;
    mutex.lock();
    EXPECT_FALSE(condition.wait(mutex, 1));
    EXPECT_TRUE(lockedElsewhere(mutex)); // held again after the time-out
    mutex.unlock();

    // A producer hands items to a consumer through a one-item slot.
    int slot = 0;
    int received = 0;
    std::thread consumer([&] {
        std::lock_guard<zuMutex> lock(mutex);
        for (int expected = 1; expected <= 100; ++expected) {
            while (slot == 0)
                condition.wait(mutex);
            EXPECT_EQ(slot, expected);
            ++received;
            slot = 0;
            condition.wakeAll();
        }
    });
    for (int item = 1; item <= 100; ++item) {
        std::lock_guard<zuMutex> lock(mutex);
        while (slot != 0)
            condition.wait(mutex, 1000);
        slot = item;
        condition.wakeOne();
    }
    consumer.join();
    EXPECT_EQ(received, 100);
}
