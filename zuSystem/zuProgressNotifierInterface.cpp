#include <zuSystem/zuProgressNotifierInterface.h>

namespace zu {

// Out of line so that the type information of the interface lives in this library.
zuProgressNotifierInterface::~zuProgressNotifierInterface() = default;

} // namespace zu
