// The transformation value on hand-picked values whose results are known exactly: the flags
// each setter and each branch of Product and Inverse leaves, the degenerate cases, the 4x4
// conversions, the comparisons, and the 63 streamed bytes. The random test checks the
// values themselves against plain 4x4 matrices.

#include <zuSceneGraph/math/zuGenericTransformation.h>

#include "Wm4/Wm4TestHelpers.h"
#include "scenegraph/zuSpatialTestHelpers.h"
#include "support/zuOutputCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace zu::test {
namespace {

using Transform = zuGenericTransformation<float>;
using Vector3 = Wm4::Vector3f;
using Matrix3 = Wm4::Matrix3f;
using Matrix4 = Wm4::Matrix4f;
using Plane3 = Wm4::Plane3f;
using Wm4Test::NearV;

Matrix3 rotationF(const Vector3& axis, float degrees)
{
    return Matrix3(axis, degrees * Wm4::Mathf::DEG_TO_RAD);
}

// A quarter turn about z, written exactly: (x, y, z) -> (-y, x, z).
const Matrix3 QUARTER_Z(0, -1, 0, 1, 0, 0, 0, 0, 1);

Transform rs(const Matrix3& rotate, const Vector3& scale, const Vector3& translate = Vector3::ZERO)
{
    return rsTransform(rotate, scale, translate);
}

Transform general(const Matrix3& m, const Vector3& translate = Vector3::ZERO)
{
    Transform t;
    t.SetMatrix(m);
    t.SetTranslate(translate);
    return t;
}

// An RS value whose uniform flag is clear whatever its scale: SetMatrix clears the flag and
// SetRotate leaves it.
Transform rsFlaggedNonUniform(const Matrix3& rotate, const Vector3& scale, const Vector3& translate = Vector3::ZERO)
{
    Transform t;
    t.SetScale(scale);
    t.SetMatrix(rotate);
    t.SetRotate(rotate);
    t.SetTranslate(translate);
    return t;
}

struct Flags {
    bool identity, rs, uniform;
};

::testing::AssertionResult hasFlags(const Transform& t, Flags flags)
{
    if (t.IsIdentity() == flags.identity && t.IsRSMatrix() == flags.rs && t.IsUniformScale() == flags.uniform)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "flags (identity, rs, uniform) are (" << t.IsIdentity() << ", "
                                         << t.IsRSMatrix() << ", " << t.IsUniformScale() << ")";
}

// The stored uniform flag itself, which IsUniformScale hides when the value is general:
// SetRotate leaves it and makes it visible.
bool storedUniformFlag(Transform t)
{
    t.SetRotate(t.GetMatrix());
    return t.IsUniformScale();
}

// ---------------------------------------------------------------------------------------
// Flags: every setter and every branch of Product, Inverse and FromHomogeneousMatrix

Transform product(const Transform& a, const Transform& b)
{
    Transform result;
    result.Product(a, b);
    return result;
}

Transform inverse(const Transform& t)
{
    Transform result = rs(QUARTER_Z, Vector3(7, 8, 9));  // overwritten whatever it held
    t.Inverse(result);
    return result;
}

Transform fromHomogeneous(const Matrix4& h, bool transposed = false)
{
    Transform t;
    t.FromHomogeneousMatrix(h, transposed);
    return t;
}

template <class Change>
Transform changed(Transform t, Change change)
{
    change(t);
    return t;
}

TEST(GenericTransformationFlags, EachSetterAndEachBranchLeavesItsFlags)
{
    const Matrix3 r = rotationF(Vector3(0.6f, 0.8f, 0), 40);
    const Matrix3 I = Matrix3::IDENTITY;
    const Transform uniform = rs(r, Vector3(2, 2, 2), Vector3(1, 2, 3));
    const Transform axisAligned = rs(I, Vector3(1, 2, 3), Vector3(10, 20, 30));
    const Matrix4 rsHomogeneous = [] {
        Matrix4 h;
        rs(rotationF(Vector3(0.48f, 0.6f, 0.64f), 57), Vector3(2.5f, 2.5f, 2.5f), Vector3(1, -2, 3)).GetHomogeneous(h);
        return h;
    }();
    const struct {
        const char* label;
        Transform value;
        Flags flags;
    } rows[] = {
        {"default", Transform(), {true, true, true}},
        {"MakeIdentity", changed(general(QUARTER_Z, Vector3(1, 2, 3)), [](Transform& t) { t.MakeIdentity(); }), {true, true, true}},
        {"MakeUnitScale keeps identity", changed(Transform(), [](Transform& t) { t.MakeUnitScale(); }), {true, true, true}},
        {"MakeUnitScale", changed(axisAligned, [](Transform& t) { t.MakeUnitScale(); }), {false, true, true}},
        {"MakeUnitScale of a general value", changed(general(QUARTER_Z), [](Transform& t) { t.MakeUnitScale(); }), {false, false, false}},
        {"SetRotate", changed(Transform(), [&](Transform& t) { t.SetRotate(I); }), {false, true, true}},
        {"SetRotate keeps the uniform flag", changed(general(QUARTER_Z), [](Transform& t) { t.SetRotate(QUARTER_Z); }), {false, true, false}},
        {"SetMatrix", changed(uniform, [&](Transform& t) { t.SetMatrix(I); }), {false, false, false}},
        {"SetTranslate of zero", changed(Transform(), [](Transform& t) { t.SetTranslate(Vector3(0, 0, 0)); }), {false, true, true}},
        {"SetTranslate of a general value", changed(general(QUARTER_Z), [](Transform& t) { t.SetTranslate(Vector3(1, 2, 3)); }), {false, false, false}},
        {"SetScale equal", changed(Transform(), [](Transform& t) { t.SetScale(Vector3(2, 2, 2)); }), {false, true, true}},
        {"SetScale -0 and +0", changed(Transform(), [](Transform& t) { t.SetScale(Vector3(-0.0f, 0, 0)); }), {false, true, true}},
        {"SetScale one ulp apart", changed(Transform(), [](Transform& t) { t.SetScale(Vector3(2, std::nextafter(2.0f, 3.0f), 2)); }), {false, true, false}},
        {"SetScale of a general value", changed(general(QUARTER_Z), [](Transform& t) { t.SetScale(Vector3(2, 2, 2)); }), {false, false, false}},
        {"SetUniformScale", changed(axisAligned, [](Transform& t) { t.SetUniformScale(4); }), {false, true, true}},
        // Product: identity factors copy the other; a uniform left factor keeps RS.
        {"identity times general", product(Transform(), general(QUARTER_Z)), {false, false, false}},
        {"uniform times uniform", product(uniform, rs(r, Vector3(3, 3, 3))), {false, true, true}},
        {"uniform times non-uniform", product(uniform, rs(r, Vector3(1, 2, 3))), {false, true, false}},
        {"uniform times flagged equal", product(uniform, rsFlaggedNonUniform(r, Vector3::ONE)), {false, true, true}},
        {"axis-aligned times uniform", product(axisAligned, rs(QUARTER_Z, Vector3(2, 2, 2))), {false, true, false}},
        {"flagged equal times uniform", product(rsFlaggedNonUniform(I, Vector3::ONE), rs(QUARTER_Z, Vector3(2, 2, 2))), {false, true, true}},
        {"axis-aligned times axis-aligned", product(axisAligned, rs(I, Vector3(3, 1.5f, 1))), {false, true, true}},
        {"axis-aligned times rotated non-uniform", product(axisAligned, rs(QUARTER_Z, Vector3(1, 1, 2))), {false, false, false}},
        {"-0 in the left rotation", product(rs(Matrix3(1, -0.0f, 0, 0, 1, 0, 0, 0, 1), Vector3(1, 2, 3)), rs(QUARTER_Z, Vector3(2, 2, 2))), {false, false, false}},
        {"rotated non-uniform times uniform", product(rs(QUARTER_Z, Vector3(1, 2, 1)), rs(I, Vector3(2, 2, 2))), {false, false, false}},
        {"uniform times general", product(uniform, general(QUARTER_Z)), {false, false, false}},
        // Inverse: equal magnitudes stay RS (uniform unless one sign is left), others general.
        {"inverse of the identity", inverse(Transform()), {true, true, true}},
        {"inverse of uniform", inverse(uniform), {false, true, true}},
        {"inverse of one negative", inverse(rs(r, Vector3(-2, 2, 2))), {false, true, false}},
        {"inverse of two negatives", inverse(rs(r, Vector3(-2, -2, 2))), {false, true, true}},
        {"inverse of flagged three negatives", inverse(rsFlaggedNonUniform(r, Vector3(-2, -2, -2))), {false, true, false}},
        {"inverse of flagged equal", inverse(rsFlaggedNonUniform(r, Vector3(4, 4, 4))), {false, true, true}},
        {"inverse of non-uniform", inverse(rs(QUARTER_Z, Vector3(1, 2, -4))), {false, false, false}},
        {"inverse of general", inverse(general(QUARTER_Z)), {false, false, false}},
        // 4x4 matrices: RS comes back in both layouts, a mirror stays RS on x.
        {"homogeneous uniform", fromHomogeneous(rsHomogeneous, true), {false, true, true}},
        {"homogeneous uniform transposed", fromHomogeneous(rsHomogeneous.Transpose()), {false, true, true}},
        {"homogeneous scale", fromHomogeneous(Matrix4(3, 3, 3, 1)), {false, true, true}},
        {"homogeneous mirror", fromHomogeneous(Matrix4(2, -2, 2, 1)), {false, true, false}},
        {"homogeneous shear", fromHomogeneous(Matrix4(1, 0.5f, 0, 2, 0, 1, 0, 3, 0, 0, 1, 4, 0, 0, 0, 1)), {false, false, false}},
        {"homogeneous flattening", fromHomogeneous(Matrix4(1, 1, 0, 1)), {false, false, false}},
    };
    for (const auto& row : rows)
        EXPECT_TRUE(hasFlags(row.value, row.flags)) << row.label;
    // The stored uniform flag that a general value hides.
    EXPECT_TRUE(storedUniformFlag(changed(general(QUARTER_Z), [](Transform& t) { t.MakeUnitScale(); })));
    EXPECT_FALSE(storedUniformFlag(changed(Transform(), [](Transform& t) { t.SetMatrix(Matrix3::IDENTITY); })));
    // The uniform scale is scale.x, whatever the other components hold.
    EXPECT_EQ(rs(I, Vector3(5, 6, 7)).GetUniformScale(), 5);
}

// ---------------------------------------------------------------------------------------
// Mappings

TEST(GenericTransformationApply, DegenerateInverses)
{
    const Vector3 x(1, 2, 3);
    // A zero uniform scale inverts to the largest real, in every form.
    Transform zero;
    zero.SetUniformScale(0);
    zero.SetTranslate(Vector3(1, 2, 3));
    const Vector3 big(Wm4::Mathf::MAX_REAL, Wm4::Mathf::MAX_REAL, Wm4::Mathf::MAX_REAL);
    EXPECT_EQ(zero.ApplyInverse(Vector3(4, 5, 6)), big);
    EXPECT_EQ(zero.InvertVector(Vector3(4, 5, 6)), big);
    std::vector<Vector3> points(5, Vector3(1, 1, 1));
    zero.ApplyInverse(5, points.data(), points.data());
    for (const Vector3& p : points)
        EXPECT_EQ(p, big);

    // A general matrix of determinant -2 is refused (everything maps to the origin); a
    // reflection, determinant -1, inverts.
    EXPECT_EQ(general(Matrix3(-2, 0, 0, 0, 1, 0, 0, 0, 1)).ApplyInverse(x), Vector3(0, 0, 0));
    EXPECT_EQ(general(Matrix3(-1, 0, 0, 0, 1, 0, 0, 0, 1)).ApplyInverse(x), Vector3(-1, 2, 3));

    // Normals: zero stays zero, a singular matrix inverts to ZERO, a length too small to
    // square is zero.
    EXPECT_EQ(rs(QUARTER_Z, Vector3(3, 3, 3)).ApplyNormal(Vector3(0, 0, 0)), Vector3(0, 0, 0));
    EXPECT_EQ(general(Matrix3(1, 0, 0, 0, 1, 0, 0, 0, 0)).ApplyNormal(Vector3(0, 0, 1)), Vector3(0, 0, 0));
    EXPECT_EQ(Transform().ApplyNormal(Vector3(1e-39f, 0, 0)), Vector3(0, 0, 0));
}

// Non-uniform and general planes are checked against the inverse transpose in the random test.
TEST(GenericTransformationApply, UniformPlanesAreNotRenormalised)
{
    const Plane3 plane(Vector3(1, 0, 0), 1.0f);
    EXPECT_EQ(Transform().ApplyForward(plane), plane);
    // Uniform: n' = R·n, c' = s·c + n'·T, without renormalisation.
    const Transform uniform = rs(QUARTER_Z, Vector3(2, 2, 2), Vector3(1, 2, 3));
    EXPECT_EQ(uniform.ApplyForward(plane), Plane3(Vector3(0, 1, 0), 4.0f));
    EXPECT_EQ(uniform.ApplyForward(Plane3(Vector3(2, 0, 0), 1.0f)), Plane3(Vector3(0, 2, 0), 6.0f));
}

// ---------------------------------------------------------------------------------------
// Product and Inverse: values against 4x4 matrices in the random test; here the forms the
// random test cannot tell apart and results that are their own arguments

TEST(GenericTransformationProduct, EitherFactorMayBeTheResult)
{
    const Matrix3 ra = rotationF(Vector3(0, 0, 1), 30);
    const Transform a = rs(ra, Vector3(2, 2, 2), Vector3(1, 2, 3));
    Transform self = a;
    self.Product(self, self);
    EXPECT_EQ(self.GetScale(), Vector3(4, 4, 4));
    EXPECT_EQ(self.GetTranslate(), (ra * Vector3(1, 2, 3)) * 2.0f + Vector3(1, 2, 3));
    self = rs(QUARTER_Z, Vector3(1, 2, 3));
    const Transform copy = self;
    self.Product(Transform(), self);
    EXPECT_EQ(self, copy);
}

::testing::AssertionResult invertsExactly(const Transform& t, const Transform& inverse)
{
    for (const Vector3& x : {Vector3(1, 2, 3), Vector3(-4, 0.5f, 2), Vector3(0, 0, -7)}) {
        ::testing::AssertionResult near = NearV(x, inverse.ApplyForward(t.ApplyForward(x)));
        if (!near)
            return near;
    }
    return ::testing::AssertionSuccess();
}

TEST(GenericTransformationInverse, EachBranchInvertsInItsOwnForm)
{
    const Matrix3 r = rotationF(Vector3(0.6f, 0.8f, 0), 40);
    // One negative component: one mirror is left, on x.
    Transform out = inverse(rs(r, Vector3(-2, 2, 2), Vector3(1, 2, 3)));
    EXPECT_EQ(out.GetScale(), Vector3(-0.5f, 0.5f, 0.5f));
    Matrix3 expected = r.Transpose();
    for (int c = 0; c < 3; ++c)
        expected[0][c] = -expected[0][c];
    for (int row = 0; row < 3; ++row)
        expected[row][0] = -expected[row][0];
    EXPECT_EQ(out.GetRotate(), expected);
    // In place, with a negative uniform scale.
    Transform self = rs(r, Vector3(-2, -2, -2), Vector3(1, 2, 3));
    const Transform copy = self;
    self.Inverse(self);
    EXPECT_EQ(self.GetScale(), Vector3(-0.5f, -0.5f, -0.5f));
    EXPECT_TRUE(invertsExactly(copy, self));
}

// ---------------------------------------------------------------------------------------
// 4x4 matrices

// A mirror is kept in the x scale (values and round trips in the random test).
TEST(GenericTransformationHomogeneous, AMirrorIsKeptInTheXScale)
{
    Transform back = fromHomogeneous(Matrix4(2, -2, 2, 1));
    EXPECT_EQ(back.GetRotate()[0][0], -1.0f);
    EXPECT_EQ(back.GetScale(), Vector3(-2, 2, 2));
    back = fromHomogeneous(Matrix4(-2, 2, 2, 1));
    EXPECT_EQ(back.GetRotate(), Matrix3::IDENTITY);
    EXPECT_EQ(back.GetScale(), Vector3(-2, 2, 2));
}

TEST(GenericTransformationHomogeneous, TolerancesAndGeneralMatrices)
{
    // A translation below 0.001 and a diagonal within the tolerance of 1 are dropped; the
    // off-diagonal test is signed.
    const auto with = [](int row, int column, float value) {
        Matrix4 h = Matrix4::IDENTITY;
        h[row][column] = value;
        return h;
    };
    EXPECT_EQ(fromHomogeneous(with(0, 3, 0.0005f)), Transform());
    EXPECT_EQ(fromHomogeneous(with(1, 1, 1.0000005f)), Transform());
    EXPECT_EQ(fromHomogeneous(with(0, 3, 0.002f)).GetTranslate(), Vector3(0.002f, 0, 0));
    EXPECT_EQ(fromHomogeneous(with(0, 3, 0.002f), true).GetTranslate(), Vector3::ZERO);
    const Transform rotated = fromHomogeneous(with(0, 1, -0.0005f));
    EXPECT_TRUE(hasFlags(rotated, {false, true, true}));
    EXPECT_NEAR(rotated.GetRotate()[0][1], -0.0005f, 1e-7f);
    const Transform sheared = fromHomogeneous(with(0, 1, 0.0005f));
    EXPECT_TRUE(hasFlags(sheared, {false, false, false}));
    EXPECT_EQ(sheared.GetMatrix(), Matrix3(1, 0.0005f, 0, 0, 1, 0, 0, 0, 1));
}

// ---------------------------------------------------------------------------------------
// Comparisons, norm, finiteness

TEST(GenericTransformationCompare, EqualityIsBitwiseOnTheMatrixAndByValueElsewhere)
{
    const Transform a = rs(QUARTER_Z, Vector3(1, 2, 3), Vector3(4, 5, 6));
    Transform b = a;
    EXPECT_TRUE(a == b && !(a != b));
    Transform zero = rs(Matrix3(1, 0.0f, 0, 0, 1, 0, 0, 0, 1), Vector3::ONE);
    const Transform negativeZero = rs(Matrix3(1, -0.0f, 0, 0, 1, 0, 0, 0, 1), Vector3::ONE);
    EXPECT_TRUE(!(zero == negativeZero) && zero.Equals(negativeZero));
    zero.SetTranslate(Vector3(0.0f, 1, 1));
    Transform zeroToo = zero;
    zeroToo.SetTranslate(Vector3(-0.0f, 1, 1));
    EXPECT_TRUE(zero == zeroToo);

    const float nan = std::numeric_limits<float>::quiet_NaN();
    Transform nanTranslate = a;
    nanTranslate.SetTranslate(Vector3(nan, 0, 0));
    EXPECT_FALSE(nanTranslate == nanTranslate || nanTranslate.Equals(nanTranslate));
    Transform nanScale = a;
    nanScale.SetScale(Vector3(1, nan, 1));
    EXPECT_FALSE(nanScale == nanScale);
    // The matrix is compared as memory: the same NaN bits are equal there.
    const Transform nanMatrix = general(Matrix3(nan, 0, 0, 0, 1, 0, 0, 0, 1));
    EXPECT_TRUE(nanMatrix == nanMatrix && !nanMatrix.Equals(nanMatrix));

    // The flags count for ==, not for Equals.
    Transform flagged;
    flagged.SetRotate(Matrix3::IDENTITY);
    EXPECT_TRUE(!(flagged == Transform()) && flagged.Equals(Transform()));
    EXPECT_TRUE(general(Matrix3::IDENTITY).Equals(Transform()));
}

TEST(GenericTransformationCompare, EqualsToleratesOneMillionthStrictlyNormAndFiniteness)
{
    // Matrix entries within 1e-6, squared distances of translation and scale within 1e-6.
    using TransformD = zuGenericTransformation<double>;
    using V = Wm4::Vector3d;
    const struct {
        Wm4::Matrix3d matrix;
        V translate, scale;
        bool equal;
    } rows[] = {
        {Wm4::Matrix3d(1 + 0.9e-6, 0, 0, 0, 1, 0, 0, 0, 1), V(0, 0, 0), V(1, 1, 1), true},
        {Wm4::Matrix3d(1, 0, 0, 0, 1, 0, 0, 0, 1 - 1.1e-6), V(0, 0, 0), V(1, 1, 1), false},
        {Wm4::Matrix3d::IDENTITY, V(0, 0.9e-3, 0), V(1, 1, 1), true},
        {Wm4::Matrix3d::IDENTITY, V(0, 0.8e-3, 0.8e-3), V(1, 1, 1), false},
        {Wm4::Matrix3d::IDENTITY, V(0, 0, 0), V(1, 1, 1 + 0.9e-3), true},
        {Wm4::Matrix3d::IDENTITY, V(0, 0, 0), V(1 - 1.1e-3, 1, 1), false},
    };
    for (const auto& row : rows) {
        TransformD t;
        t.SetRotate(row.matrix);
        t.SetTranslate(row.translate);
        t.SetScale(row.scale);
        EXPECT_EQ(t.Equals(TransformD()), row.equal) << row.translate[1] << " " << row.scale[0];
    }

    // The largest scale unless all scales are unit; then the largest row sum of magnitudes.
    const Matrix3 r45 = rotationF(Vector3(0, 0, 1), 45);
    EXPECT_NEAR(rs(r45, Vector3(-1, 1, 1)).GetNorm(), std::sqrt(2.0f), 1e-6f) << "unit magnitudes with a sign";
    EXPECT_EQ(rs(r45, Vector3(1, -3, 2)).GetNorm(), 3.0f);
    EXPECT_EQ(general(Matrix3(1, -2, 0, 0, 1, 0, 3, 0, -1.5f)).GetNorm(), 4.5f);

    const float big = std::numeric_limits<float>::max();
    const float inf = std::numeric_limits<float>::infinity();
    EXPECT_TRUE(rs(Matrix3(big, 0, 0, 0, 1, 0, 0, 0, 1), Vector3(big, 1, 1), Vector3(-big, 0, 0)).IsFinite());
    EXPECT_FALSE(rs(Matrix3::IDENTITY, Vector3(1, inf, 1)).IsFinite()
                 || general(Matrix3(1, 0, 0, 0, 1, 0, 0, 0, -inf)).IsFinite());
    // The scale is checked even when the matrix is general.
    Transform t = rs(Matrix3::IDENTITY, Vector3(std::numeric_limits<float>::quiet_NaN(), 1, 1));
    t.SetMatrix(Matrix3::IDENTITY);
    EXPECT_FALSE(t.IsFinite());
}

// ---------------------------------------------------------------------------------------
// Stream form

TEST(GenericTransformationStream, MatrixByRowsThenTranslationScaleAndThreeFlagBytes)
{
    Transform t;
    t.SetRotate(Matrix3(1, 2, 3, 4, 5, 6, 7, 8, 9));
    t.SetTranslate(Vector3(10, 11, 12));
    t.SetScale(Vector3(13, 14, -15.5f));
    zuBytes expected;
    for (int i = 1; i <= 14; ++i)
        expected.f32(static_cast<float>(i));
    expected.f32(-15.5f).u8(0).u8(1).u8(0);
    ASSERT_EQ(Transform::STREAM_SIZE, 63);
    std::vector<char> bytes(63);
    zuRawStream writer(zuStreamVersion(6, 32));
    writer.openWrite(bytes);
    writer.Write(t);
    EXPECT_EQ(writer.GetOffset(), 63u);
    EXPECT_EQ(bytes, expected.bytes());

    const auto read = [](std::vector<char> data, bool& error) {
        zuRawStream reader(zuStreamVersion(6, 32));
        reader.openRead(data);
        Transform value;
        reader.Read(value);
        error = reader.isStreamError();
        return value;
    };
    bool error = true;
    EXPECT_TRUE(read(bytes, error) == t);
    EXPECT_FALSE(error);
    // Bytes another writer may have left: 2 and 0x80 read as true as well.
    bytes[61] = 2;
    bytes[62] = static_cast<char>(0x80);
    EXPECT_TRUE(hasFlags(read(bytes, error), {false, true, true}));
    // A truncated value is an error, and says so.
    bytes.resize(58);
    zuOutputCapture capturedErr(zuOutputCapture::STDERR);
    read(bytes, error);
    EXPECT_NE(capturedErr.take().find("truncated"), std::string::npos);
    EXPECT_TRUE(error);
}

} // namespace
} // namespace zu::test
