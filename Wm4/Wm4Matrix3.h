#pragma once

#include <Wm4/Wm4Vector3.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace Wm4 {

// A 3x3 matrix of nine Reals in row-major order, entry (row, col) at
// [3 * row + col]. Matrices act on column vectors, M * X; X * M is the row
// vector X times M, that is Transpose(M) * X.
//
// The default constructor gives the zero matrix. == and != compare the stored
// bits (-0 differs from +0); < orders lexicographically by value.
template <class Real>
class Matrix3 {
public:
    constexpr Matrix3() : mEntry{} {}
    // The zero matrix when zero is true, otherwise the identity.
    explicit Matrix3(bool zero);
    // Entries in row order.
    constexpr Matrix3(Real m00, Real m01, Real m02, Real m10, Real m11, Real m12, Real m20, Real m21, Real m22)
        : mEntry{m00, m01, m02, m10, m11, m12, m20, m21, m22}
    {
    }
    // Nine entries, read in row order when rowMajor is true, column order otherwise.
    Matrix3(const Real entry[9], bool rowMajor);
    // The vectors become the columns when columns is true, the rows otherwise.
    Matrix3(const Vector3<Real>& u, const Vector3<Real>& v, const Vector3<Real>& w, bool columns);
    // The diagonal matrix diag(d0, d1, d2).
    Matrix3(Real d0, Real d1, Real d2);
    // Rotation by angle (radians) about the unit axis, counter-clockwise when
    // the axis points at the viewer.
    Matrix3(const Vector3<Real>& axis, Real angle);

    void MakeZero();
    void MakeIdentity();
    void MakeDiagonal(Real d0, Real d1, Real d2);
    void FromAxisAngle(const Vector3<Real>& axis, Real angle);
    // For the identity (angle 0) the axis is UNIT_X.
    void ToAxisAngle(Vector3<Real>& axis, Real& angle) const;

    operator const Real*() const { return mEntry; }
    operator Real*() { return mEntry; }
    const Real* operator[](std::ptrdiff_t row) const { return &mEntry[3 * row]; }
    Real* operator[](std::ptrdiff_t row) { return &mEntry[3 * row]; }
    Real operator()(int row, int col) const { return mEntry[3 * row + col]; }
    Real& operator()(int row, int col) { return mEntry[3 * row + col]; }

    void SetRow(int row, const Vector3<Real>& v);
    Vector3<Real> GetRow(int row) const;
    void SetColumn(int col, const Vector3<Real>& v);
    Vector3<Real> GetColumn(int col) const;
    // Writes the nine entries in column order.
    void GetColumnMajor(Real* columnMajor) const;

    bool operator==(const Matrix3& m) const { return std::memcmp(mEntry, m.mEntry, sizeof(mEntry)) == 0; }
    bool operator!=(const Matrix3& m) const { return !(*this == m); }
    bool operator<(const Matrix3& m) const;

    Matrix3 operator+(const Matrix3& m) const;
    Matrix3 operator-(const Matrix3& m) const;
    // Inline: the scene graph's update pass composes one product per object.
    Matrix3 operator*(const Matrix3& m) const
    {
        Matrix3 product;
        for (int row = 0; row < 3; ++row)
            for (int col = 0; col < 3; ++col)
                product.mEntry[3 * row + col] = mEntry[3 * row] * m.mEntry[col] + mEntry[3 * row + 1] * m.mEntry[3 + col]
                    + mEntry[3 * row + 2] * m.mEntry[6 + col];
        return product;
    }
    Matrix3 operator*(Real s) const;
    Matrix3 operator/(Real s) const;
    Matrix3 operator-() const;
    Matrix3& operator+=(const Matrix3& m) { return *this = *this + m; }
    Matrix3& operator-=(const Matrix3& m) { return *this = *this - m; }
    Matrix3& operator*=(Real s) { return *this = *this * s; }
    Matrix3& operator/=(Real s) { return *this = *this / s; }

    Vector3<Real> operator*(const Vector3<Real>& v) const
    {
        return Vector3<Real>(mEntry[0] * v[0] + mEntry[1] * v[1] + mEntry[2] * v[2],
                             mEntry[3] * v[0] + mEntry[4] * v[1] + mEntry[5] * v[2],
                             mEntry[6] * v[0] + mEntry[7] * v[1] + mEntry[8] * v[2]);
    }

    Matrix3 Transpose() const;
    // Transpose(*this) * m.
    Matrix3 TransposeTimes(const Matrix3& m) const;
    // *this * Transpose(m).
    Matrix3 TimesTranspose(const Matrix3& m) const;
    // The cofactor inverse. Only an exactly zero determinant is refused: the
    // result is then ZERO. Callers that need a tolerance test the determinant.
    Matrix3 Inverse() const;
    // The transposed cofactor matrix: Adjoint() * M = Determinant() * I.
    Matrix3 Adjoint() const;
    Real Determinant() const;
    // Dot(u, M * v).
    Real QDotProduct(const Vector3<Real>& u, const Vector3<Real>& v) const;

    // Gram-Schmidt on the columns, for rotation matrices that drifted.
    void Orthonormalize();

    static const Matrix3 ZERO;
    static const Matrix3 IDENTITY;

private:
    Real mEntry[9];
};

template <class Real>
inline Matrix3<Real> operator*(Real s, const Matrix3<Real>& m)
{
    return m * s;
}

// The row vector v times m.
template <class Real>
inline Vector3<Real> operator*(const Vector3<Real>& v, const Matrix3<Real>& m)
{
    return Vector3<Real>(v[0] * m(0, 0) + v[1] * m(1, 0) + v[2] * m(2, 0),
                         v[0] * m(0, 1) + v[1] * m(1, 1) + v[2] * m(2, 1),
                         v[0] * m(0, 2) + v[1] * m(1, 2) + v[2] * m(2, 2));
}

static_assert(sizeof(Matrix3<float>) == 9 * sizeof(float));
static_assert(sizeof(Matrix3<double>) == 9 * sizeof(double));
static_assert(std::is_standard_layout_v<Matrix3<float>> && std::is_trivially_copyable_v<Matrix3<float>>);
static_assert(std::is_standard_layout_v<Matrix3<double>> && std::is_trivially_copyable_v<Matrix3<double>>);

extern template class Matrix3<float>;
extern template class Matrix3<double>;

typedef Matrix3<float> Matrix3f;
typedef Matrix3<double> Matrix3d;

} // namespace Wm4
