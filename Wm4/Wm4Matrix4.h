#pragma once

#include <Wm4/Wm4Vector4.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace Wm4 {

// A 4x4 matrix of sixteen Reals in row-major order, entry (row, col) at
// [4 * row + col]. Conventions as in Matrix3: column vectors (M * X), the
// default constructor gives the zero matrix, == and != compare the stored bits.
template <class Real>
class Matrix4 {
public:
    constexpr Matrix4() : mEntry{} {}
    // The zero matrix when zero is true, otherwise the identity.
    explicit Matrix4(bool zero);
    // Entries in row order.
    constexpr Matrix4(Real m00, Real m01, Real m02, Real m03, Real m10, Real m11, Real m12, Real m13,
                      Real m20, Real m21, Real m22, Real m23, Real m30, Real m31, Real m32, Real m33)
        : mEntry{m00, m01, m02, m03, m10, m11, m12, m13, m20, m21, m22, m23, m30, m31, m32, m33}
    {
    }
    // Sixteen entries, read in row order when rowMajor is true, column order otherwise.
    Matrix4(const Real entry[16], bool rowMajor);
    // The vectors become the columns when columns is true, the rows otherwise.
    Matrix4(const Vector4<Real>& u, const Vector4<Real>& v, const Vector4<Real>& w, const Vector4<Real>& t, bool columns);
    // The diagonal matrix diag(d0, d1, d2, d3).
    Matrix4(Real d0, Real d1, Real d2, Real d3);

    void MakeZero();
    void MakeIdentity();
    void MakeDiagonal(Real d0, Real d1, Real d2, Real d3);

    operator const Real*() const { return mEntry; }
    operator Real*() { return mEntry; }
    const Real* operator[](std::ptrdiff_t row) const { return &mEntry[4 * row]; }
    Real* operator[](std::ptrdiff_t row) { return &mEntry[4 * row]; }
    Real operator()(int row, int col) const { return mEntry[4 * row + col]; }
    Real& operator()(int row, int col) { return mEntry[4 * row + col]; }

    void SetRow(int row, const Vector4<Real>& v);
    Vector4<Real> GetRow(int row) const;
    void SetColumn(int col, const Vector4<Real>& v);
    Vector4<Real> GetColumn(int col) const;
    // Writes the sixteen entries in column order.
    void GetColumnMajor(Real* columnMajor) const;

    bool operator==(const Matrix4& m) const { return std::memcmp(mEntry, m.mEntry, sizeof(mEntry)) == 0; }
    bool operator!=(const Matrix4& m) const { return !(*this == m); }
    bool operator<(const Matrix4& m) const;

    Matrix4 operator+(const Matrix4& m) const;
    Matrix4 operator-(const Matrix4& m) const;
    Matrix4 operator*(const Matrix4& m) const;
    Matrix4 operator*(Real s) const;
    Matrix4 operator/(Real s) const;
    Matrix4 operator-() const;
    Matrix4& operator+=(const Matrix4& m) { return *this = *this + m; }
    Matrix4& operator-=(const Matrix4& m) { return *this = *this - m; }
    Matrix4& operator*=(Real s) { return *this = *this * s; }
    Matrix4& operator/=(Real s) { return *this = *this / s; }

    Vector4<Real> operator*(const Vector4<Real>& v) const
    {
        const Real* e = mEntry;
        return Vector4<Real>(e[0] * v[0] + e[1] * v[1] + e[2] * v[2] + e[3] * v[3],
                             e[4] * v[0] + e[5] * v[1] + e[6] * v[2] + e[7] * v[3],
                             e[8] * v[0] + e[9] * v[1] + e[10] * v[2] + e[11] * v[3],
                             e[12] * v[0] + e[13] * v[1] + e[14] * v[2] + e[15] * v[3]);
    }

    Matrix4 Transpose() const;
    // Transpose(*this) * m.
    Matrix4 TransposeTimes(const Matrix4& m) const;
    // *this * Transpose(m).
    Matrix4 TimesTranspose(const Matrix4& m) const;
    // The cofactor inverse; ZERO when the determinant is exactly zero.
    Matrix4 Inverse() const;
    // Adjoint() * M = Determinant() * I.
    Matrix4 Adjoint() const;
    Real Determinant() const;
    // Dot(u, M * v).
    Real QDotProduct(const Vector4<Real>& u, const Vector4<Real>& v) const;

    static const Matrix4 ZERO;
    static const Matrix4 IDENTITY;

private:
    Real mEntry[16];
};

template <class Real>
inline Matrix4<Real> operator*(Real s, const Matrix4<Real>& m)
{
    return m * s;
}

// The row vector v times m.
template <class Real>
inline Vector4<Real> operator*(const Vector4<Real>& v, const Matrix4<Real>& m)
{
    return Vector4<Real>(v[0] * m(0, 0) + v[1] * m(1, 0) + v[2] * m(2, 0) + v[3] * m(3, 0),
                         v[0] * m(0, 1) + v[1] * m(1, 1) + v[2] * m(2, 1) + v[3] * m(3, 1),
                         v[0] * m(0, 2) + v[1] * m(1, 2) + v[2] * m(2, 2) + v[3] * m(3, 2),
                         v[0] * m(0, 3) + v[1] * m(1, 3) + v[2] * m(2, 3) + v[3] * m(3, 3));
}

static_assert(sizeof(Matrix4<float>) == 16 * sizeof(float));
static_assert(sizeof(Matrix4<double>) == 16 * sizeof(double));
static_assert(std::is_standard_layout_v<Matrix4<float>> && std::is_trivially_copyable_v<Matrix4<float>>);
static_assert(std::is_standard_layout_v<Matrix4<double>> && std::is_trivially_copyable_v<Matrix4<double>>);

extern template class Matrix4<float>;
extern template class Matrix4<double>;

typedef Matrix4<float> Matrix4f;
typedef Matrix4<double> Matrix4d;

} // namespace Wm4
