#include <Wm4/Wm4Quaternion.h>

#include "Wm4TestHelpers.h"

using namespace Wm4;
using Wm4Test::Near;
using Wm4Test::NearM;
using Wm4Test::NearV;
using Wm4Test::Tolerance;

namespace {

template <class Real>
class QuaternionTest : public ::testing::Test {};
TYPED_TEST_SUITE(QuaternionTest, Wm4Test::RealTypes);

// q and -q are the same rotation.
template <class Real>
::testing::AssertionResult SameRotation(const Quaternion<Real>& expected, const Quaternion<Real>& actual)
{
    if (Near<Real>(expected, actual, 4) || Near<Real>(-expected, actual, 4)) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "(" << actual.W() << ", " << actual.X() << ", " << actual.Y() << ", "
                                         << actual.Z() << ") is not +-(" << expected.W() << ", " << expected.X()
                                         << ", " << expected.Y() << ", " << expected.Z() << ")";
}

template <class Real>
Vector3<Real> Unit(Real x, Real y, Real z)
{
    Vector3<Real> v(x, y, z);
    v.Normalize();
    return v;
}

} // namespace

TYPED_TEST(QuaternionTest, AxisAngleAndMatrixConversionsAgreeThroughEveryBranch)
{
    using R = TypeParam;
    Vector3<R> axis = Unit<R>(1, -2, 0.5);
    Quaternion<R> q(axis, R(0.9));
    Matrix3<R> fromQuaternion;
    q.ToRotationMatrix(fromQuaternion);
    EXPECT_TRUE(NearM(Matrix3<R>(axis, R(0.9)), fromQuaternion));
    Vector3<R> v(0.3, 2, -1);
    EXPECT_TRUE(NearV(fromQuaternion * v, q.Rotate(v)));
    // A quarter turn about z takes x to y.
    EXPECT_TRUE(NearV(Vector3<R>::UNIT_Y, Quaternion<R>(Vector3<R>::UNIT_Z, Math<R>::HALF_PI).Rotate(Vector3<R>::UNIT_X)));

    // From a matrix: positive trace, then half turns and near-half turns whose largest
    // diagonal entry is in row 0, 1 and 2, and a few general rotations.
    struct Case {
        Vector3<R> axis;
        R angle;
    } cases[] = {
        {Unit<R>(1, 2, 3), R(0.5)},        {Vector3<R>::UNIT_X, Math<R>::PI}, {Vector3<R>::UNIT_Y, Math<R>::PI},
        {Vector3<R>::UNIT_Z, Math<R>::PI}, {Unit<R>(3, 1, 0.5), R(3)},        {Unit<R>(0.2, -3, 1), R(2.9)},
        {Unit<R>(0.1, 0.5, -4), R(3.1)},   {Unit<R>(-1, 1, 1), R(2)},         {Unit<R>(1, 0, 0), R(0)},
    };
    for (const Case& c : cases) {
        Matrix3<R> rot(c.axis, c.angle);
        Quaternion<R> fromMatrix(rot);
        EXPECT_NEAR(R(1), fromMatrix.Length(), Tolerance<R>()) << c.angle;
        EXPECT_TRUE(SameRotation(Quaternion<R>(c.axis, c.angle), fromMatrix)) << c.angle;
        Matrix3<R> back;
        fromMatrix.ToRotationMatrix(back);
        EXPECT_TRUE(NearM(rot, back)) << c.angle;
    }
}

TYPED_TEST(QuaternionTest, ProductComposesRotations)
{
    using R = TypeParam;
    Quaternion<R> p(Unit<R>(1, 1, 0), R(0.8)), q(Unit<R>(0, -1, 2), R(2.2));
    Vector3<R> v(1, -2, 3);
    EXPECT_TRUE(NearV(p.Rotate(q.Rotate(v)), (p * q).Rotate(v)));

    // i j = k, and the identity is neutral.
    EXPECT_EQ(Quaternion<R>(0, 0, 0, 1), Quaternion<R>(0, 1, 0, 0) * Quaternion<R>(0, 0, 1, 0));
    EXPECT_EQ(Quaternion<R>(0, 0, 0, -1), Quaternion<R>(0, 0, 1, 0) * Quaternion<R>(0, 1, 0, 0));
    EXPECT_EQ(p, Quaternion<R>::IDENTITY * p);
}

TYPED_TEST(QuaternionTest, InverseConjugateAndNormalize)
{
    using R = TypeParam;
    Quaternion<R> q(1, 2, -2, 4);
    EXPECT_EQ(R(25), q.SquaredLength());
    EXPECT_EQ(Quaternion<R>(1, -2, 2, -4), q.Conjugate());
    EXPECT_TRUE(Near<R>(Quaternion<R>::IDENTITY, q * q.Inverse(), 4));
    EXPECT_TRUE(Near<R>(Quaternion<R>::IDENTITY, q.Inverse() * q, 4));
    EXPECT_EQ(Quaternion<R>::ZERO, Quaternion<R>::ZERO.Inverse());

    EXPECT_EQ(R(5), q.Normalize());
    EXPECT_TRUE(Near<R>(Quaternion<R>(0.2, 0.4, -0.4, 0.8), q, 4));
    Quaternion<R> tiny(Math<R>::ZERO_TOLERANCE * R(0.5), 0, 0, 0);
    EXPECT_EQ(R(0), tiny.Normalize());
    EXPECT_EQ(Quaternion<R>::ZERO, tiny);
}
