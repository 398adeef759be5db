#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Matrix4.h>

#include "Wm4TestHelpers.h"

using namespace Wm4;
using Wm4Test::Near;
using Wm4Test::NearM;
using Wm4Test::NearV;
using Wm4Test::Tolerance;

namespace {

template <class Real>
class MatrixTest : public ::testing::Test {};
TYPED_TEST_SUITE(MatrixTest, Wm4Test::RealTypes);

// Well-conditioned, non-symmetric, with no zero entries.
template <class Real>
Matrix3<Real> General3()
{
    return Matrix3<Real>(2, -1, 0.5, 1, 3, -2, 0.25, 1, 4);
}

template <class Real>
Matrix4<Real> General4()
{
    return Matrix4<Real>(4, 1, -2, 0.5, 1, 5, 1, -1, 0.5, -1, 3, 2, 1, 2, -0.5, 6);
}

} // namespace

TYPED_TEST(MatrixTest, ActsOnColumnVectors)
{
    using R = TypeParam;
    Matrix3<R> m(1, 2, 3, 4, 5, 6, 7, 8, 9);
    // M * e_j is column j; e_i * M is row i.
    EXPECT_EQ(Vector3<R>(1, 4, 7), m * Vector3<R>::UNIT_X);
    EXPECT_EQ(Vector3<R>(3, 6, 9), m * Vector3<R>::UNIT_Z);
    EXPECT_EQ(Vector3<R>(4, 5, 6), Vector3<R>::UNIT_Y * m);
    EXPECT_EQ(Vector3<R>(1, 2, 3) * m, m.Transpose() * Vector3<R>(1, 2, 3));
    EXPECT_EQ(Vector3<R>(14, 32, 50), m * Vector3<R>(1, 2, 3));

    // A homogeneous translation sits in the last column.
    Matrix4<R> translate(1, 0, 0, 10, 0, 1, 0, 20, 0, 0, 1, 30, 0, 0, 0, 1);
    EXPECT_EQ(Vector4<R>(11, 22, 33, 1), translate * Vector4<R>(1, 2, 3, 1));
    EXPECT_EQ(Vector4<R>(1, 2, 3, 0), translate * Vector4<R>(1, 2, 3, 0));
}

TYPED_TEST(MatrixTest, ConstructionFromRowsColumnsAndDiagonal)
{
    using R = TypeParam;
    Vector3<R> a(1, 2, 3), b(4, 5, 6), c(7, 8, 9);
    Matrix3<R> rows(a, b, c, false);
    Matrix3<R> columns(a, b, c, true);
    EXPECT_EQ(Matrix3<R>(1, 2, 3, 4, 5, 6, 7, 8, 9), rows);
    EXPECT_EQ(rows.Transpose(), columns);
    EXPECT_EQ(b, columns.GetColumn(1));

    EXPECT_EQ(Matrix3<R>(2, 0, 0, 0, 3, 0, 0, 0, 4), Matrix3<R>(2, 3, 4));
}

TYPED_TEST(MatrixTest, ProductsAndTransposedProducts)
{
    using R = TypeParam;
    Matrix3<R> a = General3<R>();
    Matrix3<R> b(1, 0, 2, -1, 3, 0, 0, 1, 1);
    // (A B) v = A (B v)
    Vector3<R> v(1, -2, 0.5);
    EXPECT_TRUE(NearV(a * (b * v), (a * b) * v));
    EXPECT_TRUE(NearM(a.Transpose() * b, a.TransposeTimes(b)));

    Matrix4<R> m4 = General4<R>();
    Vector4<R> h(1, 2, -1, 0.5);
    EXPECT_TRUE(Near<R>(m4 * (m4 * h), (m4 * m4) * h, 4));
    EXPECT_TRUE(Near<R>(m4.Transpose() * m4, m4.TransposeTimes(m4), 16));
}

