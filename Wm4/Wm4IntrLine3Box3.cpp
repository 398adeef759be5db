#include <Wm4/Wm4IntrLine3Box3.h>

namespace Wm4 {

template <class Real>
bool IntrLine3Box3<Real>::Test() const
{
    const Vector3<Real>& direction = mLine.Direction;
    Vector3<Real> diff = mLine.Origin - mBox.Center;

    // A box axis perpendicular to the line: the line projects onto it as a
    // single point. For any other direction this test is implied by the
    // three below; it matters for a zero direction, where those three
    // degenerate and the line is the point Origin.
    Real absDirDotAxis[3];
    for (int i = 0; i < 3; ++i) {
        absDirDotAxis[i] = Math<Real>::FAbs(direction.Dot(mBox.Axis[i]));
        if (absDirDotAxis[i] == Real(0) && Math<Real>::FAbs(diff.Dot(mBox.Axis[i])) > mBox.Extent[i]) {
            return false;
        }
    }

    // The axes Direction x Axis[i], across which the line again projects to
    // a point: |Axis[i] . (Direction x diff)| against the box's radius
    // Extent[j] |Direction . Axis[k]| + Extent[k] |Direction . Axis[j]|.
    Vector3<Real> dirCrossDiff = direction.Cross(diff);
    for (int i = 0; i < 3; ++i) {
        int j = (i + 1) % 3, k = (i + 2) % 3;
        Real radius = mBox.Extent[j] * absDirDotAxis[k] + mBox.Extent[k] * absDirDotAxis[j];
        if (Math<Real>::FAbs(dirCrossDiff.Dot(mBox.Axis[i])) > radius) {
            return false;
        }
    }
    return true;
}

template class IntrLine3Box3<float>;
template class IntrLine3Box3<double>;

} // namespace Wm4
