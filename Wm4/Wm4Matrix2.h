#pragma once

#include <Wm4/Wm4Vector2.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace Wm4 {

// A 2x2 matrix of four Reals in row-major order, entry (row, col) at
// [2 * row + col]. Conventions as in Matrix3: column vectors (M * X), the
// default constructor gives the zero matrix, == and != compare the stored bits.
template <class Real>
class Matrix2 {
public:
    constexpr Matrix2() : mEntry{} {}
    // The zero matrix when zero is true, otherwise the identity.
    explicit Matrix2(bool zero);
    // Entries in row order.
    constexpr Matrix2(Real m00, Real m01, Real m10, Real m11) : mEntry{m00, m01, m10, m11} {}
    // Four entries, read in row order when rowMajor is true, column order otherwise.
    Matrix2(const Real entry[4], bool rowMajor);
    // The vectors become the columns when columns is true, the rows otherwise.
    Matrix2(const Vector2<Real>& u, const Vector2<Real>& v, bool columns);
    // The diagonal matrix diag(d0, d1).
    Matrix2(Real d0, Real d1);

    void MakeZero();
    void MakeIdentity();
    void MakeDiagonal(Real d0, Real d1);
    // The rotation by angle (radians), counter-clockwise.
    void FromAngle(Real angle);
    // The angle of a rotation matrix, in [-pi, pi].
    Real ToAngle() const;

    operator const Real*() const { return mEntry; }
    operator Real*() { return mEntry; }
    const Real* operator[](std::ptrdiff_t row) const { return &mEntry[2 * row]; }
    Real* operator[](std::ptrdiff_t row) { return &mEntry[2 * row]; }
    Real operator()(int row, int col) const { return mEntry[2 * row + col]; }
    Real& operator()(int row, int col) { return mEntry[2 * row + col]; }

    void SetRow(int row, const Vector2<Real>& v);
    Vector2<Real> GetRow(int row) const;
    void SetColumn(int col, const Vector2<Real>& v);
    Vector2<Real> GetColumn(int col) const;

    bool operator==(const Matrix2& m) const { return std::memcmp(mEntry, m.mEntry, sizeof(mEntry)) == 0; }
    bool operator!=(const Matrix2& m) const { return !(*this == m); }
    bool operator<(const Matrix2& m) const;

    Matrix2 operator+(const Matrix2& m) const;
    Matrix2 operator-(const Matrix2& m) const;
    Matrix2 operator*(const Matrix2& m) const;
    Matrix2 operator*(Real s) const;
    Matrix2 operator/(Real s) const;
    Matrix2 operator-() const;
    Matrix2& operator+=(const Matrix2& m) { return *this = *this + m; }
    Matrix2& operator-=(const Matrix2& m) { return *this = *this - m; }
    Matrix2& operator*=(Real s) { return *this = *this * s; }
    Matrix2& operator/=(Real s) { return *this = *this / s; }

    Vector2<Real> operator*(const Vector2<Real>& v) const
    {
        return Vector2<Real>(mEntry[0] * v[0] + mEntry[1] * v[1], mEntry[2] * v[0] + mEntry[3] * v[1]);
    }

    Matrix2 Transpose() const { return Matrix2(mEntry[0], mEntry[2], mEntry[1], mEntry[3]); }
    // Transpose(*this) * m.
    Matrix2 TransposeTimes(const Matrix2& m) const { return Transpose() * m; }
    // *this * Transpose(m).
    Matrix2 TimesTranspose(const Matrix2& m) const { return *this * m.Transpose(); }
    // The cofactor inverse; ZERO when the determinant is exactly zero.
    Matrix2 Inverse() const;
    // Adjoint() * M = Determinant() * I.
    Matrix2 Adjoint() const { return Matrix2(mEntry[3], -mEntry[1], -mEntry[2], mEntry[0]); }
    Real Determinant() const { return mEntry[0] * mEntry[3] - mEntry[1] * mEntry[2]; }
    // Dot(u, M * v).
    Real QDotProduct(const Vector2<Real>& u, const Vector2<Real>& v) const { return u.Dot(*this * v); }

    // Gram-Schmidt on the columns.
    void Orthonormalize();

    static const Matrix2 ZERO;
    static const Matrix2 IDENTITY;

private:
    Real mEntry[4];
};

template <class Real>
inline Matrix2<Real> operator*(Real s, const Matrix2<Real>& m)
{
    return m * s;
}

// The row vector v times m.
template <class Real>
inline Vector2<Real> operator*(const Vector2<Real>& v, const Matrix2<Real>& m)
{
    return Vector2<Real>(v[0] * m(0, 0) + v[1] * m(1, 0), v[0] * m(0, 1) + v[1] * m(1, 1));
}

static_assert(sizeof(Matrix2<float>) == 4 * sizeof(float));
static_assert(sizeof(Matrix2<double>) == 4 * sizeof(double));
static_assert(std::is_standard_layout_v<Matrix2<float>> && std::is_trivially_copyable_v<Matrix2<float>>);
static_assert(std::is_standard_layout_v<Matrix2<double>> && std::is_trivially_copyable_v<Matrix2<double>>);

extern template class Matrix2<float>;
extern template class Matrix2<double>;

typedef Matrix2<float> Matrix2f;
typedef Matrix2<double> Matrix2d;

} // namespace Wm4
