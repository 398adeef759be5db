#pragma once

#include <Wm4/Wm4Vector3.h>

#include <cstring>
#include <type_traits>

namespace Wm4 {

// The line Origin + t Direction for every real t. The queries do not need a
// unit direction; a zero direction makes the line the single point Origin.
//
// The default constructor zeroes both; == and != compare the stored bits.
template <class Real>
class Line3 {
public:
    constexpr Line3() : Origin(), Direction() {}
    constexpr Line3(const Vector3<Real>& origin, const Vector3<Real>& direction)
        : Origin(origin), Direction(direction)
    {
    }

    bool operator==(const Line3& line) const { return std::memcmp(this, &line, sizeof(Line3)) == 0; }
    bool operator!=(const Line3& line) const { return !(*this == line); }

    Vector3<Real> Origin;
    Vector3<Real> Direction;
};

static_assert(sizeof(Line3<float>) == 6 * sizeof(float));
static_assert(sizeof(Line3<double>) == 6 * sizeof(double));
static_assert(std::is_standard_layout_v<Line3<float>> && std::is_trivially_copyable_v<Line3<float>>);
static_assert(std::is_standard_layout_v<Line3<double>> && std::is_trivially_copyable_v<Line3<double>>);

extern template class Line3<float>;
extern template class Line3<double>;

typedef Line3<float> Line3f;
typedef Line3<double> Line3d;

} // namespace Wm4
