#pragma once

#include <Wm4/Wm4Vector3.h>

#include <cstring>
#include <type_traits>

namespace Wm4 {

// The ray Origin + t Direction for t >= 0. The queries do not need a unit
// direction; a zero direction makes the ray the single point Origin.
//
// The default constructor zeroes both; == and != compare the stored bits.
template <class Real>
class Ray3 {
public:
    constexpr Ray3() : Origin(), Direction() {}
    constexpr Ray3(const Vector3<Real>& origin, const Vector3<Real>& direction)
        : Origin(origin), Direction(direction)
    {
    }

    bool operator==(const Ray3& ray) const { return std::memcmp(this, &ray, sizeof(Ray3)) == 0; }
    bool operator!=(const Ray3& ray) const { return !(*this == ray); }

    Vector3<Real> Origin;
    Vector3<Real> Direction;
};

static_assert(sizeof(Ray3<float>) == 6 * sizeof(float));
static_assert(sizeof(Ray3<double>) == 6 * sizeof(double));
static_assert(std::is_standard_layout_v<Ray3<float>> && std::is_trivially_copyable_v<Ray3<float>>);
static_assert(std::is_standard_layout_v<Ray3<double>> && std::is_trivially_copyable_v<Ray3<double>>);

extern template class Ray3<float>;
extern template class Ray3<double>;

typedef Ray3<float> Ray3f;
typedef Ray3<double> Ray3d;

} // namespace Wm4
