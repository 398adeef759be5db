#include <Wm4/Wm4Matrix3.h>

#include <Wm4/Wm4Tuple.h>

namespace Wm4 {

template <class Real>
Matrix3<Real>::Matrix3(bool zero)
{
    if (zero) {
        MakeZero();
    } else {
        MakeIdentity();
    }
}

template <class Real>
Matrix3<Real>::Matrix3(const Real entry[9], bool rowMajor)
{
    std::memcpy(mEntry, entry, sizeof(mEntry));
    if (!rowMajor) {
        *this = Transpose();
    }
}

template <class Real>
Matrix3<Real>::Matrix3(const Vector3<Real>& u, const Vector3<Real>& v, const Vector3<Real>& w, bool columns)
{
    SetRow(0, u);
    SetRow(1, v);
    SetRow(2, w);
    if (columns) {
        *this = Transpose();
    }
}

template <class Real>
Matrix3<Real>::Matrix3(Real d0, Real d1, Real d2)
{
    MakeDiagonal(d0, d1, d2);
}

template <class Real>
Matrix3<Real>::Matrix3(const Vector3<Real>& axis, Real angle)
{
    FromAxisAngle(axis, angle);
}

template <class Real>
void Matrix3<Real>::MakeZero()
{
    *this = Matrix3();
}

template <class Real>
void Matrix3<Real>::MakeIdentity()
{
    MakeDiagonal(Real(1), Real(1), Real(1));
}

template <class Real>
void Matrix3<Real>::MakeDiagonal(Real d0, Real d1, Real d2)
{
    *this = Matrix3(d0, Real(0), Real(0), Real(0), d1, Real(0), Real(0), Real(0), d2);
}

template <class Real>
void Matrix3<Real>::FromAxisAngle(const Vector3<Real>& axis, Real angle)
{
    // R = cos I + (1 - cos) A A^T + sin [A]x, where [A]x v = A x v.
    Real cs = Math<Real>::Cos(angle);
    Real sn = Math<Real>::Sin(angle);
    Real omc = Real(1) - cs;
    Real x = axis[0], y = axis[1], z = axis[2];
    *this = Matrix3(x * x * omc + cs, x * y * omc - z * sn, x * z * omc + y * sn,
                    x * y * omc + z * sn, y * y * omc + cs, y * z * omc - x * sn,
                    x * z * omc - y * sn, y * z * omc + x * sn, z * z * omc + cs);
}

template <class Real>
void Matrix3<Real>::ToAxisAngle(Vector3<Real>& axis, Real& angle) const
{
    const Matrix3& m = *this;
    // The trace is 1 + 2 cos, and the antisymmetric part of R is sin [A]x,
    // so twoSinAxis is 2 sin A. The angle comes from both: acos of the trace
    // alone loses half the digits near 0 and a half turn.
    Real cs = Real(0.5) * (m(0, 0) + m(1, 1) + m(2, 2) - Real(1));
    Vector3<Real> twoSinAxis(m(2, 1) - m(1, 2), m(0, 2) - m(2, 0), m(1, 0) - m(0, 1));
    angle = Math<Real>::ATan2(Real(0.5) * twoSinAxis.Length(), cs);

    if (angle <= Real(0)) {
        axis = Vector3<Real>::UNIT_X;
        return;
    }
    if (angle < Math<Real>::HALF_PI) {
        axis = twoSinAxis;
        if (axis.Normalize() == Real(0)) {
            axis = Vector3<Real>::UNIT_X;
        }
        return;
    }

    // Towards a half turn sin vanishes, so the axis comes from the symmetric
    // part cos I + (1 - cos) A A^T instead, starting at its largest diagonal
    // entry, and the antisymmetric part only picks the sign.
    Real omc = Real(1) - cs;
    int i = 0;
    if (m(1, 1) > m(i, i)) {
        i = 1;
    }
    if (m(2, 2) > m(i, i)) {
        i = 2;
    }
    int j = (i + 1) % 3;
    int k = (j + 1) % 3;
    Real ai = (m(i, i) - cs) / omc;
    ai = Math<Real>::Sqrt(ai > Real(0) ? ai : Real(0));
    Real scale = Real(0.5) / (omc * ai);
    axis[i] = ai;
    axis[j] = (m(i, j) + m(j, i)) * scale;
    axis[k] = (m(i, k) + m(k, i)) * scale;
    if (axis.Dot(twoSinAxis) < Real(0)) {
        axis = -axis;
    }
    axis.Normalize();
}

template <class Real>
void Matrix3<Real>::SetRow(int row, const Vector3<Real>& v)
{
    for (int col = 0; col < 3; ++col) {
        mEntry[3 * row + col] = v[col];
    }
}

template <class Real>
Vector3<Real> Matrix3<Real>::GetRow(int row) const
{
    return Vector3<Real>(mEntry[3 * row], mEntry[3 * row + 1], mEntry[3 * row + 2]);
}

template <class Real>
void Matrix3<Real>::SetColumn(int col, const Vector3<Real>& v)
{
    for (int row = 0; row < 3; ++row) {
        mEntry[3 * row + col] = v[row];
    }
}

template <class Real>
Vector3<Real> Matrix3<Real>::GetColumn(int col) const
{
    return Vector3<Real>(mEntry[col], mEntry[3 + col], mEntry[6 + col]);
}

template <class Real>
void Matrix3<Real>::GetColumnMajor(Real* columnMajor) const
{
    Matrix3 transpose = Transpose();
    std::memcpy(columnMajor, transpose.mEntry, sizeof(mEntry));
}

template <class Real>
bool Matrix3<Real>::operator<(const Matrix3& m) const
{
    return Tuple::Less<9>(mEntry, m.mEntry);
}

template <class Real>
Matrix3<Real> Matrix3<Real>::operator+(const Matrix3& m) const
{
    Matrix3 sum;
    Tuple::Add<9>(mEntry, m.mEntry, sum.mEntry);
    return sum;
}

template <class Real>
Matrix3<Real> Matrix3<Real>::operator-(const Matrix3& m) const
{
    Matrix3 diff;
    Tuple::Subtract<9>(mEntry, m.mEntry, diff.mEntry);
    return diff;
}

template <class Real>
Matrix3<Real> Matrix3<Real>::operator*(Real s) const
{
    Matrix3 product;
    Tuple::Scale<9>(mEntry, s, product.mEntry);
    return product;
}

template <class Real>
Matrix3<Real> Matrix3<Real>::operator/(Real s) const
{
    Matrix3 quotient;
    Tuple::Divide<9>(mEntry, s, quotient.mEntry);
    return quotient;
}

template <class Real>
Matrix3<Real> Matrix3<Real>::operator-() const
{
    Matrix3 negated;
    Tuple::Negate<9>(mEntry, negated.mEntry);
    return negated;
}

template <class Real>
Matrix3<Real> Matrix3<Real>::Transpose() const
{
    return Matrix3(mEntry[0], mEntry[3], mEntry[6], mEntry[1], mEntry[4], mEntry[7], mEntry[2], mEntry[5], mEntry[8]);
}

template <class Real>
Matrix3<Real> Matrix3<Real>::TransposeTimes(const Matrix3& m) const
{
    return Transpose() * m;
}

template <class Real>
Matrix3<Real> Matrix3<Real>::TimesTranspose(const Matrix3& m) const
{
    return *this * m.Transpose();
}

template <class Real>
Matrix3<Real> Matrix3<Real>::Adjoint() const
{
    const Real* e = mEntry;
    return Matrix3(e[4] * e[8] - e[5] * e[7], e[2] * e[7] - e[1] * e[8], e[1] * e[5] - e[2] * e[4],
                   e[5] * e[6] - e[3] * e[8], e[0] * e[8] - e[2] * e[6], e[2] * e[3] - e[0] * e[5],
                   e[3] * e[7] - e[4] * e[6], e[1] * e[6] - e[0] * e[7], e[0] * e[4] - e[1] * e[3]);
}

template <class Real>
Real Matrix3<Real>::Determinant() const
{
    const Real* e = mEntry;
    return e[0] * (e[4] * e[8] - e[5] * e[7]) + e[1] * (e[5] * e[6] - e[3] * e[8]) + e[2] * (e[3] * e[7] - e[4] * e[6]);
}

template <class Real>
Matrix3<Real> Matrix3<Real>::Inverse() const
{
    Matrix3 adjoint = Adjoint();
    Real det = mEntry[0] * adjoint.mEntry[0] + mEntry[1] * adjoint.mEntry[3] + mEntry[2] * adjoint.mEntry[6];
    if (det == Real(0)) {
        return ZERO;
    }
    return adjoint * (Real(1) / det);
}

template <class Real>
Real Matrix3<Real>::QDotProduct(const Vector3<Real>& u, const Vector3<Real>& v) const
{
    return u.Dot(*this * v);
}

template <class Real>
void Matrix3<Real>::Orthonormalize()
{
    Vector3<Real> u = GetColumn(0), v = GetColumn(1), w = GetColumn(2);
    Vector3<Real>::Orthonormalize(u, v, w);
    SetColumn(0, u);
    SetColumn(1, v);
    SetColumn(2, w);
}

template <class Real> const Matrix3<Real> Matrix3<Real>::ZERO = Matrix3<Real>();
template <class Real>
const Matrix3<Real> Matrix3<Real>::IDENTITY(Real(1), Real(0), Real(0), Real(0), Real(1), Real(0), Real(0), Real(0), Real(1));

template class Matrix3<float>;
template class Matrix3<double>;

} // namespace Wm4
