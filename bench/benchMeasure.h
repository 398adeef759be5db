#pragma once

// What the benchmarks that measure by hand (in forked children, against peer libraries)
// time and read: no header of the library, so that a peer's side can use them too.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include <time.h>

namespace bench {

// A field of /proc/self/status in KB ("VmRSS:", "VmHWM:"), or -1.
inline long statusKB(const char* field)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    const size_t length = std::strlen(field);
    while (std::getline(status, line))
        if (line.compare(0, length, field) == 0)
            return std::atol(line.c_str() + length);
    return -1;
}

// The processor time of this process so far: on a machine shared with other work it shows
// what a step costs when the wall clock shows what it waited too.
inline double processorSeconds()
{
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

class Stopwatch {
public:
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - mStart).count(); }

private:
    std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
};

// The middle value (the upper one of an even count), 0 for none.
inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0.0 : values[values.size() / 2];
}

// The median time of `runs` calls of `work`, each after an untimed call of `prepare`.
template <class Prepare, class Work>
double medianOf(int runs, Prepare&& prepare, Work&& work)
{
    std::vector<double> seconds;
    for (int i = 0; i < runs; ++i) {
        prepare();
        const Stopwatch watch;
        work();
        seconds.push_back(watch.seconds());
    }
    return median(seconds);
}

template <class Work>
double medianOf(int runs, Work&& work)
{
    return medianOf(runs, [] {}, work);
}

} // namespace bench
