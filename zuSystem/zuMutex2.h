#pragma once

#include <mutex>

namespace zu {

// A recursive mutex: the thread that holds it may lock it again.
class zuMutex2 {
public:
    zuMutex2() = default;
    zuMutex2(const zuMutex2&) = delete;
    zuMutex2& operator=(const zuMutex2&) = delete;

    void lock();
    bool tryLock();
    void unlock();

    bool try_lock() { return tryLock(); }

private:
    std::recursive_mutex mMutex;
};

} // namespace zu
