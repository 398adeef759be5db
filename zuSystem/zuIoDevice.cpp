#include <zuSystem/zuIoDevice.h>

namespace zu {

// Out of line so that the type information of the device hierarchy lives in this library.
zuIoDevice::~zuIoDevice() = default;

} // namespace zu
