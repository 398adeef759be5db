#include <Wm4/Wm4Box3.h>

namespace Wm4 {

template <class Real>
void Box3<Real>::ComputeVertices(Vector3<Real> vertex[8]) const
{
    Vector3<Real> e0 = Axis[0] * Extent[0];
    Vector3<Real> e1 = Axis[1] * Extent[1];
    Vector3<Real> e2 = Axis[2] * Extent[2];
    vertex[0] = Center - e0 - e1 - e2;
    vertex[1] = Center + e0 - e1 - e2;
    vertex[2] = Center + e0 + e1 - e2;
    vertex[3] = Center - e0 + e1 - e2;
    vertex[4] = Center - e0 - e1 + e2;
    vertex[5] = Center + e0 - e1 + e2;
    vertex[6] = Center + e0 + e1 + e2;
    vertex[7] = Center - e0 + e1 + e2;
}

template class Box3<float>;
template class Box3<double>;

} // namespace Wm4
