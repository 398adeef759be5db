#pragma once

#include <Wm4/Wm4Box3.h>
#include <Wm4/Wm4Ray3.h>

namespace Wm4 {

// Whether a ray meets a solid oriented box, by separating axes. The query
// keeps copies of its objects, so temporaries may be passed.
template <class Real>
class IntrRay3Box3 {
public:
    IntrRay3Box3(const Ray3<Real>& ray, const Box3<Real>& box) : mRay(ray), mBox(box) {}

    const Ray3<Real>& GetRay() const { return mRay; }
    const Box3<Real>& GetBox() const { return mBox; }

    // True when the ray has a point in the box, the faces included: a ray
    // that starts inside, or only grazes a face or an edge, intersects.
    bool Test() const;

private:
    Ray3<Real> mRay;
    Box3<Real> mBox;
};

extern template class IntrRay3Box3<float>;
extern template class IntrRay3Box3<double>;

typedef IntrRay3Box3<float> IntrRay3Box3f;
typedef IntrRay3Box3<double> IntrRay3Box3d;

} // namespace Wm4
