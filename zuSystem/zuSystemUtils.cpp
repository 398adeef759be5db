#include <zuSystem/zuSystemUtils.h>

#include <chrono>

namespace zu {

uint64_t zuSystemUtils::GetTimeBaseMs()
{
    const auto sinceOrigin = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceOrigin).count());
}

} // namespace zu
