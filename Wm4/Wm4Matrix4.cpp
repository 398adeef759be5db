#include <Wm4/Wm4Matrix4.h>

#include <Wm4/Wm4Tuple.h>

namespace Wm4 {

namespace {

// The 2x2 minors of rows 0-1 (a) and of rows 2-3 (b), each over a pair of columns: the
// Laplace expansion along the first two rows that Adjoint and Determinant share.
template <class Real>
struct Minors4 {
    explicit Minors4(const Real* e)
        : a0(e[0] * e[5] - e[1] * e[4]), a1(e[0] * e[6] - e[2] * e[4]), a2(e[0] * e[7] - e[3] * e[4]),
          a3(e[1] * e[6] - e[2] * e[5]), a4(e[1] * e[7] - e[3] * e[5]), a5(e[2] * e[7] - e[3] * e[6]),
          b0(e[8] * e[13] - e[9] * e[12]), b1(e[8] * e[14] - e[10] * e[12]), b2(e[8] * e[15] - e[11] * e[12]),
          b3(e[9] * e[14] - e[10] * e[13]), b4(e[9] * e[15] - e[11] * e[13]), b5(e[10] * e[15] - e[11] * e[14])
    {
    }
    Real a0, a1, a2, a3, a4, a5, b0, b1, b2, b3, b4, b5;
};

} // namespace

template <class Real>
Matrix4<Real>::Matrix4(bool zero)
{
    if (zero) {
        MakeZero();
    } else {
        MakeIdentity();
    }
}

template <class Real>
Matrix4<Real>::Matrix4(const Real entry[16], bool rowMajor)
{
    std::memcpy(mEntry, entry, sizeof(mEntry));
    if (!rowMajor) {
        *this = Transpose();
    }
}

template <class Real>
Matrix4<Real>::Matrix4(const Vector4<Real>& u, const Vector4<Real>& v, const Vector4<Real>& w, const Vector4<Real>& t,
                       bool columns)
{
    SetRow(0, u);
    SetRow(1, v);
    SetRow(2, w);
    SetRow(3, t);
    if (columns) {
        *this = Transpose();
    }
}

template <class Real>
Matrix4<Real>::Matrix4(Real d0, Real d1, Real d2, Real d3)
{
    MakeDiagonal(d0, d1, d2, d3);
}

template <class Real>
void Matrix4<Real>::MakeZero()
{
    *this = Matrix4();
}

template <class Real>
void Matrix4<Real>::MakeIdentity()
{
    MakeDiagonal(Real(1), Real(1), Real(1), Real(1));
}

template <class Real>
void Matrix4<Real>::MakeDiagonal(Real d0, Real d1, Real d2, Real d3)
{
    MakeZero();
    mEntry[0] = d0;
    mEntry[5] = d1;
    mEntry[10] = d2;
    mEntry[15] = d3;
}

template <class Real>
void Matrix4<Real>::SetRow(int row, const Vector4<Real>& v)
{
    for (int col = 0; col < 4; ++col) {
        mEntry[4 * row + col] = v[col];
    }
}

template <class Real>
Vector4<Real> Matrix4<Real>::GetRow(int row) const
{
    return Vector4<Real>(&mEntry[4 * row]);
}

template <class Real>
void Matrix4<Real>::SetColumn(int col, const Vector4<Real>& v)
{
    for (int row = 0; row < 4; ++row) {
        mEntry[4 * row + col] = v[row];
    }
}

template <class Real>
Vector4<Real> Matrix4<Real>::GetColumn(int col) const
{
    return Vector4<Real>(mEntry[col], mEntry[4 + col], mEntry[8 + col], mEntry[12 + col]);
}

template <class Real>
void Matrix4<Real>::GetColumnMajor(Real* columnMajor) const
{
    Matrix4 transpose = Transpose();
    std::memcpy(columnMajor, transpose.mEntry, sizeof(mEntry));
}

template <class Real>
bool Matrix4<Real>::operator<(const Matrix4& m) const
{
    return Tuple::Less<16>(mEntry, m.mEntry);
}

template <class Real>
Matrix4<Real> Matrix4<Real>::operator+(const Matrix4& m) const
{
    Matrix4 sum;
    Tuple::Add<16>(mEntry, m.mEntry, sum.mEntry);
    return sum;
}

template <class Real>
Matrix4<Real> Matrix4<Real>::operator-(const Matrix4& m) const
{
    Matrix4 diff;
    Tuple::Subtract<16>(mEntry, m.mEntry, diff.mEntry);
    return diff;
}

template <class Real>
Matrix4<Real> Matrix4<Real>::operator*(const Matrix4& m) const
{
    Matrix4 product;
    for (int row = 0; row < 4; ++row) {
        for (int col = 0; col < 4; ++col) {
            Real sum = Real(0);
            for (int i = 0; i < 4; ++i) {
                sum += mEntry[4 * row + i] * m.mEntry[4 * i + col];
            }
            product.mEntry[4 * row + col] = sum;
        }
    }
    return product;
}

template <class Real>
Matrix4<Real> Matrix4<Real>::operator*(Real s) const
{
    Matrix4 product;
    Tuple::Scale<16>(mEntry, s, product.mEntry);
    return product;
}

template <class Real>
Matrix4<Real> Matrix4<Real>::operator/(Real s) const
{
    Matrix4 quotient;
    Tuple::Divide<16>(mEntry, s, quotient.mEntry);
    return quotient;
}

template <class Real>
Matrix4<Real> Matrix4<Real>::operator-() const
{
    Matrix4 negated;
    Tuple::Negate<16>(mEntry, negated.mEntry);
    return negated;
}

template <class Real>
Matrix4<Real> Matrix4<Real>::Transpose() const
{
    Matrix4 transpose;
    for (int row = 0; row < 4; ++row) {
        for (int col = 0; col < 4; ++col) {
            transpose.mEntry[4 * col + row] = mEntry[4 * row + col];
        }
    }
    return transpose;
}

template <class Real>
Matrix4<Real> Matrix4<Real>::TransposeTimes(const Matrix4& m) const
{
    return Transpose() * m;
}

template <class Real>
Matrix4<Real> Matrix4<Real>::TimesTranspose(const Matrix4& m) const
{
    return *this * m.Transpose();
}

template <class Real>
Matrix4<Real> Matrix4<Real>::Adjoint() const
{
    const Real* e = mEntry;
    const Minors4<Real> m(e);
    const Real a0 = m.a0, a1 = m.a1, a2 = m.a2, a3 = m.a3, a4 = m.a4, a5 = m.a5;
    const Real b0 = m.b0, b1 = m.b1, b2 = m.b2, b3 = m.b3, b4 = m.b4, b5 = m.b5;

    Matrix4 adj;
    Real* r = adj.mEntry;
    r[0] = e[5] * b5 - e[6] * b4 + e[7] * b3;
    r[4] = -e[4] * b5 + e[6] * b2 - e[7] * b1;
    r[8] = e[4] * b4 - e[5] * b2 + e[7] * b0;
    r[12] = -e[4] * b3 + e[5] * b1 - e[6] * b0;
    r[1] = -e[1] * b5 + e[2] * b4 - e[3] * b3;
    r[5] = e[0] * b5 - e[2] * b2 + e[3] * b1;
    r[9] = -e[0] * b4 + e[1] * b2 - e[3] * b0;
    r[13] = e[0] * b3 - e[1] * b1 + e[2] * b0;
    r[2] = e[13] * a5 - e[14] * a4 + e[15] * a3;
    r[6] = -e[12] * a5 + e[14] * a2 - e[15] * a1;
    r[10] = e[12] * a4 - e[13] * a2 + e[15] * a0;
    r[14] = -e[12] * a3 + e[13] * a1 - e[14] * a0;
    r[3] = -e[9] * a5 + e[10] * a4 - e[11] * a3;
    r[7] = e[8] * a5 - e[10] * a2 + e[11] * a1;
    r[11] = -e[8] * a4 + e[9] * a2 - e[11] * a0;
    r[15] = e[8] * a3 - e[9] * a1 + e[10] * a0;
    return adj;
}

template <class Real>
Real Matrix4<Real>::Determinant() const
{
    const Minors4<Real> m(mEntry);
    return m.a0 * m.b5 - m.a1 * m.b4 + m.a2 * m.b3 + m.a3 * m.b2 - m.a4 * m.b1 + m.a5 * m.b0;
}

template <class Real>
Matrix4<Real> Matrix4<Real>::Inverse() const
{
    Real det = Determinant();
    if (det == Real(0)) {
        return ZERO;
    }
    return Adjoint() * (Real(1) / det);
}

template <class Real>
Real Matrix4<Real>::QDotProduct(const Vector4<Real>& u, const Vector4<Real>& v) const
{
    return u.Dot(*this * v);
}

template <class Real> const Matrix4<Real> Matrix4<Real>::ZERO = Matrix4<Real>();
template <class Real>
const Matrix4<Real> Matrix4<Real>::IDENTITY(Real(1), Real(0), Real(0), Real(0), Real(0), Real(1), Real(0), Real(0),
                                            Real(0), Real(0), Real(1), Real(0), Real(0), Real(0), Real(0), Real(1));

template class Matrix4<float>;
template class Matrix4<double>;

} // namespace Wm4
