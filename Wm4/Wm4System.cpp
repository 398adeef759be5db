#include <Wm4/Wm4System.h>

namespace Wm4 {

void* System::Memcpy(void* dst, std::size_t dstSize, const void* src, std::size_t srcSize)
{
    std::size_t count = dstSize < srcSize ? dstSize : srcSize;
    if (dst && src && count > 0) {
        std::memcpy(dst, src, count);
    }
    return dst;
}

} // namespace Wm4
