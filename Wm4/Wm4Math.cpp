#include <Wm4/Wm4Math.h>

namespace Wm4 {

template class Math<float>;
template class Math<double>;

} // namespace Wm4
