#include <Wm4/Wm4Vector3.h>

namespace Wm4 {

template <class Real> const Vector3<Real> Vector3<Real>::ZERO(Real(0), Real(0), Real(0));
template <class Real> const Vector3<Real> Vector3<Real>::UNIT_X(Real(1), Real(0), Real(0));
template <class Real> const Vector3<Real> Vector3<Real>::UNIT_Y(Real(0), Real(1), Real(0));
template <class Real> const Vector3<Real> Vector3<Real>::UNIT_Z(Real(0), Real(0), Real(1));
template <class Real> const Vector3<Real> Vector3<Real>::ONE(Real(1), Real(1), Real(1));

template class Vector3<float>;
template class Vector3<double>;

} // namespace Wm4
