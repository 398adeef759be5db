#include <Wm4/Wm4Line3.h>

namespace Wm4 {

template class Line3<float>;
template class Line3<double>;

} // namespace Wm4
