// The object stream writes arrays of the value types as raw runs of Reals, so
// their in-memory layout is a file format. These tests pin it byte by byte.
#include <Wm4/Wm4ColorRGB.h>
#include <Wm4/Wm4ColorRGBA.h>
#include <Wm4/Wm4Matrix2.h>
#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Matrix4.h>
#include <Wm4/Wm4Plane3.h>
#include <Wm4/Wm4Quaternion.h>
#include <Wm4/Wm4Vector2.h>
#include <Wm4/Wm4Vector3.h>
#include <Wm4/Wm4Vector4.h>

#include "Wm4TestHelpers.h"

#include <cstring>

using namespace Wm4;

namespace {

// The object's bytes, read back as Reals.
template <class Real, class Value, int N>
void ExpectStored(const Value& value, const Real (&expected)[N])
{
    static_assert(sizeof(Value) == N * sizeof(Real));
    Real stored[N];
    std::memcpy(stored, &value, sizeof(stored));
    for (int i = 0; i < N; ++i) {
        EXPECT_EQ(expected[i], stored[i]) << "at Real " << i;
    }
}

template <class Real>
class LayoutTest : public ::testing::Test {};
TYPED_TEST_SUITE(LayoutTest, Wm4Test::RealTypes);

} // namespace

TYPED_TEST(LayoutTest, VectorsAreTheirComponentsInOrder)
{
    using R = TypeParam;
    ExpectStored(Vector2<R>(1, 2), {R(1), R(2)});
    ExpectStored(Vector3<R>(1, 2, 3), {R(1), R(2), R(3)});
    ExpectStored(Vector4<R>(1, 2, 3, 4), {R(1), R(2), R(3), R(4)});

    // Arrays are back-to-back runs with no gaps.
    Vector3<R> points[2] = {Vector3<R>(1, 2, 3), Vector3<R>(4, 5, 6)};
    const R* run = points[0];
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(R(i + 1), run[i]);
    }
}

TYPED_TEST(LayoutTest, MatricesAreRowMajor)
{
    using R = TypeParam;
    Matrix2<R> m2(1, 2, 3, 4);
    ExpectStored(m2, {R(1), R(2), R(3), R(4)});
    EXPECT_EQ(R(2), m2(0, 1));
    EXPECT_EQ(R(3), m2[1][0]);

    Matrix3<R> m3(1, 2, 3, 4, 5, 6, 7, 8, 9);
    ExpectStored(m3, {R(1), R(2), R(3), R(4), R(5), R(6), R(7), R(8), R(9)});
    EXPECT_EQ(R(6), m3(1, 2));
    EXPECT_EQ(R(8), m3[2][1]);

    Matrix4<R> m4(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    ExpectStored(m4, {R(1), R(2), R(3), R(4), R(5), R(6), R(7), R(8), R(9), R(10), R(11), R(12), R(13), R(14),
                      R(15), R(16)});
    EXPECT_EQ(R(8), m4(1, 3));
    EXPECT_EQ(R(14), m4[3][1]);
}

TYPED_TEST(LayoutTest, QuaternionIsWThenXYZAndPlaneIsNormalThenConstant)
{
    using R = TypeParam;
    Quaternion<R> q(1, 2, 3, 4);
    ExpectStored(q, {R(1), R(2), R(3), R(4)});
    EXPECT_EQ(R(1), q.W());
    EXPECT_EQ(R(1), q[0]);
    EXPECT_EQ(R(2), q.X());

    ExpectStored(Plane3<R>(Vector3<R>(1, 2, 3), R(4)), {R(1), R(2), R(3), R(4)});
}

TEST(LayoutTest, ColoursAreFloatChannelsInOrder)
{
    ExpectStored(ColorRGB(0.25f, 0.5f, 0.75f), {0.25f, 0.5f, 0.75f});
    ExpectStored(ColorRGBA(0.25f, 0.5f, 0.75f, 1.0f), {0.25f, 0.5f, 0.75f, 1.0f});
}

TYPED_TEST(LayoutTest, DefaultConstructionIsZero)
{
    using R = TypeParam;
    EXPECT_EQ(Vector3<R>::ZERO, Vector3<R>());
    EXPECT_EQ(Vector4<R>::ZERO, Vector4<R>());
    EXPECT_EQ(Matrix3<R>::ZERO, Matrix3<R>());
    EXPECT_EQ(Matrix4<R>::ZERO, Matrix4<R>());
    EXPECT_EQ(Quaternion<R>::ZERO, Quaternion<R>());
    EXPECT_EQ(ColorRGBA(0, 0, 0, 0), ColorRGBA());

    // The bool constructor: true is zero, false the identity.
    EXPECT_EQ(Matrix2<R>::ZERO, Matrix2<R>(true));
    EXPECT_EQ(Matrix3<R>::IDENTITY, Matrix3<R>(false));
    EXPECT_EQ(Matrix4<R>::IDENTITY, Matrix4<R>(false));
}

TYPED_TEST(LayoutTest, ConstantsHoldTheirValues)
{
    using R = TypeParam;
    ExpectStored(Vector3<R>::ONE, {R(1), R(1), R(1)});
    ExpectStored(Vector4<R>::UNIT_W, {R(0), R(0), R(0), R(1)});
    ExpectStored(Quaternion<R>::IDENTITY, {R(1), R(0), R(0), R(0)});
    ExpectStored(Matrix3<R>::IDENTITY, {R(1), R(0), R(0), R(0), R(1), R(0), R(0), R(0), R(1)});
    EXPECT_EQ(Matrix4<R>(1, 1, 1, 1), Matrix4<R>::IDENTITY);
}

TEST(LayoutTest, ColourConstants)
{
    ExpectStored(ColorRGB::INVALID, {-1.0f, -1.0f, -1.0f});
    ExpectStored(ColorRGBA::BLACK, {0.0f, 0.0f, 0.0f, 1.0f});
    ExpectStored(ColorRGBA::WHITE, {1.0f, 1.0f, 1.0f, 1.0f});
    ExpectStored(ColorRGBA::INVALID, {-1.0f, -1.0f, -1.0f, -1.0f});
}
