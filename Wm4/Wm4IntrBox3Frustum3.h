#pragma once

#include <Wm4/Wm4Box3.h>
#include <Wm4/Wm4Frustum3.h>

namespace Wm4 {

// Whether a solid oriented box overlaps a symmetric frustum (the truncated
// pyramid between the near and far planes), by the separating-axis test: the
// frustum's five face normals, the box's three, and the cross products of the
// box's three edge directions with the frustum's six (its window's up and
// right vectors and its four lateral edges). The frustum must be up to date
// (Frustum3::Update). The query keeps copies of its objects.
template <class Real>
class IntrBox3Frustum3 {
public:
    IntrBox3Frustum3(const Box3<Real>& box, const Frustum3<Real>& frustum) : mBox(box), mFrustum(frustum) {}

    const Box3<Real>& GetBox() const { return mBox; }
    const Frustum3<Real>& GetFrustum() const { return mFrustum; }

    // True when the box and the frustum share a point; touching counts. A
    // box lying wholly outside one of the six face planes is always
    // rejected. A cross-product axis whose edges are within ZERO_TOLERANCE
    // of parallel is skipped, so such cases err only towards an
    // intersection.
    bool Test() const;

private:
    Box3<Real> mBox;
    Frustum3<Real> mFrustum;
};

extern template class IntrBox3Frustum3<float>;
extern template class IntrBox3Frustum3<double>;

typedef IntrBox3Frustum3<float> IntrBox3Frustum3f;
typedef IntrBox3Frustum3<double> IntrBox3Frustum3d;

} // namespace Wm4
