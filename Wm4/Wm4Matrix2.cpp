#include <Wm4/Wm4Matrix2.h>

#include <Wm4/Wm4Tuple.h>

namespace Wm4 {

template <class Real>
Matrix2<Real>::Matrix2(bool zero)
{
    if (zero) {
        MakeZero();
    } else {
        MakeIdentity();
    }
}

template <class Real>
Matrix2<Real>::Matrix2(const Real entry[4], bool rowMajor)
{
    std::memcpy(mEntry, entry, sizeof(mEntry));
    if (!rowMajor) {
        *this = Transpose();
    }
}

template <class Real>
Matrix2<Real>::Matrix2(const Vector2<Real>& u, const Vector2<Real>& v, bool columns)
{
    SetRow(0, u);
    SetRow(1, v);
    if (columns) {
        *this = Transpose();
    }
}

template <class Real>
Matrix2<Real>::Matrix2(Real d0, Real d1)
{
    MakeDiagonal(d0, d1);
}

template <class Real>
void Matrix2<Real>::MakeZero()
{
    *this = Matrix2();
}

template <class Real>
void Matrix2<Real>::MakeIdentity()
{
    MakeDiagonal(Real(1), Real(1));
}

template <class Real>
void Matrix2<Real>::MakeDiagonal(Real d0, Real d1)
{
    *this = Matrix2(d0, Real(0), Real(0), d1);
}

template <class Real>
void Matrix2<Real>::FromAngle(Real angle)
{
    Real cs = Math<Real>::Cos(angle);
    Real sn = Math<Real>::Sin(angle);
    *this = Matrix2(cs, -sn, sn, cs);
}

template <class Real>
Real Matrix2<Real>::ToAngle() const
{
    return Math<Real>::ATan2(mEntry[2], mEntry[0]);
}

template <class Real>
void Matrix2<Real>::SetRow(int row, const Vector2<Real>& v)
{
    mEntry[2 * row] = v[0];
    mEntry[2 * row + 1] = v[1];
}

template <class Real>
Vector2<Real> Matrix2<Real>::GetRow(int row) const
{
    return Vector2<Real>(mEntry[2 * row], mEntry[2 * row + 1]);
}

template <class Real>
void Matrix2<Real>::SetColumn(int col, const Vector2<Real>& v)
{
    mEntry[col] = v[0];
    mEntry[2 + col] = v[1];
}

template <class Real>
Vector2<Real> Matrix2<Real>::GetColumn(int col) const
{
    return Vector2<Real>(mEntry[col], mEntry[2 + col]);
}

template <class Real>
bool Matrix2<Real>::operator<(const Matrix2& m) const
{
    return Tuple::Less<4>(mEntry, m.mEntry);
}

template <class Real>
Matrix2<Real> Matrix2<Real>::operator+(const Matrix2& m) const
{
    return Matrix2(mEntry[0] + m.mEntry[0], mEntry[1] + m.mEntry[1], mEntry[2] + m.mEntry[2], mEntry[3] + m.mEntry[3]);
}

template <class Real>
Matrix2<Real> Matrix2<Real>::operator-(const Matrix2& m) const
{
    return Matrix2(mEntry[0] - m.mEntry[0], mEntry[1] - m.mEntry[1], mEntry[2] - m.mEntry[2], mEntry[3] - m.mEntry[3]);
}

template <class Real>
Matrix2<Real> Matrix2<Real>::operator*(const Matrix2& m) const
{
    return Matrix2(mEntry[0] * m.mEntry[0] + mEntry[1] * m.mEntry[2], mEntry[0] * m.mEntry[1] + mEntry[1] * m.mEntry[3],
                   mEntry[2] * m.mEntry[0] + mEntry[3] * m.mEntry[2], mEntry[2] * m.mEntry[1] + mEntry[3] * m.mEntry[3]);
}

template <class Real>
Matrix2<Real> Matrix2<Real>::operator*(Real s) const
{
    return Matrix2(s * mEntry[0], s * mEntry[1], s * mEntry[2], s * mEntry[3]);
}

template <class Real>
Matrix2<Real> Matrix2<Real>::operator/(Real s) const
{
    return Matrix2(mEntry[0] / s, mEntry[1] / s, mEntry[2] / s, mEntry[3] / s);
}

template <class Real>
Matrix2<Real> Matrix2<Real>::operator-() const
{
    return Matrix2(-mEntry[0], -mEntry[1], -mEntry[2], -mEntry[3]);
}

template <class Real>
Matrix2<Real> Matrix2<Real>::Inverse() const
{
    Real det = Determinant();
    if (det == Real(0)) {
        return ZERO;
    }
    return Adjoint() * (Real(1) / det);
}

template <class Real>
void Matrix2<Real>::Orthonormalize()
{
    Vector2<Real> u = GetColumn(0), v = GetColumn(1);
    u.Normalize();
    v -= u * u.Dot(v);
    v.Normalize();
    SetColumn(0, u);
    SetColumn(1, v);
}

template <class Real> const Matrix2<Real> Matrix2<Real>::ZERO = Matrix2<Real>();
template <class Real> const Matrix2<Real> Matrix2<Real>::IDENTITY(Real(1), Real(0), Real(0), Real(1));

template class Matrix2<float>;
template class Matrix2<double>;

} // namespace Wm4
