#include <zuSystem/zuIoDevice.h>

namespace zu {

// Out of line so that the type information of the device hierarchy lives in this library.
zuIoDevice::~zuIoDevice() = default;

int64_t zuIoDevice::readAt(int64_t offset, void* destination, int64_t size)
{
    return seek(offset, SeekSet) ? read(destination, size) : -1;
}

} // namespace zu
