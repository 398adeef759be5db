#include <Wm4/Wm4IntrRay3Box3.h>

#include <Wm4/Wm4IntrLine3Box3.h>

namespace Wm4 {

template <class Real>
bool IntrRay3Box3<Real>::Test() const
{
    // Along a box axis the ray starts at diff . Axis[i] and runs on in the
    // direction of Direction . Axis[i]: it misses when it starts beyond a
    // face and does not head back.
    Vector3<Real> diff = mRay.Origin - mBox.Center;
    for (int i = 0; i < 3; ++i) {
        Real start = diff.Dot(mBox.Axis[i]);
        if (Math<Real>::FAbs(start) > mBox.Extent[i] && start * mRay.Direction.Dot(mBox.Axis[i]) >= Real(0)) {
            return false;
        }
    }
    // The remaining axes are perpendicular to the ray, which projects onto
    // them as its whole line does.
    return IntrLine3Box3<Real>(Line3<Real>(mRay.Origin, mRay.Direction), mBox).Test();
}

template class IntrRay3Box3<float>;
template class IntrRay3Box3<double>;

} // namespace Wm4
