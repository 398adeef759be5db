#include <Wm4/Wm4EigenDecomposition.h>

#include "Wm4GeometryTestHelpers.h"
#include "Wm4TestHelpers.h"

#include <algorithm>

using namespace Wm4;
using Wm4Test::NearM;
using Wm4Test::Tolerance;

namespace {

template <class Real>
class EigenDecompositionTest : public ::testing::Test {};
TYPED_TEST_SUITE(EigenDecompositionTest, Wm4Test::RealTypes);

// M v = lambda v for every pair (relative to the matrix size), V orthonormal
// and right-handed, values increasing.
template <class Real>
::testing::AssertionResult IsDecomposition(const Matrix3<Real>& m, const EigenDecomposition<Real>& eigen)
{
    Real scale = 0;
    for (int i = 0; i < 9; ++i)
        scale = std::max(scale, Math<Real>::FAbs(m[i / 3][i % 3]));
    scale = std::max(scale, Real(1e-30));
    for (int i = 0; i < 3; ++i) {
        Vector3<Real> v = eigen.GetEigenvector(i);
        Real residual = ((m * v - v * eigen.GetEigenvalue(i)) / scale).Length();
        if (!(residual <= 4 * Tolerance<Real>()))
            return ::testing::AssertionFailure() << "pair " << i << " has residual " << residual;
        if (i > 0 && eigen.GetEigenvalue(i - 1) > eigen.GetEigenvalue(i))
            return ::testing::AssertionFailure() << "values not increasing at " << i;
    }
    const Matrix3<Real>& v = eigen.GetEigenvectors();
    if (!NearM(Matrix3<Real>::IDENTITY, v.TransposeTimes(v)))
        return ::testing::AssertionFailure() << "eigenvectors are not orthonormal";
    if (!(v.Determinant() > Real(0)))
        return ::testing::AssertionFailure() << "eigenvectors are left-handed";
    return ::testing::AssertionSuccess();
}

template <class Real>
Matrix3<Real> RotatedDiagonal(const Matrix3<Real>& rotation, Real d0, Real d1, Real d2)
{
    return rotation * Matrix3<Real>(d0, d1, d2) * rotation.Transpose();
}

} // namespace

TYPED_TEST(EigenDecompositionTest, RandomSymmetricMatrices)
{
    using R = TypeParam;
    std::mt19937 rng(20240611);
    for (int n = 0; n < 500; ++n) {
        Matrix3<R> m;
        for (int i = 0; i < 3; ++i) {
            for (int j = i; j < 3; ++j)
                m(i, j) = m(j, i) = Wm4Test::Uniform<R>(rng, -10, 10);
        }
        EigenDecomposition<R> eigen(m);
        ASSERT_TRUE(IsDecomposition(m, eigen)) << "matrix " << n;
        // The trace is the sum of the eigenvalues.
        R sum = eigen.GetEigenvalue(0) + eigen.GetEigenvalue(1) + eigen.GetEigenvalue(2);
        EXPECT_NEAR(m(0, 0) + m(1, 1) + m(2, 2), sum, 40 * Tolerance<R>());
    }
}

TYPED_TEST(EigenDecompositionTest, DiagonalZeroAndScaledMatrices)
{
    using R = TypeParam;
    // A diagonal matrix needs no rotation: the values are sorted and the
    // vectors are the matching world axes, with the last one's sign fixing
    // the handedness.
    EigenDecomposition<R> diagonal(Matrix3<R>(R(3), R(-1), R(2)));
    EXPECT_EQ(R(-1), diagonal.GetEigenvalue(0));
    EXPECT_EQ(R(2), diagonal.GetEigenvalue(1));
    EXPECT_EQ(R(3), diagonal.GetEigenvalue(2));
    EXPECT_EQ(Vector3<R>::UNIT_Y, diagonal.GetEigenvector(0));
    EXPECT_EQ(Vector3<R>::UNIT_Z, diagonal.GetEigenvector(1));
    EXPECT_EQ(Vector3<R>::UNIT_X, diagonal.GetEigenvector(2));

    EigenDecomposition<R> zero(Matrix3<R>::ZERO);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(R(0), zero.GetEigenvalue(i));
    EXPECT_EQ(Matrix3<R>::IDENTITY, zero.GetEigenvectors());

    // Entries far from 1 neither overflow nor underflow the rotations.
    std::mt19937 rng(11);
    Matrix3<R> rotation = Wm4Test::RandomRotation<R>(rng);
    for (R scale : {R(1e-30), R(1e30)}) {
        Matrix3<R> m = RotatedDiagonal(rotation, R(1), R(2), R(3)) * scale;
        EigenDecomposition<R> eigen(m);
        EXPECT_TRUE(IsDecomposition(m, eigen)) << scale;
        EXPECT_NEAR(R(3), eigen.GetEigenvalue(2) / scale, 10 * Tolerance<R>());
    }

    // Only the upper triangle counts.
    Matrix3<R> upper(1, 2, 3, 99, 4, 5, -7, 42, 6);
    Matrix3<R> symmetric(1, 2, 3, 2, 4, 5, 3, 5, 6);
    EXPECT_EQ(EigenDecomposition<R>(symmetric).GetEigenvectors(), EigenDecomposition<R>(upper).GetEigenvectors());
}

TYPED_TEST(EigenDecompositionTest, NotANumberEndsWithoutHanging)
{
    using R = TypeParam;
    R nan = std::numeric_limits<R>::quiet_NaN();
    Matrix3<R> m(1, nan, 0, nan, 2, 0, 0, 0, 3);
    EigenDecomposition<R> eigen(m);
    SUCCEED();
}
