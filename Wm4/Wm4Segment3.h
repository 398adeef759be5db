#pragma once

#include <Wm4/Wm4Vector3.h>

#include <cstring>
#include <type_traits>

namespace Wm4 {

// A segment in centre form: the points Origin + t Direction with
// |t| <= Extent, Origin being the mid-point, Direction unit length and Extent
// half the length. The end points are P0 = Origin - Extent Direction and
// P1 = Origin + Extent Direction.
//
// The default constructor zeroes every field; == and != compare the stored
// bits.
template <class Real>
class Segment3 {
public:
    constexpr Segment3() : Origin(), Direction(), Extent(Real(0)) {}
    constexpr Segment3(const Vector3<Real>& origin, const Vector3<Real>& direction, Real extent)
        : Origin(origin), Direction(direction), Extent(extent)
    {
    }
    // The segment from p0 to p1. Equal end points give a zero direction and
    // extent.
    Segment3(const Vector3<Real>& p0, const Vector3<Real>& p1) { SetEndPoints(p0, p1); }

    void SetEndPoints(const Vector3<Real>& p0, const Vector3<Real>& p1);
    Vector3<Real> GetP0() const { return Origin - Direction * Extent; }
    Vector3<Real> GetP1() const { return Origin + Direction * Extent; }

    bool operator==(const Segment3& segment) const { return std::memcmp(this, &segment, sizeof(Segment3)) == 0; }
    bool operator!=(const Segment3& segment) const { return !(*this == segment); }

    Vector3<Real> Origin;
    Vector3<Real> Direction;
    Real Extent;
};

static_assert(sizeof(Segment3<float>) == 7 * sizeof(float));
static_assert(sizeof(Segment3<double>) == 7 * sizeof(double));
static_assert(std::is_standard_layout_v<Segment3<float>> && std::is_trivially_copyable_v<Segment3<float>>);
static_assert(std::is_standard_layout_v<Segment3<double>> && std::is_trivially_copyable_v<Segment3<double>>);

extern template class Segment3<float>;
extern template class Segment3<double>;

typedef Segment3<float> Segment3f;
typedef Segment3<double> Segment3d;

} // namespace Wm4
