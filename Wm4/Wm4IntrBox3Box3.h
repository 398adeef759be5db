#pragma once

#include <Wm4/Wm4Box3.h>

namespace Wm4 {

// Whether two solid oriented boxes overlap, by the separating-axis test over
// the three face normals of each box and the nine cross products of their
// edge directions. The query keeps copies of its objects.
template <class Real>
class IntrBox3Box3 {
public:
    IntrBox3Box3(const Box3<Real>& box0, const Box3<Real>& box1) : mBox0(box0), mBox1(box1) {}

    const Box3<Real>& GetBox0() const { return mBox0; }
    const Box3<Real>& GetBox1() const { return mBox1; }

    // True when the boxes share a point: boxes that only touch along a face,
    // an edge or a corner intersect, and so do boxes of zero extent (points,
    // segments, rectangles) lying on or in the other box. When an axis of one
    // box is within ZERO_TOLERANCE of parallel to an axis of the other (cosine
    // above 1 - ZERO_TOLERANCE) the nine cross products are not used: they
    // are then nearly face normals or nearly zero, and rounding in such an
    // axis could report a false separation. The answer then errs only towards
    // an intersection, by at most the box sizes times that tolerance.
    bool Test() const;

private:
    Box3<Real> mBox0;
    Box3<Real> mBox1;
};

extern template class IntrBox3Box3<float>;
extern template class IntrBox3Box3<double>;

typedef IntrBox3Box3<float> IntrBox3Box3f;
typedef IntrBox3Box3<double> IntrBox3Box3d;

} // namespace Wm4
