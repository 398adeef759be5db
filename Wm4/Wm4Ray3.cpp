#include <Wm4/Wm4Ray3.h>

namespace Wm4 {

template class Ray3<float>;
template class Ray3<double>;

} // namespace Wm4
