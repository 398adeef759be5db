#include <zuSceneGraph/math/zuMatrixInverse.h>

#include <Wm4/Wm4Math.h>

namespace zu {

template <class Real>
Wm4::Matrix3<Real> zuMatrixInverse<Real>::Compute(const Wm4::Matrix3<Real>& m)
{
    const Wm4::Matrix3<Real> adjoint = m.Adjoint();
    const Real determinant = m[0][0] * adjoint[0][0] + m[0][1] * adjoint[1][0] + m[0][2] * adjoint[2][0];
    if (determinant == Real(0))
        return Wm4::Matrix3<Real>::ZERO;
    const Real tolerance = Wm4::Math<Real>::ZERO_TOLERANCE;
    if (determinant < tolerance && !(Wm4::Math<Real>::FAbs(determinant - Real(1) / determinant) <= tolerance))
        return Wm4::Matrix3<Real>::ZERO;
    return adjoint * (Real(1) / determinant);
}

template class zuMatrixInverse<float>;
template class zuMatrixInverse<double>;

} // namespace zu
