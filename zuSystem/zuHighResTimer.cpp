#include <zuSystem/zuHighResTimer.h>

namespace zu {

double zuHighResTimer::elapsedMs() const
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - mStart).count();
}

int64_t zuHighResTimer::elapsedUs() const
{
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - mStart).count();
}

} // namespace zu
