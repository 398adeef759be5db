#include <Wm4/Wm4Vector2.h>

namespace Wm4 {

template <class Real> const Vector2<Real> Vector2<Real>::ZERO(Real(0), Real(0));
template <class Real> const Vector2<Real> Vector2<Real>::UNIT_X(Real(1), Real(0));
template <class Real> const Vector2<Real> Vector2<Real>::UNIT_Y(Real(0), Real(1));
template <class Real> const Vector2<Real> Vector2<Real>::ONE(Real(1), Real(1));

template class Vector2<float>;
template class Vector2<double>;

} // namespace Wm4
