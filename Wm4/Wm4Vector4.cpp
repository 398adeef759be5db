#include <Wm4/Wm4Vector4.h>

namespace Wm4 {

template <class Real> const Vector4<Real> Vector4<Real>::ZERO(Real(0), Real(0), Real(0), Real(0));
template <class Real> const Vector4<Real> Vector4<Real>::UNIT_X(Real(1), Real(0), Real(0), Real(0));
template <class Real> const Vector4<Real> Vector4<Real>::UNIT_Y(Real(0), Real(1), Real(0), Real(0));
template <class Real> const Vector4<Real> Vector4<Real>::UNIT_Z(Real(0), Real(0), Real(1), Real(0));
template <class Real> const Vector4<Real> Vector4<Real>::UNIT_W(Real(0), Real(0), Real(0), Real(1));
template <class Real> const Vector4<Real> Vector4<Real>::ONE(Real(1), Real(1), Real(1), Real(1));

template class Vector4<float>;
template class Vector4<double>;

} // namespace Wm4
