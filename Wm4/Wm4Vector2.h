#pragma once

#include <Wm4/Wm4Math.h>
#include <Wm4/Wm4Tuple.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace Wm4 {

// A 2-component vector: exactly two contiguous Reals. The default constructor
// zero-initialises. Comparisons behave as in Vector3: == and != on the stored
// bits, < lexicographic by value.
template <class Real>
class Vector2 {
public:
    constexpr Vector2() : mTuple{} {}
    constexpr Vector2(Real x, Real y) : mTuple{x, y} {}
    explicit Vector2(const Real* tuple) { std::memcpy(mTuple, tuple, sizeof(mTuple)); }

    operator const Real*() const { return mTuple; }
    operator Real*() { return mTuple; }
    Real operator[](std::ptrdiff_t i) const { return mTuple[i]; }
    Real& operator[](std::ptrdiff_t i) { return mTuple[i]; }
    Real X() const { return mTuple[0]; }
    Real& X() { return mTuple[0]; }
    Real Y() const { return mTuple[1]; }
    Real& Y() { return mTuple[1]; }

    bool operator==(const Vector2& v) const { return std::memcmp(mTuple, v.mTuple, sizeof(mTuple)) == 0; }
    bool operator!=(const Vector2& v) const { return !(*this == v); }
    bool operator<(const Vector2& v) const
    {
        return Tuple::Less<2>(mTuple, v.mTuple);
    }

    Vector2 operator+(const Vector2& v) const { return Vector2(mTuple[0] + v.mTuple[0], mTuple[1] + v.mTuple[1]); }
    Vector2 operator-(const Vector2& v) const { return Vector2(mTuple[0] - v.mTuple[0], mTuple[1] - v.mTuple[1]); }
    Vector2 operator*(Real s) const { return Vector2(s * mTuple[0], s * mTuple[1]); }
    Vector2 operator/(Real s) const { return Vector2(mTuple[0] / s, mTuple[1] / s); }
    Vector2 operator-() const { return Vector2(-mTuple[0], -mTuple[1]); }

    Vector2& operator+=(const Vector2& v) { return *this = *this + v; }
    Vector2& operator-=(const Vector2& v) { return *this = *this - v; }
    Vector2& operator*=(Real s) { return *this = *this * s; }
    Vector2& operator/=(Real s) { return *this = *this / s; }

    Real SquaredLength() const { return Dot(*this); }
    Real Length() const { return Math<Real>::Sqrt(SquaredLength()); }
    Real Dot(const Vector2& v) const { return mTuple[0] * v.mTuple[0] + mTuple[1] * v.mTuple[1]; }

    // Makes the vector unit length and returns its former length. A vector
    // shorter than ZERO_TOLERANCE becomes the zero vector and 0 is returned.
    Real Normalize()
    {
        Real length = Length();
        if (length < Math<Real>::ZERO_TOLERANCE) {
            *this = Vector2();
            return Real(0);
        }
        *this /= length;
        return length;
    }

    // (y, -x): the vector turned a quarter turn clockwise.
    Vector2 Perp() const { return Vector2(mTuple[1], -mTuple[0]); }
    // Dot(v.Perp()), the z component of the 3D cross product of the two vectors.
    Real DotPerp(const Vector2& v) const { return mTuple[0] * v.mTuple[1] - mTuple[1] * v.mTuple[0]; }

    static const Vector2 ZERO;
    static const Vector2 UNIT_X;
    static const Vector2 UNIT_Y;
    static const Vector2 ONE;

private:
    Real mTuple[2];
};

template <class Real>
inline Vector2<Real> operator*(Real s, const Vector2<Real>& v)
{
    return v * s;
}

static_assert(sizeof(Vector2<float>) == 2 * sizeof(float));
static_assert(sizeof(Vector2<double>) == 2 * sizeof(double));
static_assert(std::is_standard_layout_v<Vector2<float>> && std::is_trivially_copyable_v<Vector2<float>>);
static_assert(std::is_standard_layout_v<Vector2<double>> && std::is_trivially_copyable_v<Vector2<double>>);

extern template class Vector2<float>;
extern template class Vector2<double>;

typedef Vector2<float> Vector2f;
typedef Vector2<double> Vector2d;

} // namespace Wm4
