#include <Wm4/Wm4Frustum3.h>

namespace Wm4 {

template <class Real>
Frustum3<Real>::Frustum3(const Vector3<Real>& origin, const Vector3<Real>& dVector, const Vector3<Real>& uVector,
                         const Vector3<Real>& rVector, Real dMin, Real dMax, Real uBound, Real rBound)
    : Origin(origin), DVector(dVector), UVector(uVector), RVector(rVector), DMin(dMin), DMax(dMax), UBound(uBound),
      RBound(rBound), mDRatio(Real(0))
{
    Update();
}

template <class Real>
void Frustum3<Real>::Update()
{
    // A frustum without a positive near distance has no window to scale; the
    // ratio stays finite so that nothing downstream divides by zero.
    mDRatio = DMin > Real(0) ? DMax / DMin : Real(0);
}

template <class Real>
void Frustum3<Real>::ComputeVertices(Vector3<Real> vertex[8]) const
{
    Vector3<Real> d = DVector * DMin;
    Vector3<Real> u = UVector * UBound;
    Vector3<Real> r = RVector * RBound;
    vertex[0] = d - u - r;
    vertex[1] = d - u + r;
    vertex[2] = d + u + r;
    vertex[3] = d + u - r;
    for (int i = 0; i < 4; ++i) {
        vertex[i + 4] = Origin + vertex[i] * mDRatio;
        vertex[i] += Origin;
    }
}

template class Frustum3<float>;
template class Frustum3<double>;

} // namespace Wm4
