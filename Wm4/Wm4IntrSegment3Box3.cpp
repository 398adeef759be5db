#include <Wm4/Wm4IntrSegment3Box3.h>

#include <Wm4/Wm4IntrLine3Box3.h>

namespace Wm4 {

template <class Real>
bool IntrSegment3Box3<Real>::Test() const
{
    // Along a box axis the segment covers its centre's projection plus or
    // minus Extent |Direction . Axis[i]|, the box plus or minus Extent[i].
    // Comparing the whole intervals, not the end points against the faces,
    // keeps a segment lying inside the box an intersection.
    Vector3<Real> diff = mSegment.Origin - mBox.Center;
    for (int i = 0; i < 3; ++i) {
        Real radius = mSegment.Extent * Math<Real>::FAbs(mSegment.Direction.Dot(mBox.Axis[i]));
        if (Math<Real>::FAbs(diff.Dot(mBox.Axis[i])) > mBox.Extent[i] + radius) {
            return false;
        }
    }
    // The remaining axes are perpendicular to the segment, which projects
    // onto them as its whole line does.
    return IntrLine3Box3<Real>(Line3<Real>(mSegment.Origin, mSegment.Direction), mBox).Test();
}

template class IntrSegment3Box3<float>;
template class IntrSegment3Box3<double>;

} // namespace Wm4