TYPED_TEST(MatrixTest, InverseTimesMatrixIsIdentity)
{
    using R = TypeParam;
    Matrix3<R> m3 = General3<R>();
    EXPECT_TRUE(NearM(Matrix3<R>::IDENTITY, m3.Inverse() * m3));
    EXPECT_TRUE(NearM(Matrix3<R>::IDENTITY * m3.Determinant(), m3.Adjoint() * m3));

    Matrix4<R> m4 = General4<R>();
    EXPECT_TRUE(Near<R>(Matrix4<R>::IDENTITY, m4.Inverse() * m4, 16));
    EXPECT_TRUE(Near<R>(Matrix4<R>::IDENTITY * m4.Determinant(), m4.Adjoint() * m4, 16));
}

TYPED_TEST(MatrixTest, DeterminantSigns)
{
    using R = TypeParam;
    EXPECT_EQ(R(-1), Matrix3<R>(0, 1, 0, 1, 0, 0, 0, 0, 1).Determinant());
    EXPECT_EQ(R(24), Matrix3<R>(2, 1, 7, 0, 3, 5, 0, 0, 4).Determinant());
    // An odd permutation of the rows of diag(1, 2, 3, 4).
    EXPECT_EQ(R(-24), Matrix4<R>(0, 2, 0, 0, 1, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4).Determinant());
    // A cyclic shift of four rows is odd as well.
    EXPECT_EQ(R(-1), Matrix4<R>(0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 1, 0, 0, 0).Determinant());
}

TYPED_TEST(MatrixTest, InverseRefusesOnlyAnExactlyZeroDeterminant)
{
    using R = TypeParam;
    EXPECT_EQ(Matrix3<R>::ZERO, Matrix3<R>(1, 2, 3, 2, 4, 6, 0, 1, 1).Inverse());
    EXPECT_EQ(Matrix4<R>::ZERO, Matrix4<R>(1, 2, 3, 4, 0, 1, 0, 1, 2, 4, 6, 8, 5, 0, 0, 1).Inverse());
    EXPECT_EQ(Matrix3<R>::ZERO, Matrix3<R>::ZERO.Inverse());

    // A determinant far below ZERO_TOLERANCE still inverts.
    R tiny = Math<R>::ZERO_TOLERANCE * R(1e-3);
    Matrix3<R> small(tiny, 0, 0, 0, 1, 0, 0, 0, 1);
    EXPECT_EQ(R(1) / tiny, small.Inverse()(0, 0));
    EXPECT_EQ(R(1) / tiny, Matrix4<R>(tiny, 1, 1, 1).Inverse()(0, 0));
}

TYPED_TEST(MatrixTest, AxisAngleRotatesCounterClockwise)
{
    using R = TypeParam;
    Matrix3<R> rotZ(Vector3<R>::UNIT_Z, Math<R>::HALF_PI);
    EXPECT_TRUE(NearV(Vector3<R>::UNIT_Y, rotZ * Vector3<R>::UNIT_X));
    EXPECT_TRUE(NearV(-Vector3<R>::UNIT_X, rotZ * Vector3<R>::UNIT_Y));
    Matrix3<R> rotX(Vector3<R>::UNIT_X, Math<R>::HALF_PI);
    EXPECT_TRUE(NearV(Vector3<R>::UNIT_Z, rotX * Vector3<R>::UNIT_Y));
    Matrix3<R> rotY(Vector3<R>::UNIT_Y, Math<R>::HALF_PI);
    EXPECT_TRUE(NearV(Vector3<R>::UNIT_X, rotY * Vector3<R>::UNIT_Z));

    // A rotation is orthonormal with determinant 1.
    Vector3<R> axis(1, 2, 2);
    axis.Normalize();
    Matrix3<R> rot(axis, R(0.7));
    EXPECT_TRUE(NearM(Matrix3<R>::IDENTITY, rot.TransposeTimes(rot)));
    EXPECT_NEAR(R(1), rot.Determinant(), Tolerance<R>());
    EXPECT_TRUE(NearV(axis, rot * axis));
}
