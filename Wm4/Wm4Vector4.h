#pragma once

#include <Wm4/Wm4Math.h>
#include <Wm4/Wm4Tuple.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace Wm4 {

// A 4-component vector (homogeneous points, plane coefficients): exactly four
// contiguous Reals. The default constructor zero-initialises. Comparisons
// behave as in Vector3: == and != on the stored bits, < lexicographic by value.
template <class Real>
class Vector4 {
public:
    constexpr Vector4() : mTuple{} {}
    constexpr Vector4(Real x, Real y, Real z, Real w) : mTuple{x, y, z, w} {}
    explicit Vector4(const Real* tuple) { std::memcpy(mTuple, tuple, sizeof(mTuple)); }

    operator const Real*() const { return mTuple; }
    operator Real*() { return mTuple; }
    Real operator[](std::ptrdiff_t i) const { return mTuple[i]; }
    Real& operator[](std::ptrdiff_t i) { return mTuple[i]; }
    Real X() const { return mTuple[0]; }
    Real& X() { return mTuple[0]; }
    Real Y() const { return mTuple[1]; }
    Real& Y() { return mTuple[1]; }
    Real Z() const { return mTuple[2]; }
    Real& Z() { return mTuple[2]; }
    Real W() const { return mTuple[3]; }
    Real& W() { return mTuple[3]; }

    bool operator==(const Vector4& v) const { return std::memcmp(mTuple, v.mTuple, sizeof(mTuple)) == 0; }
    bool operator!=(const Vector4& v) const { return !(*this == v); }
    bool operator<(const Vector4& v) const
    {
        return Tuple::Less<4>(mTuple, v.mTuple);
    }

    Vector4 operator+(const Vector4& v) const
    {
        return Vector4(mTuple[0] + v.mTuple[0], mTuple[1] + v.mTuple[1], mTuple[2] + v.mTuple[2], mTuple[3] + v.mTuple[3]);
    }
    Vector4 operator-(const Vector4& v) const
    {
        return Vector4(mTuple[0] - v.mTuple[0], mTuple[1] - v.mTuple[1], mTuple[2] - v.mTuple[2], mTuple[3] - v.mTuple[3]);
    }
    Vector4 operator*(Real s) const { return Vector4(s * mTuple[0], s * mTuple[1], s * mTuple[2], s * mTuple[3]); }
    Vector4 operator/(Real s) const { return Vector4(mTuple[0] / s, mTuple[1] / s, mTuple[2] / s, mTuple[3] / s); }
    Vector4 operator-() const { return Vector4(-mTuple[0], -mTuple[1], -mTuple[2], -mTuple[3]); }

    Vector4& operator+=(const Vector4& v) { return *this = *this + v; }
    Vector4& operator-=(const Vector4& v) { return *this = *this - v; }
    Vector4& operator*=(Real s) { return *this = *this * s; }
    Vector4& operator/=(Real s) { return *this = *this / s; }

    Real SquaredLength() const { return Dot(*this); }
    Real Length() const { return Math<Real>::Sqrt(SquaredLength()); }
    Real Dot(const Vector4& v) const
    {
        return mTuple[0] * v.mTuple[0] + mTuple[1] * v.mTuple[1] + mTuple[2] * v.mTuple[2] + mTuple[3] * v.mTuple[3];
    }

    // Makes the vector unit length and returns its former length. A vector
    // shorter than ZERO_TOLERANCE becomes the zero vector and 0 is returned.
    Real Normalize()
    {
        Real length = Length();
        if (length < Math<Real>::ZERO_TOLERANCE) {
            *this = Vector4();
            return Real(0);
        }
        *this /= length;
        return length;
    }

    static const Vector4 ZERO;
    static const Vector4 UNIT_X;
    static const Vector4 UNIT_Y;
    static const Vector4 UNIT_Z;
    static const Vector4 UNIT_W;
    static const Vector4 ONE;

private:
    Real mTuple[4];
};

template <class Real>
inline Vector4<Real> operator*(Real s, const Vector4<Real>& v)
{
    return v * s;
}

static_assert(sizeof(Vector4<float>) == 4 * sizeof(float));
static_assert(sizeof(Vector4<double>) == 4 * sizeof(double));
static_assert(std::is_standard_layout_v<Vector4<float>> && std::is_trivially_copyable_v<Vector4<float>>);
static_assert(std::is_standard_layout_v<Vector4<double>> && std::is_trivially_copyable_v<Vector4<double>>);

extern template class Vector4<float>;
extern template class Vector4<double>;

typedef Vector4<float> Vector4f;
typedef Vector4<double> Vector4d;

} // namespace Wm4
