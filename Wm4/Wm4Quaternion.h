#pragma once

#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Vector3.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace Wm4 {

// A quaternion w + x i + y j + z k, stored as exactly four Reals in the order
// w, x, y, z. A unit quaternion (cos(a/2), sin(a/2) A) stands for the rotation
// by angle a about the unit axis A, the same rotation that
// Matrix3::FromAxisAngle(A, a) builds.
//
// The default constructor gives the zero quaternion (not the identity).
// == and != compare the stored bits; < orders lexicographically by value.
template <class Real>
class Quaternion {
public:
    constexpr Quaternion() : mTuple{} {}
    constexpr Quaternion(Real w, Real x, Real y, Real z) : mTuple{w, x, y, z} {}
    // Four Reals in the order w, x, y, z.
    explicit Quaternion(const Real* tuple) { std::memcpy(mTuple, tuple, sizeof(mTuple)); }
    explicit Quaternion(const Matrix3<Real>& rotation) { FromRotationMatrix(rotation); }
    Quaternion(const Vector3<Real>& axis, Real angle) { FromAxisAngle(axis, angle); }

    operator const Real*() const { return mTuple; }
    operator Real*() { return mTuple; }
    // Index 0 is w.
    Real operator[](std::ptrdiff_t i) const { return mTuple[i]; }
    Real& operator[](std::ptrdiff_t i) { return mTuple[i]; }
    Real W() const { return mTuple[0]; }
    Real& W() { return mTuple[0]; }
    Real X() const { return mTuple[1]; }
    Real& X() { return mTuple[1]; }
    Real Y() const { return mTuple[2]; }
    Real& Y() { return mTuple[2]; }
    Real Z() const { return mTuple[3]; }
    Real& Z() { return mTuple[3]; }

    bool operator==(const Quaternion& q) const { return std::memcmp(mTuple, q.mTuple, sizeof(mTuple)) == 0; }
    bool operator!=(const Quaternion& q) const { return !(*this == q); }
    bool operator<(const Quaternion& q) const;

    Quaternion operator+(const Quaternion& q) const;
    Quaternion operator-(const Quaternion& q) const;
    // The Hamilton product; (p * q).Rotate(v) == p.Rotate(q.Rotate(v)).
    Quaternion operator*(const Quaternion& q) const;
    Quaternion operator*(Real s) const;
    Quaternion operator/(Real s) const;
    Quaternion operator-() const;
    Quaternion& operator+=(const Quaternion& q) { return *this = *this + q; }
    Quaternion& operator-=(const Quaternion& q) { return *this = *this - q; }
    Quaternion& operator*=(Real s) { return *this = *this * s; }
    Quaternion& operator/=(Real s) { return *this = *this / s; }

    // The rotation matrix must be orthonormal with determinant 1.
    Quaternion& FromRotationMatrix(const Matrix3<Real>& rotation);
    // Expects a unit quaternion.
    void ToRotationMatrix(Matrix3<Real>& rotation) const;
    // The axis must be unit length.
    Quaternion& FromAxisAngle(const Vector3<Real>& axis, Real angle);
    // Angle in [0, 2 pi]; without a rotation (zero vector part) the angle is 0
    // and the axis UNIT_X.
    void ToAxisAngle(Vector3<Real>& axis, Real& angle) const;

    Real Dot(const Quaternion& q) const;
    Real SquaredLength() const { return Dot(*this); }
    Real Length() const { return Math<Real>::Sqrt(SquaredLength()); }
    // As for vectors: returns the former length; shorter than ZERO_TOLERANCE
    // gives the zero quaternion and 0.
    Real Normalize();
    // The multiplicative inverse; ZERO for the zero quaternion.
    Quaternion Inverse() const;
    Quaternion Conjugate() const { return Quaternion(mTuple[0], -mTuple[1], -mTuple[2], -mTuple[3]); }

    // The vector rotated by this unit quaternion: q v q*.
    Vector3<Real> Rotate(const Vector3<Real>& v) const;

    // Sets *this to the spherical interpolation of p (t = 0) and q (t = 1)
    // along the arc between them. Neither sign is flipped: when Dot(p, q) < 0
    // the long way round is taken, so callers that want the short way pass -q.
    // Angles below ZERO_TOLERANCE give p.
    Quaternion& Slerp(Real t, const Quaternion& p, const Quaternion& q);

    static const Quaternion ZERO;
    static const Quaternion IDENTITY;

private:
    Real mTuple[4];
};

template <class Real>
inline Quaternion<Real> operator*(Real s, const Quaternion<Real>& q)
{
    return q * s;
}

static_assert(sizeof(Quaternion<float>) == 4 * sizeof(float));
static_assert(sizeof(Quaternion<double>) == 4 * sizeof(double));
static_assert(std::is_standard_layout_v<Quaternion<float>> && std::is_trivially_copyable_v<Quaternion<float>>);
static_assert(std::is_standard_layout_v<Quaternion<double>> && std::is_trivially_copyable_v<Quaternion<double>>);

extern template class Quaternion<float>;
extern template class Quaternion<double>;

typedef Quaternion<float> Quaternionf;
typedef Quaternion<double> Quaterniond;

} // namespace Wm4
