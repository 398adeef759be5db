#pragma once

#include <mutex>

namespace zu {

// A plain, non-recursive mutex.
class zuMutex {
public:
    zuMutex() = default;
    zuMutex(const zuMutex&) = delete;
    zuMutex& operator=(const zuMutex&) = delete;

    void lock();
    bool tryLock();
    void unlock();

    // Lower-case aliases so that the standard lock guards accept the type.
    bool try_lock() { return tryLock(); }

private:
    std::mutex mMutex;
};

} // namespace zu
