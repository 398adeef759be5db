#pragma once

#include <cstdint>

namespace zu {

class zuSystemUtils {
public:
    // Milliseconds of a monotonic clock since an arbitrary origin fixed for the process.
    static uint64_t GetTimeBaseMs();
};

} // namespace zu
