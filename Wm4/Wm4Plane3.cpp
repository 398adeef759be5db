#include <Wm4/Wm4Plane3.h>

namespace Wm4 {

template class Plane3<float>;
template class Plane3<double>;

} // namespace Wm4
