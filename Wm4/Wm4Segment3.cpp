#include <Wm4/Wm4Segment3.h>

namespace Wm4 {

template <class Real>
void Segment3<Real>::SetEndPoints(const Vector3<Real>& p0, const Vector3<Real>& p1)
{
    Origin = (p0 + p1) * Real(0.5);
    Direction = p1 - p0;
    Real length = Direction.Length();
    // Only an exact zero is refused: Normalize's tolerance would turn a short
    // but real segment into a point.
    if (length > Real(0)) {
        Direction /= length;
        Extent = Real(0.5) * length;
    } else {
        Direction = Vector3<Real>();
        Extent = Real(0);
    }
}

template class Segment3<float>;
template class Segment3<double>;

} // namespace Wm4
