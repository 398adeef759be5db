#pragma once

#include <Wm4/Wm4Math.h>
#include <Wm4/Wm4Tuple.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace Wm4 {

// A 3-component vector. The object is exactly three contiguous Reals, so that
// arrays of vectors can be written and read as one run of Reals. The default
// constructor zero-initialises.
//
// == and != compare the stored bits (so -0 differs from +0 and a NaN equals
// itself); < orders lexicographically by value, for ordered containers of
// finite vectors.
template <class Real>
class Vector3 {
public:
    constexpr Vector3() : mTuple{} {}
    constexpr Vector3(Real x, Real y, Real z) : mTuple{x, y, z} {}
    explicit Vector3(const Real* tuple) { std::memcpy(mTuple, tuple, sizeof(mTuple)); }

    operator const Real*() const { return mTuple; }
    operator Real*() { return mTuple; }
    // The index is a ptrdiff_t, the index type of the built-in subscript that
    // the pointer conversion offers too: with int, v[someLong] is ambiguous.
    Real operator[](std::ptrdiff_t i) const { return mTuple[i]; }
    Real& operator[](std::ptrdiff_t i) { return mTuple[i]; }
    Real X() const { return mTuple[0]; }
    Real& X() { return mTuple[0]; }
    Real Y() const { return mTuple[1]; }
    Real& Y() { return mTuple[1]; }
    Real Z() const { return mTuple[2]; }
    Real& Z() { return mTuple[2]; }

    bool operator==(const Vector3& v) const { return std::memcmp(mTuple, v.mTuple, sizeof(mTuple)) == 0; }
    bool operator!=(const Vector3& v) const { return !(*this == v); }
    bool operator<(const Vector3& v) const
    {
        return Tuple::Less<3>(mTuple, v.mTuple);
    }

    Vector3 operator+(const Vector3& v) const { return Vector3(mTuple[0] + v.mTuple[0], mTuple[1] + v.mTuple[1], mTuple[2] + v.mTuple[2]); }
    Vector3 operator-(const Vector3& v) const { return Vector3(mTuple[0] - v.mTuple[0], mTuple[1] - v.mTuple[1], mTuple[2] - v.mTuple[2]); }
    Vector3 operator*(Real s) const { return Vector3(s * mTuple[0], s * mTuple[1], s * mTuple[2]); }
    Vector3 operator/(Real s) const { return Vector3(mTuple[0] / s, mTuple[1] / s, mTuple[2] / s); }
    Vector3 operator-() const { return Vector3(-mTuple[0], -mTuple[1], -mTuple[2]); }

    Vector3& operator+=(const Vector3& v) { return *this = *this + v; }
    Vector3& operator-=(const Vector3& v) { return *this = *this - v; }
    Vector3& operator*=(Real s) { return *this = *this * s; }
    Vector3& operator/=(Real s) { return *this = *this / s; }

    Real SquaredLength() const { return Dot(*this); }
    Real Length() const { return Math<Real>::Sqrt(SquaredLength()); }
    Real Dot(const Vector3& v) const { return mTuple[0] * v.mTuple[0] + mTuple[1] * v.mTuple[1] + mTuple[2] * v.mTuple[2]; }

    // Makes the vector unit length and returns its former length. A vector
    // shorter than ZERO_TOLERANCE becomes the zero vector and 0 is returned.
    Real Normalize()
    {
        Real length = Length();
        if (length < Math<Real>::ZERO_TOLERANCE) {
            *this = Vector3();
            return Real(0);
        }
        *this /= length;
        return length;
    }

    Vector3 Cross(const Vector3& v) const
    {
        return Vector3(mTuple[1] * v.mTuple[2] - mTuple[2] * v.mTuple[1],
                       mTuple[2] * v.mTuple[0] - mTuple[0] * v.mTuple[2],
                       mTuple[0] * v.mTuple[1] - mTuple[1] * v.mTuple[0]);
    }

    Vector3 UnitCross(const Vector3& v) const
    {
        Vector3 cross = Cross(v);
        cross.Normalize();
        return cross;
    }

    // Gram-Schmidt: U is normalised, V made orthogonal to U, W to both.
    static void Orthonormalize(Vector3& u, Vector3& v, Vector3& w)
    {
        u.Normalize();
        v -= u * u.Dot(v);
        v.Normalize();
        w -= u * u.Dot(w);
        w -= v * v.Dot(w);
        w.Normalize();
    }

    static void Orthonormalize(Vector3* v) { Orthonormalize(v[0], v[1], v[2]); }

    // Given a unit W, builds U and V so that (U, V, W) is a right-handed
    // orthonormal basis (U x V = W).
    static void GenerateOrthonormalBasis(Vector3& u, Vector3& v, const Vector3& w)
    {
        if (Math<Real>::FAbs(w.mTuple[0]) >= Math<Real>::FAbs(w.mTuple[1])) {
            Real invLength = Math<Real>::InvSqrt(w.mTuple[0] * w.mTuple[0] + w.mTuple[2] * w.mTuple[2]);
            u = Vector3(-w.mTuple[2] * invLength, Real(0), w.mTuple[0] * invLength);
        } else {
            Real invLength = Math<Real>::InvSqrt(w.mTuple[1] * w.mTuple[1] + w.mTuple[2] * w.mTuple[2]);
            u = Vector3(Real(0), w.mTuple[2] * invLength, -w.mTuple[1] * invLength);
        }
        v = w.Cross(u);
    }

    static const Vector3 ZERO;
    static const Vector3 UNIT_X;
    static const Vector3 UNIT_Y;
    static const Vector3 UNIT_Z;
    static const Vector3 ONE;

private:
    Real mTuple[3];
};

template <class Real>
inline Vector3<Real> operator*(Real s, const Vector3<Real>& v)
{
    return v * s;
}

static_assert(sizeof(Vector3<float>) == 3 * sizeof(float));
static_assert(sizeof(Vector3<double>) == 3 * sizeof(double));
static_assert(std::is_standard_layout_v<Vector3<float>> && std::is_trivially_copyable_v<Vector3<float>>);
static_assert(std::is_standard_layout_v<Vector3<double>> && std::is_trivially_copyable_v<Vector3<double>>);

extern template class Vector3<float>;
extern template class Vector3<double>;

typedef Vector3<float> Vector3f;
typedef Vector3<double> Vector3d;

} // namespace Wm4
