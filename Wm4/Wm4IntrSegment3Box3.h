#pragma once

#include <Wm4/Wm4Box3.h>
#include <Wm4/Wm4Segment3.h>

namespace Wm4 {

// Whether a segment meets a solid oriented box, by separating axes. The
// query keeps copies of its objects, so temporaries may be passed.
template <class Real>
class IntrSegment3Box3 {
public:
    IntrSegment3Box3(const Segment3<Real>& segment, const Box3<Real>& box) : mSegment(segment), mBox(box) {}

    const Segment3<Real>& GetSegment() const { return mSegment; }
    const Box3<Real>& GetBox() const { return mBox; }

    // True when the segment has a point in the box, the faces included: a
    // segment lying wholly inside, or only grazing a face or an edge,
    // intersects.
    bool Test() const;

private:
    Segment3<Real> mSegment;
    Box3<Real> mBox;
};

extern template class IntrSegment3Box3<float>;
extern template class IntrSegment3Box3<double>;

typedef IntrSegment3Box3<float> IntrSegment3Box3f;
typedef IntrSegment3Box3<double> IntrSegment3Box3d;

} // namespace Wm4
