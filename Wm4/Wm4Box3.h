#pragma once

#include <Wm4/Wm4Vector3.h>

#include <cstring>
#include <type_traits>

namespace Wm4 {

// An oriented box: the points Center + x0 Axis[0] + x1 Axis[1] + x2 Axis[2]
// with |xi| <= Extent[i]. The axes are expected orthonormal; the queries do
// not check it. A zero extent flattens the box along that axis (a point, a
// segment or a rectangle are boxes too); a negative extent stands for an
// empty box, which is what ContOrientedBox returns for no points.
//
// The default constructor zeroes every field (the axes too), like the other
// values of the library; == and != compare the stored bits.
template <class Real>
class Box3 {
public:
    constexpr Box3() : Center(), Axis{}, Extent{} {}
    Box3(const Vector3<Real>& center, const Vector3<Real> axis[3], const Real extent[3])
        : Center(center), Axis{axis[0], axis[1], axis[2]}, Extent{extent[0], extent[1], extent[2]}
    {
    }
    Box3(const Vector3<Real>& center, const Vector3<Real>& axis0, const Vector3<Real>& axis1,
         const Vector3<Real>& axis2, Real extent0, Real extent1, Real extent2)
        : Center(center), Axis{axis0, axis1, axis2}, Extent{extent0, extent1, extent2}
    {
    }

    // The eight corners. Corner i lies on the positive side of Axis[0] when
    // i is 1, 2, 5 or 6, of Axis[1] when i is 2, 3, 6 or 7, and of Axis[2]
    // when i >= 4: 0-3 go round the face at -Extent[2], 4-7 round the face
    // at +Extent[2] in the same order.
    void ComputeVertices(Vector3<Real> vertex[8]) const;

    bool operator==(const Box3& box) const { return std::memcmp(this, &box, sizeof(Box3)) == 0; }
    bool operator!=(const Box3& box) const { return !(*this == box); }

    Vector3<Real> Center;
    Vector3<Real> Axis[3];
    Real Extent[3];
};

static_assert(sizeof(Box3<float>) == 15 * sizeof(float));
static_assert(sizeof(Box3<double>) == 15 * sizeof(double));
static_assert(std::is_standard_layout_v<Box3<float>> && std::is_trivially_copyable_v<Box3<float>>);
static_assert(std::is_standard_layout_v<Box3<double>> && std::is_trivially_copyable_v<Box3<double>>);

extern template class Box3<float>;
extern template class Box3<double>;

typedef Box3<float> Box3f;
typedef Box3<double> Box3d;

} // namespace Wm4
