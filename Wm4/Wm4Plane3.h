#pragma once

#include <Wm4/Wm4Vector3.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace Wm4 {

// The plane Dot(Normal, X) = Constant. Stored as the normal (three Reals)
// followed by the constant, four Reals and nothing else. The constructors do
// not normalise a given normal; with a unit normal DistanceTo is the
// Euclidean signed distance.
template <class Real>
class Plane3 {
public:
    // Zero normal and constant: not a usable plane until assigned.
    constexpr Plane3() : Normal(), Constant(Real(0)) {}
    constexpr Plane3(const Vector3<Real>& normal, Real constant) : Normal(normal), Constant(constant) {}
    // The plane with the given normal through the point.
    Plane3(const Vector3<Real>& normal, const Vector3<Real>& point) : Normal(normal), Constant(normal.Dot(point)) {}
    // The plane through three points, its unit normal Cross(p1 - p0, p2 - p0):
    // counter-clockwise points seen from the positive side. Collinear points
    // give a zero normal.
    Plane3(const Vector3<Real>& p0, const Vector3<Real>& p1, const Vector3<Real>& p2)
        : Normal((p1 - p0).UnitCross(p2 - p0)), Constant(Normal.Dot(p0))
    {
    }

    // Dot(Normal, point) - Constant: positive on the side the normal points to.
    Real DistanceTo(const Vector3<Real>& point) const { return Normal.Dot(point) - Constant; }

    // +1 on the positive side, -1 on the negative side, 0 exactly on the plane.
    int WhichSide(const Vector3<Real>& point) const
    {
        Real distance = DistanceTo(point);
        if (distance < Real(0)) {
            return -1;
        }
        if (distance > Real(0)) {
            return +1;
        }
        return 0;
    }

    // Stored bits, as for the vectors.
    bool operator==(const Plane3& plane) const { return std::memcmp(this, &plane, sizeof(Plane3)) == 0; }
    bool operator!=(const Plane3& plane) const { return !(*this == plane); }

    Vector3<Real> Normal;
    Real Constant;
};

static_assert(sizeof(Plane3<float>) == 4 * sizeof(float));
static_assert(sizeof(Plane3<double>) == 4 * sizeof(double));
static_assert(std::is_standard_layout_v<Plane3<float>> && std::is_trivially_copyable_v<Plane3<float>>);
static_assert(std::is_standard_layout_v<Plane3<double>> && std::is_trivially_copyable_v<Plane3<double>>);
static_assert(offsetof(Plane3<float>, Constant) == 3 * sizeof(float));
static_assert(offsetof(Plane3<double>, Constant) == 3 * sizeof(double));

extern template class Plane3<float>;
extern template class Plane3<double>;

typedef Plane3<float> Plane3f;
typedef Plane3<double> Plane3d;

} // namespace Wm4
