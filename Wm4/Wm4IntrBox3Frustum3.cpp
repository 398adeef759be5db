#include <Wm4/Wm4IntrBox3Frustum3.h>

namespace Wm4 {

namespace {

// Whether the axis separates the box from the frustum. Both are projected
// relative to the frustum's origin; the axis needs no unit length.
template <class Real>
bool Separates(const Vector3<Real>& axis, const Vector3<Real>& diff, const Box3<Real>& box,
               const Frustum3<Real>& frustum)
{
    Real center = diff.Dot(axis);
    Real radius = box.Extent[0] * Math<Real>::FAbs(box.Axis[0].Dot(axis)) +
                  box.Extent[1] * Math<Real>::FAbs(box.Axis[1].Dot(axis)) +
                  box.Extent[2] * Math<Real>::FAbs(box.Axis[2].Dot(axis));

    // The near window projects to nearMid -+ nearHalf, and the far window is
    // the near one scaled by DRatio > 1 about the eye. The frustum covers
    // the hull of both intervals: the scaling pushes a negative low end and a
    // positive high end further out, the other ends stay at the near window.
    Real nearMid = frustum.DMin * frustum.DVector.Dot(axis);
    Real nearHalf = frustum.UBound * Math<Real>::FAbs(frustum.UVector.Dot(axis)) +
                    frustum.RBound * Math<Real>::FAbs(frustum.RVector.Dot(axis));
    Real low = nearMid - nearHalf;
    Real high = nearMid + nearHalf;
    if (low < Real(0)) {
        low *= frustum.GetDRatio();
    }
    if (high > Real(0)) {
        high *= frustum.GetDRatio();
    }
    return center + radius < low || center - radius > high;
}

} // namespace

template <class Real>
bool IntrBox3Frustum3<Real>::Test() const
{
    const Frustum3<Real>& f = mFrustum;
    Vector3<Real> diff = mBox.Center - f.Origin;

    // Face normals of the frustum: near and far, then the side planes, each
    // perpendicular to a lateral edge DMin D +- RBound R (or +- UBound U).
    Vector3<Real> faceAxes[5] = {
        f.DVector,
        f.RVector * f.DMin - f.DVector * f.RBound,
        f.RVector * f.DMin + f.DVector * f.RBound,
        f.UVector * f.DMin - f.DVector * f.UBound,
        f.UVector * f.DMin + f.DVector * f.UBound,
    };
    for (const Vector3<Real>& axis : faceAxes) {
        if (Separates(axis, diff, mBox, f)) {
            return false;
        }
    }
    for (const Vector3<Real>& axis : mBox.Axis) {
        if (Separates(axis, diff, mBox, f)) {
            return false;
        }
    }

    Vector3<Real> edges[6] = {f.UVector, f.RVector};
    Vector3<Real> d = f.DVector * f.DMin, u = f.UVector * f.UBound, r = f.RVector * f.RBound;
    edges[2] = d - u - r;
    edges[3] = d - u + r;
    edges[4] = d + u + r;
    edges[5] = d + u - r;
    for (const Vector3<Real>& edge : edges) {
        Real edgeLengthSqr = edge.SquaredLength();
        for (const Vector3<Real>& boxAxis : mBox.Axis) {
            Vector3<Real> axis = boxAxis.Cross(edge);
            // Nearly parallel edges give a short, ill-conditioned axis. For
            // exactly parallel edges the other axes are enough.
            if (axis.SquaredLength() <= Math<Real>::ZERO_TOLERANCE * edgeLengthSqr * boxAxis.SquaredLength()) {
                continue;
            }
            if (Separates(axis, diff, mBox, f)) {
                return false;
            }
        }
    }
    return true;
}

template class IntrBox3Frustum3<float>;
template class IntrBox3Frustum3<double>;

} // namespace Wm4
