#pragma once

#include <chrono>
#include <cstdint>

namespace zu {

// A monotonic stopwatch, started on construction.
class zuHighResTimer {
public:
    zuHighResTimer() { start(); }
    void start() { mStart = std::chrono::steady_clock::now(); }
    double elapsedMs() const;
    int64_t elapsedUs() const;

private:
    std::chrono::steady_clock::time_point mStart;
};

} // namespace zu
