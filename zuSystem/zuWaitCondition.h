#pragma once

#include <condition_variable>

namespace zu {

class zuMutex;

// A condition variable used with a locked zuMutex.
class zuWaitCondition {
public:
    // Releases the mutex, waits until woken (or until timeoutMs elapsed when it is not
    // negative) and locks the mutex again. Returns false on time-out.
    bool wait(zuMutex& mutex, long timeoutMs = -1);
    void wakeOne();
    void wakeAll();

private:
    std::condition_variable_any mCondition;
};

} // namespace zu
