// The transformation value: the flags each setter leaves, every branch of Product and
// Inverse, the 4x4 conversions and the comparisons, on hand-picked values whose results
// are known exactly.

#include <zuSceneGraph/scenegraph/zuGenericTransformation.h>

#include "Wm4/Wm4TestHelpers.h"

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
using Wm4Test::NearM;
using Wm4Test::NearV;

Matrix3 rotation(const Vector3& axis, float degrees)
{
    return Matrix3(axis, degrees * Wm4::Mathf::DEG_TO_RAD);
}

// A quarter turn about z, written exactly: (x, y, z) -> (-y, x, z).
const Matrix3 QUARTER_Z(0, -1, 0, 1, 0, 0, 0, 0, 1);

Transform rs(const Matrix3& rotate, const Vector3& scale, const Vector3& translate = Vector3::ZERO)
{
    Transform t;
    t.SetRotate(rotate);
    t.SetScale(scale);
    t.SetTranslate(translate);
    return t;
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
// Setters and their flags

TEST(GenericTransformationFlags, DefaultAndMakeIdentityAreTheIdentityWithAllFlagsSet)
{
    Transform t;
    EXPECT_TRUE(hasFlags(t, {true, true, true}));
    EXPECT_EQ(t.GetMatrix(), Matrix3::IDENTITY);
    EXPECT_EQ(t.GetTranslate(), Vector3::ZERO);
    EXPECT_EQ(t.GetScale(), Vector3::ONE);

    t.SetMatrix(QUARTER_Z);
    t.SetTranslate(Vector3(1, 2, 3));
    t.SetScale(Vector3(1, 2, 3));
    t.MakeIdentity();
    EXPECT_EQ(t, Transform());
}

TEST(GenericTransformationFlags, MakeUnitScaleSetsTheUniformFlagAndLeavesIdentityAlone)
{
    Transform moved;
    moved.SetTranslate(Vector3(1, 0, 0));
    moved.SetScale(Vector3(1, 2, 3));
    moved.MakeUnitScale();
    EXPECT_EQ(moved.GetScale(), Vector3::ONE);
    EXPECT_TRUE(hasFlags(moved, {false, true, true}));

    Transform fresh;
    fresh.MakeUnitScale();
    EXPECT_TRUE(fresh.IsIdentity());

    Transform g = general(QUARTER_Z);
    g.MakeUnitScale();
    EXPECT_TRUE(hasFlags(g, {false, false, false}));
    EXPECT_TRUE(storedUniformFlag(g));
}

TEST(GenericTransformationFlags, SetRotateMakesTheValueRSAndLeavesTheUniformFlag)
{
    Transform fresh;
    fresh.SetRotate(Matrix3::IDENTITY);
    EXPECT_TRUE(hasFlags(fresh, {false, true, true}));

    Transform g = general(QUARTER_Z);
    g.SetRotate(QUARTER_Z);
    EXPECT_TRUE(hasFlags(g, {false, true, false}));
    EXPECT_EQ(g.GetRotate(), QUARTER_Z);
}

TEST(GenericTransformationFlags, SetMatrixClearsAllThreeFlags)
{
    Transform t;
    t.SetMatrix(Matrix3::IDENTITY);
    EXPECT_TRUE(hasFlags(t, {false, false, false}));
    EXPECT_FALSE(storedUniformFlag(t));
    EXPECT_EQ(t.GetMatrix(), Matrix3::IDENTITY);
}

TEST(GenericTransformationFlags, SetTranslateClearsOnlyIdentity)
{
    Transform t;
    t.SetTranslate(Vector3(0, 0, 0));
    EXPECT_TRUE(hasFlags(t, {false, true, true}));

    Transform g = general(QUARTER_Z);
    g.SetTranslate(Vector3(1, 2, 3));
    EXPECT_TRUE(hasFlags(g, {false, false, false}));
    EXPECT_EQ(g.GetTranslate(), Vector3(1, 2, 3));
}

TEST(GenericTransformationFlags, SetScaleDetectsExactUniformityButCountsOnlyForRS)
{
    Transform t;
    t.SetScale(Vector3(2, 2, 2));
    EXPECT_TRUE(hasFlags(t, {false, true, true}));
    t.SetScale(Vector3(2, 2, 3));
    EXPECT_TRUE(hasFlags(t, {false, true, false}));
    t.SetScale(Vector3(3, 2, 2));
    EXPECT_FALSE(t.IsUniformScale());
    t.SetScale(Vector3(2, std::nextafter(2.0f, 3.0f), 2));
    EXPECT_FALSE(t.IsUniformScale());
    // By value: -0 and +0 are equal.
    t.SetScale(Vector3(-0.0f, 0.0f, 0.0f));
    EXPECT_TRUE(t.IsUniformScale());

    Transform g = general(QUARTER_Z);
    g.SetScale(Vector3(2, 2, 2));
    EXPECT_FALSE(g.IsUniformScale());
    EXPECT_TRUE(storedUniformFlag(g));
}

TEST(GenericTransformationFlags, SetUniformScaleReplicatesAndFlags)
{
    Transform t;
    t.SetScale(Vector3(1, 2, 3));
    t.SetUniformScale(4);
    EXPECT_EQ(t.GetScale(), Vector3(4, 4, 4));
    EXPECT_TRUE(hasFlags(t, {false, true, true}));

    // The uniform scale is scale.x, whatever the other components hold.
    t.SetScale(Vector3(5, 6, 7));
    EXPECT_EQ(t.GetUniformScale(), 5);
}

// ---------------------------------------------------------------------------------------
// Mappings

TEST(GenericTransformationApply, ForwardAndInverseOfEachKind)
{
    const Vector3 x(1, 2, 3);
    Transform identity;
    EXPECT_EQ(identity.ApplyForward(x), x);
    EXPECT_EQ(identity.ApplyInverse(x), x);

    // R·(S⊙X) + T: the scale acts before the rotation.
    const Transform a = rs(QUARTER_Z, Vector3(2, 3, 4), Vector3(10, 20, 30));
    EXPECT_EQ(a.ApplyForward(x), Vector3(-6 + 10, 2 + 20, 12 + 30));
    EXPECT_EQ(a.ApplyForward(x, false), Vector3(-6, 2, 12));
    EXPECT_TRUE(NearV(x, a.ApplyInverse(a.ApplyForward(x))));
    EXPECT_TRUE(NearV(x, a.InvertVector(a.ApplyForward(x, false))));

    const Transform u = rs(QUARTER_Z, Vector3(2, 2, 2), Vector3(1, 1, 1));
    EXPECT_EQ(u.ApplyForward(x), Vector3(-3, 3, 7));
    EXPECT_EQ(u.ApplyInverse(Vector3(-3, 3, 7)), x);

    const Transform g = general(Matrix3(1, 2, 0, 0, 1, 0, 0, 0, 2), Vector3(0, 0, 1));
    EXPECT_EQ(g.ApplyForward(x), Vector3(5, 2, 7));
    EXPECT_TRUE(NearV(x, g.ApplyInverse(Vector3(5, 2, 7))));
    EXPECT_TRUE(NearV(x, g.InvertVector(Vector3(5, 2, 6))));
}

TEST(GenericTransformationApply, ZeroUniformScaleInvertsToTheLargestReal)
{
    Transform t;
    t.SetUniformScale(0);
    t.SetTranslate(Vector3(1, 2, 3));
    const float big = Wm4::Mathf::MAX_REAL;
    EXPECT_EQ(t.ApplyInverse(Vector3(4, 5, 6)), Vector3(big, big, big));
    EXPECT_EQ(t.InvertVector(Vector3(4, 5, 6)), Vector3(big, big, big));
    std::vector<Vector3> points(5, Vector3(1, 1, 1));
    t.ApplyInverse(5, points.data(), points.data());
    for (const Vector3& p : points)
        EXPECT_EQ(p, Vector3(big, big, big));
}

TEST(GenericTransformationApply, GeneralInverseFollowsTheDeterminantRule)
{
    // Determinant -2: refused, the inverse maps everything to the origin.
    const Transform mirrorScale = general(Matrix3(-2, 0, 0, 0, 1, 0, 0, 0, 1));
    EXPECT_EQ(mirrorScale.ApplyInverse(Vector3(1, 2, 3)), Vector3(0, 0, 0));
    // Determinant -1: a reflection inverts.
    const Transform mirror = general(Matrix3(-1, 0, 0, 0, 1, 0, 0, 0, 1));
    EXPECT_EQ(mirror.ApplyInverse(Vector3(1, 2, 3)), Vector3(-1, 2, 3));
}

// The array forms against the single-point form, for every kind, with and without the
// translation, into another array and in place.
TEST(GenericTransformationApply, ArrayFormsMatchTheSinglePointForm)
{
    const std::vector<Transform> kinds = {
        Transform(),
        rs(rotation(Vector3(0, 0.6f, 0.8f), 33), Vector3(1.5f, 1.5f, 1.5f), Vector3(1, -2, 3)),
        rs(rotation(Vector3(0.6f, 0, 0.8f), -71), Vector3(0.5f, 2, -3), Vector3(-4, 5, 6)),
        general(Matrix3(1, 0.5f, 0, 0.25f, 2, 0.1f, 0, -0.3f, 1.2f), Vector3(7, 8, -9)),
    };
    std::vector<Vector3> input;
    for (int i = 0; i < 37; ++i)
        input.emplace_back(0.5f * i - 3, 7.0f - 0.25f * i, 0.125f * i * i - 10);

    for (size_t k = 0; k < kinds.size(); ++k) {
        SCOPED_TRACE(k);
        const Transform& t = kinds[k];
        for (bool withTranslation : {true, false}) {
            std::vector<Vector3> out(input.size());
            t.ApplyForward(static_cast<int>(input.size()), input.data(), out.data(), withTranslation);
            std::vector<Vector3> inPlace = input;
            t.ApplyForward(static_cast<int>(inPlace.size()), inPlace.data(), inPlace.data(), withTranslation);
            for (size_t i = 0; i < input.size(); ++i) {
                const Vector3 expected = t.ApplyForward(input[i], withTranslation);
                EXPECT_TRUE(NearV(expected, out[i])) << i;
                EXPECT_EQ(out[i], inPlace[i]) << i;
                if (t.IsIdentity()) {
                    EXPECT_EQ(out[i], input[i]);
                }
            }
        }
        std::vector<Vector3> out(input.size());
        t.ApplyInverse(static_cast<int>(input.size()), input.data(), out.data());
        std::vector<Vector3> inPlace = input;
        t.ApplyInverse(static_cast<int>(inPlace.size()), inPlace.data(), inPlace.data());
        for (size_t i = 0; i < input.size(); ++i) {
            const Vector3 expected = t.ApplyInverse(input[i]);
            for (int c = 0; c < 3; ++c)
                EXPECT_NEAR(expected[c], out[i][c], 2e-5f * (1 + std::fabs(expected[c]))) << i;
            EXPECT_EQ(out[i], inPlace[i]) << i;
        }
    }

    // No count, no work, no access.
    const Transform& t = kinds[2];
    t.ApplyForward(0, nullptr, nullptr);
    t.ApplyInverse(-1, nullptr, nullptr);
}

TEST(GenericTransformationApply, NormalsMapByTheInverseTransposeAndComeOutUnit)
{
    // Stretching y by 2 tilts the normal of the plane x + y = 1 towards x.
    const Transform stretch = rs(Matrix3::IDENTITY, Vector3(1, 2, 1), Vector3(5, 5, 5));
    const Vector3 n = stretch.ApplyNormal(Vector3(1, 1, 0));
    EXPECT_TRUE(NearV(Vector3(2, 1, 0) / std::sqrt(5.0f), n));

    const Transform turn = rs(QUARTER_Z, Vector3(3, 3, 3));
    EXPECT_TRUE(NearV(Vector3(0, 1, 0), turn.ApplyNormal(Vector3(1, 0, 0))));

    const Transform shear = general(Matrix3(1, 1, 0, 0, 1, 0, 0, 0, 1));
    // Inverse transpose of the shear: (x, y, z) -> (x, y - x, z).
    EXPECT_TRUE(NearV(Vector3(1, -1, 0) / std::sqrt(2.0f), shear.ApplyNormal(Vector3(1, 0, 0))));

    EXPECT_EQ(turn.ApplyNormal(Vector3(0, 0, 0)), Vector3(0, 0, 0));
    // A singular matrix inverts to ZERO, and nothing is left to normalise.
    const Transform flat = general(Matrix3(1, 0, 0, 0, 1, 0, 0, 0, 0));
    EXPECT_EQ(flat.ApplyNormal(Vector3(0, 0, 1)), Vector3(0, 0, 0));
    // A length too small to square is zero.
    EXPECT_EQ(Transform().ApplyNormal(Vector3(1e-39f, 0, 0)), Vector3(0, 0, 0));
}

TEST(GenericTransformationApply, PlanesOfEachKind)
{
    const Plane3 plane(Vector3(1, 0, 0), 1.0f);
    EXPECT_EQ(Transform().ApplyForward(plane), plane);

    // Uniform: n' = R·n, c' = s·c + n'·T, without renormalisation.
    const Transform uniform = rs(QUARTER_Z, Vector3(2, 2, 2), Vector3(1, 2, 3));
    EXPECT_EQ(uniform.ApplyForward(plane), Plane3(Vector3(0, 1, 0), 4.0f));
    EXPECT_EQ(uniform.ApplyForward(Plane3(Vector3(2, 0, 0), 1.0f)), Plane3(Vector3(0, 2, 0), 6.0f));

    // Non-uniform and general: unit normal, and the images of points of the plane lie on it
    // with the same side kept.
    const Transform stretch = rs(QUARTER_Z, Vector3(2, 4, 1), Vector3(1, -1, 2));
    const Transform shear = general(Matrix3(1, 1, 0, 0, 1, 0.5f, 0, 0, 2), Vector3(-3, 1, 0));
    const Plane3 slanted(Vector3(1, 1, 0) / std::sqrt(2.0f), std::sqrt(2.0f));
    for (const Transform* t : {&stretch, &shear}) {
        const Plane3 mapped = t->ApplyForward(slanted);
        EXPECT_NEAR(mapped.Normal.Length(), 1.0f, 1e-6f);
        for (const Vector3& onPlane : {Vector3(2, 0, 0), Vector3(0, 2, 0), Vector3(1, 1, 5)})
            EXPECT_NEAR(mapped.DistanceTo(t->ApplyForward(onPlane)), 0.0f, 1e-5f);
        EXPECT_GT(mapped.DistanceTo(t->ApplyForward(Vector3(3, 3, 0))), 0.0f);
    }
    // Non-uniform, exactly: n'' = R·(n⊙(1/S)) = R·(0.5, 0.25, 0) = (-0.25, 0.5, 0).
    const Plane3 mapped = stretch.ApplyForward(Plane3(Vector3(1, 1, 0), 1.0f));
    const float length = std::sqrt(0.3125f);
    EXPECT_TRUE(NearV(Vector3(-0.25f, 0.5f, 0) / length, mapped.Normal));
    EXPECT_NEAR(mapped.Constant, 1 / length + mapped.Normal.Dot(Vector3(1, -1, 2)), 1e-6f);
}

// ---------------------------------------------------------------------------------------
// Product: this = a∘b

TEST(GenericTransformationProduct, AnIdentityFactorCopiesTheOtherWithItsFlags)
{
    const Transform b = general(Matrix3(1, 2, 3, 4, 5, 6, 7, 8, 10), Vector3(1, 2, 3));
    Transform result;
    result.Product(Transform(), b);
    EXPECT_EQ(result, b);
    result.Product(b, Transform());
    EXPECT_EQ(result, b);

    Transform self = rs(QUARTER_Z, Vector3(1, 2, 3));
    const Transform copy = self;
    self.Product(Transform(), self);
    EXPECT_EQ(self, copy);
}

TEST(GenericTransformationProduct, UniformLeftFactorKeepsRS)
{
    const Matrix3 ra = rotation(Vector3(0, 0, 1), 30);
    const Matrix3 rb = rotation(Vector3(1, 0, 0), 45);
    const Transform a = rs(ra, Vector3(2, 2, 2), Vector3(1, 2, 3));
    const Vector3 tb(4, 5, 6);

    Transform result;
    result.Product(a, rs(rb, Vector3(3, 3, 3), tb));
    EXPECT_TRUE(hasFlags(result, {false, true, true}));
    EXPECT_EQ(result.GetRotate(), ra * rb);
    EXPECT_EQ(result.GetScale(), Vector3(6, 6, 6));
    EXPECT_EQ(result.GetTranslate(), (ra * tb) * 2.0f + Vector3(1, 2, 3));

    result.Product(a, rs(rb, Vector3(1, 2, 3), tb));
    EXPECT_TRUE(hasFlags(result, {false, true, false}));
    EXPECT_EQ(result.GetScale(), Vector3(2, 4, 6));

    // Equal scales under a clear flag: the flag of the result is recomputed from the values.
    result.Product(a, rsFlaggedNonUniform(rb, Vector3(1, 1, 1), tb));
    EXPECT_TRUE(hasFlags(result, {false, true, true}));
    EXPECT_EQ(result.GetScale(), Vector3(2, 2, 2));

    // Either factor may be the result.
    Transform self = a;
    self.Product(self, self);
    EXPECT_EQ(self.GetScale(), Vector3(4, 4, 4));
    EXPECT_EQ(self.GetTranslate(), (ra * Vector3(1, 2, 3)) * 2.0f + Vector3(1, 2, 3));
}

TEST(GenericTransformationProduct, AxisAlignedScaleTakesTheRotationOfAUniformRightFactorAsIs)
{
    // a scales the axes differently; b turns a quarter about z with uniform scale 2.
    const Transform a = rs(Matrix3::IDENTITY, Vector3(1, 2, 3), Vector3(10, 20, 30));
    const Transform b = rs(QUARTER_Z, Vector3(2, 2, 2), Vector3(1, 1, 1));
    Transform result;
    result.Product(a, b);
    EXPECT_TRUE(hasFlags(result, {false, true, false}));
    EXPECT_EQ(result.GetRotate(), QUARTER_Z);
    EXPECT_EQ(result.GetScale(), Vector3(2, 4, 6));
    EXPECT_EQ(result.GetTranslate(), Vector3(11, 22, 33));

    // b's rotation stays outside a's scale: x goes to R_b·(2, 0, 0) = (0, 2, 0), where the
    // exact composition S_a·R_b·2 would reach (0, 4, 0).
    const Vector3 x(1, 0, 0);
    EXPECT_EQ(result.ApplyForward(x, false), Vector3(0, 2, 0));
    EXPECT_EQ(a.ApplyForward(b.ApplyForward(x, false), false), Vector3(0, 4, 0));

    // The result's flag comes from the values: equal scales of a flagged non-uniform.
    const Transform flat = rsFlaggedNonUniform(Matrix3::IDENTITY, Vector3(1, 1, 1));
    result.Product(flat, b);
    EXPECT_TRUE(hasFlags(result, {false, true, true}));
    EXPECT_EQ(result.GetScale(), Vector3(2, 2, 2));
}

TEST(GenericTransformationProduct, TwoAxisAlignedScalesMultiply)
{
    const Transform a = rs(Matrix3::IDENTITY, Vector3(1, 2, 3), Vector3(10, 20, 30));
    const Transform b = rs(Matrix3::IDENTITY, Vector3(2, 3, 4), Vector3(1, 1, 1));
    Transform result;
    result.Product(a, b);
    EXPECT_TRUE(hasFlags(result, {false, true, false}));
    EXPECT_EQ(result.GetRotate(), Matrix3::IDENTITY);
    EXPECT_EQ(result.GetScale(), Vector3(2, 6, 12));
    EXPECT_EQ(result.GetTranslate(), Vector3(11, 22, 33));

    result.Product(a, rs(Matrix3::IDENTITY, Vector3(3, 1.5f, 1)));
    EXPECT_TRUE(hasFlags(result, {false, true, true}));
    EXPECT_EQ(result.GetScale(), Vector3(3, 3, 3));
}

TEST(GenericTransformationProduct, EverythingElseBecomesGeneral)
{
    const Transform a = rs(Matrix3::IDENTITY, Vector3(1, 2, 3), Vector3(10, 20, 30));
    Transform result;

    // Non-uniform right factor with a rotation.
    result.Product(a, rs(QUARTER_Z, Vector3(1, 1, 2), Vector3(1, 1, 1)));
    EXPECT_TRUE(hasFlags(result, {false, false, false}));
    EXPECT_EQ(result.GetMatrix(), Matrix3(0, -1, 0, 2, 0, 0, 0, 0, 6));
    EXPECT_EQ(result.GetTranslate(), Vector3(11, 22, 33));
    EXPECT_EQ(result.GetScale(), Vector3::ONE);

    // a's rotation must be the identity bit for bit: a -0 entry is enough to refuse the
    // shortcut.
    const Transform aNegZero = rs(Matrix3(1, -0.0f, 0, 0, 1, 0, 0, 0, 1), Vector3(1, 2, 3));
    result.Product(aNegZero, rs(QUARTER_Z, Vector3(2, 2, 2)));
    EXPECT_TRUE(hasFlags(result, {false, false, false}));
    EXPECT_TRUE(NearM(Matrix3(0, -2, 0, 4, 0, 0, 0, 0, 6), result.GetMatrix()));

    // Rotated non-uniform left factor.
    result.Product(rs(QUARTER_Z, Vector3(1, 2, 1)), rs(Matrix3::IDENTITY, Vector3(2, 2, 2)));
    EXPECT_TRUE(hasFlags(result, {false, false, false}));
    EXPECT_EQ(result.GetMatrix(), Matrix3(0, -4, 0, 2, 0, 0, 0, 0, 2));

    // A general factor on either side.
    const Matrix3 m(1, 2, 0, 0, 1, 0, 0, 0, 1);
    result.Product(general(m, Vector3(1, 0, 0)), rs(QUARTER_Z, Vector3(2, 2, 2), Vector3(0, 1, 0)));
    EXPECT_TRUE(hasFlags(result, {false, false, false}));
    EXPECT_EQ(result.GetMatrix(), Matrix3(4, -2, 0, 2, 0, 0, 0, 0, 2));
    EXPECT_EQ(result.GetTranslate(), Vector3(3, 1, 0));
    result.Product(rs(QUARTER_Z, Vector3(2, 2, 2)), general(m));
    EXPECT_TRUE(hasFlags(result, {false, false, false}));
}

// ---------------------------------------------------------------------------------------
// Inverse

::testing::AssertionResult invertsExactly(const Transform& t, const Transform& inverse)
{
    for (const Vector3& x : {Vector3(1, 2, 3), Vector3(-4, 0.5f, 2), Vector3(0, 0, -7)}) {
        const Vector3 back = inverse.ApplyForward(t.ApplyForward(x));
        ::testing::AssertionResult near = NearV(x, back);
        if (!near)
            return near;
    }
    return ::testing::AssertionSuccess();
}

TEST(GenericTransformationInverse, IdentityCopiesItself)
{
    Transform out = rs(QUARTER_Z, Vector3(1, 2, 3));
    Transform().Inverse(out);
    EXPECT_EQ(out, Transform());
}

TEST(GenericTransformationInverse, UniformRSTransposesTheRotation)
{
    const Matrix3 r = rotation(Vector3(0, 0, 1), 30);
    const Transform t = rs(r, Vector3(2, 2, 2), Vector3(1, 2, 3));
    Transform out;
    t.Inverse(out);
    EXPECT_TRUE(hasFlags(out, {false, true, true}));
    EXPECT_EQ(out.GetRotate(), r.Transpose());
    EXPECT_EQ(out.GetScale(), Vector3(0.5f, 0.5f, 0.5f));
    EXPECT_EQ(out.GetTranslate(), -((r.Transpose() * Vector3(1, 2, 3)) * 0.5f));
    EXPECT_TRUE(invertsExactly(t, out));

    // In place, and with a negative uniform scale.
    Transform self = rs(r, Vector3(-2, -2, -2), Vector3(1, 2, 3));
    const Transform copy = self;
    self.Inverse(self);
    EXPECT_EQ(self.GetScale(), Vector3(-0.5f, -0.5f, -0.5f));
    EXPECT_TRUE(invertsExactly(copy, self));
}

TEST(GenericTransformationInverse, EqualMagnitudesWithSignsStayRS)
{
    const Matrix3 r = rotation(Vector3(0.6f, 0.8f, 0), 40);
    Transform out;

    // One negative component: one mirror is left, on x, and the inverse is not uniform.
    const Transform one = rs(r, Vector3(-2, 2, 2), Vector3(1, 2, 3));
    one.Inverse(out);
    EXPECT_TRUE(hasFlags(out, {false, true, false}));
    EXPECT_EQ(out.GetScale(), Vector3(-0.5f, 0.5f, 0.5f));
    Matrix3 expected = r.Transpose();
    for (int c = 0; c < 3; ++c)
        expected[0][c] = -expected[0][c];
    for (int row = 0; row < 3; ++row)
        expected[row][0] = -expected[row][0];
    EXPECT_EQ(out.GetRotate(), expected);
    EXPECT_TRUE(invertsExactly(one, out));

    // The same with the mirror on y.
    const Transform onY = rs(r, Vector3(2, -2, 2), Vector3(1, 2, 3));
    onY.Inverse(out);
    EXPECT_EQ(out.GetScale(), Vector3(-0.5f, 0.5f, 0.5f));
    EXPECT_TRUE(invertsExactly(onY, out));

    // Two negative components cancel: a proper rotation and a uniform inverse.
    const Transform two = rs(r, Vector3(-2, -2, 2), Vector3(1, 2, 3));
    two.Inverse(out);
    EXPECT_TRUE(hasFlags(out, {false, true, true}));
    EXPECT_EQ(out.GetScale(), Vector3(0.5f, 0.5f, 0.5f));
    EXPECT_NEAR(out.GetRotate().Determinant(), 1.0f, 1e-6f);
    EXPECT_TRUE(invertsExactly(two, out));

    // Three negative components under a clear uniform flag.
    const Transform three = rsFlaggedNonUniform(r, Vector3(-2, -2, -2), Vector3(1, 2, 3));
    three.Inverse(out);
    EXPECT_TRUE(hasFlags(out, {false, true, false}));
    EXPECT_EQ(out.GetScale(), Vector3(-0.5f, 0.5f, 0.5f));
    EXPECT_TRUE(invertsExactly(three, out));

    // Equal positive scales under a clear uniform flag.
    const Transform plain = rsFlaggedNonUniform(r, Vector3(4, 4, 4), Vector3(1, 2, 3));
    plain.Inverse(out);
    EXPECT_TRUE(hasFlags(out, {false, true, true}));
    EXPECT_EQ(out.GetRotate(), r.Transpose());
    EXPECT_EQ(out.GetScale(), Vector3(0.25f, 0.25f, 0.25f));
    EXPECT_TRUE(invertsExactly(plain, out));
}

TEST(GenericTransformationInverse, DifferentMagnitudesBecomeGeneral)
{
    const Transform t = rs(QUARTER_Z, Vector3(1, 2, -4), Vector3(1, 2, 3));
    Transform out;
    t.Inverse(out);
    EXPECT_TRUE(hasFlags(out, {false, false, false}));
    // diag(1, 1/2, -1/4)·Rᵀ
    EXPECT_TRUE(NearM(Matrix3(0, 1, 0, -0.5f, 0, 0, 0, 0, -0.25f), out.GetMatrix()));
    EXPECT_EQ(out.GetScale(), Vector3::ONE);
    EXPECT_EQ(out.GetTranslate(), Vector3(-2, 0.5f, 0.75f));
    EXPECT_TRUE(invertsExactly(t, out));
}

TEST(GenericTransformationInverse, GeneralMatricesFollowTheDeterminantRule)
{
    const Transform shear = general(Matrix3(1, 2, 0, 0, 1, 0, 0, 0, 2), Vector3(1, 2, 3));
    Transform out;
    shear.Inverse(out);
    EXPECT_TRUE(hasFlags(out, {false, false, false}));
    EXPECT_EQ(out.GetMatrix(), Matrix3(1, -2, 0, 0, 1, 0, 0, 0, 0.5f));
    EXPECT_EQ(out.GetTranslate(), Vector3(3, -2, -1.5f));
    EXPECT_EQ(out.GetScale(), Vector3::ONE);

    // Determinant -1 inverts, -2 does not.
    general(Matrix3(0, 1, 0, 1, 0, 0, 0, 0, 1)).Inverse(out);
    EXPECT_TRUE(NearM(Matrix3(0, 1, 0, 1, 0, 0, 0, 0, 1), out.GetMatrix()));

    general(Matrix3(0, 2, 0, 1, 0, 0, 0, 0, 1), Vector3(1, 1, 1)).Inverse(out);
    EXPECT_EQ(out.GetMatrix(), Matrix3::ZERO);
    EXPECT_TRUE(hasFlags(out, {false, false, false}));
}

// ---------------------------------------------------------------------------------------
// 4x4 matrices

TEST(GenericTransformationHomogeneous, RowsHoldTheColumnsOfTheScaledRotationAndTheTranslationLast)
{
    Matrix4 h;
    rs(QUARTER_Z, Vector3(2, 3, 4), Vector3(5, 6, 7)).GetHomogeneous(h);
    // R·diag(S) = ((0, -3, 0), (2, 0, 0), (0, 0, 4)), by rows.
    EXPECT_EQ(h, Matrix4(0, 2, 0, 0, -3, 0, 0, 0, 0, 0, 4, 0, 5, 6, 7, 1));

    general(Matrix3(1, 2, 3, 4, 5, 6, 7, 8, 9), Vector3(-1, -2, -3)).GetHomogeneous(h);
    EXPECT_EQ(h, Matrix4(1, 4, 7, 0, 2, 5, 8, 0, 3, 6, 9, 0, -1, -2, -3, 1));

    Transform().GetHomogeneous(h);
    EXPECT_EQ(h, Matrix4::IDENTITY);
}

TEST(GenericTransformationHomogeneous, RoundTripsRSValuesInBothLayouts)
{
    const Transform uniform = rs(rotation(Vector3(0.48f, 0.6f, 0.64f), 57), Vector3(2.5f, 2.5f, 2.5f), Vector3(1, -2, 3));
    Matrix4 h;
    uniform.GetHomogeneous(h);
    Transform back;
    back.FromHomogeneousMatrix(h, true);
    EXPECT_TRUE(back.Equals(uniform));
    EXPECT_TRUE(hasFlags(back, {false, true, true}));

    back.FromHomogeneousMatrix(h.Transpose(), false);
    EXPECT_TRUE(back.Equals(uniform));
    EXPECT_TRUE(hasFlags(back, {false, true, true}));

    const Transform stretched = rs(rotation(Vector3(0, 0.6f, 0.8f), -20), Vector3(1, 2, 3), Vector3(4, 5, 6));
    stretched.GetHomogeneous(h);
    back.FromHomogeneousMatrix(h, true);
    EXPECT_TRUE(back.Equals(stretched));
    EXPECT_TRUE(hasFlags(back, {false, true, false}));

    // A pure rotation keeps the unit scale; a pure scale keeps the identity rotation.
    rs(QUARTER_Z, Vector3::ONE).GetHomogeneous(h);
    back.FromHomogeneousMatrix(h, true);
    EXPECT_EQ(back.GetRotate(), QUARTER_Z);
    EXPECT_EQ(back.GetScale(), Vector3::ONE);
    EXPECT_TRUE(hasFlags(back, {false, true, true}));
    back.FromHomogeneousMatrix(Matrix4(3, 3, 3, 1), false);
    EXPECT_EQ(back.GetRotate(), Matrix3::IDENTITY);
    EXPECT_EQ(back.GetScale(), Vector3(3, 3, 3));
    EXPECT_TRUE(hasFlags(back, {false, true, true}));
}

TEST(GenericTransformationHomogeneous, SmallTranslationsAndNearIdentityPartsAreDropped)
{
    Transform t;
    Matrix4 h = Matrix4::IDENTITY;
    h[0][3] = 0.0005f;
    t.FromHomogeneousMatrix(h, false);
    EXPECT_EQ(t, Transform());

    h[0][3] = 0.002f;
    t.FromHomogeneousMatrix(h, false);
    EXPECT_TRUE(hasFlags(t, {false, true, true}));
    EXPECT_EQ(t.GetTranslate(), Vector3(0.002f, 0, 0));
    // The same entry is not a translation in the transposed layout.
    t.FromHomogeneousMatrix(h, true);
    EXPECT_EQ(t.GetTranslate(), Vector3::ZERO);

    h = Matrix4::IDENTITY;
    h[1][1] = 1.0000005f;
    t.FromHomogeneousMatrix(h, false);
    EXPECT_EQ(t, Transform());
}

TEST(GenericTransformationHomogeneous, NonRSMatricesBecomeGeneral)
{
    Transform t;
    // A shear: the columns are not orthogonal.
    Matrix4 h(1, 0.5f, 0, 2, 0, 1, 0, 3, 0, 0, 1, 4, 0, 0, 0, 1);
    t.FromHomogeneousMatrix(h, false);
    EXPECT_TRUE(hasFlags(t, {false, false, false}));
    EXPECT_EQ(t.GetMatrix(), Matrix3(1, 0.5f, 0, 0, 1, 0, 0, 0, 1));
    EXPECT_EQ(t.GetTranslate(), Vector3(2, 3, 4));
    EXPECT_EQ(t.GetScale(), Vector3::ONE);

    // A flattening: a zero column.
    t.FromHomogeneousMatrix(Matrix4(1, 1, 0, 1), false);
    EXPECT_TRUE(hasFlags(t, {false, false, false}));
    EXPECT_EQ(t.GetMatrix(), Matrix3(1, 1, 0));
}

TEST(GenericTransformationHomogeneous, TheOffDiagonalTestIsSigned)
{
    // Columns within the orthonormality tolerance; only the sign of the small off-diagonal
    // entry differs.
    Transform t;
    Matrix4 h = Matrix4::IDENTITY;
    h[0][1] = -0.0005f;
    t.FromHomogeneousMatrix(h, false);
    EXPECT_TRUE(hasFlags(t, {false, true, true}));
    EXPECT_NEAR(t.GetRotate()[0][1], -0.0005f, 1e-7f);
    EXPECT_EQ(t.GetScale(), Vector3::ONE);

    h[0][1] = 0.0005f;
    t.FromHomogeneousMatrix(h, false);
    EXPECT_TRUE(hasFlags(t, {false, false, false}));
    EXPECT_EQ(t.GetMatrix(), Matrix3(1, 0.0005f, 0, 0, 1, 0, 0, 0, 1));
}

TEST(GenericTransformationHomogeneous, AMirrorIsKeptInTheXScale)
{
    Transform t;
    t.FromHomogeneousMatrix(Matrix4(2, -2, 2, 1), false);
    EXPECT_TRUE(hasFlags(t, {false, true, false}));
    EXPECT_EQ(t.GetRotate()[0][0], -1.0f);
    EXPECT_EQ(t.GetScale(), Vector3(-2, 2, 2));
    EXPECT_TRUE(NearV(Vector3(2, -4, 6), t.ApplyForward(Vector3(1, 2, 3))));

    t.FromHomogeneousMatrix(Matrix4(-2, 2, 2, 1), false);
    EXPECT_EQ(t.GetRotate(), Matrix3::IDENTITY);
    EXPECT_EQ(t.GetScale(), Vector3(-2, 2, 2));
    EXPECT_TRUE(hasFlags(t, {false, true, false}));
}

// ---------------------------------------------------------------------------------------
// Comparisons, norm, finiteness

TEST(GenericTransformationCompare, EqualityIsBitwiseOnTheMatrixAndByValueElsewhere)
{
    const Transform a = rs(QUARTER_Z, Vector3(1, 2, 3), Vector3(4, 5, 6));
    Transform b = a;
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);

    Transform zero = rs(Matrix3(1, 0.0f, 0, 0, 1, 0, 0, 0, 1), Vector3::ONE);
    Transform negativeZero = rs(Matrix3(1, -0.0f, 0, 0, 1, 0, 0, 0, 1), Vector3::ONE);
    EXPECT_FALSE(zero == negativeZero);
    EXPECT_TRUE(zero.Equals(negativeZero));

    zero.SetTranslate(Vector3(0.0f, 1, 1));
    Transform zeroToo = zero;
    zeroToo.SetTranslate(Vector3(-0.0f, 1, 1));
    EXPECT_TRUE(zero == zeroToo);

    const float nan = std::numeric_limits<float>::quiet_NaN();
    Transform nanTranslate = a;
    nanTranslate.SetTranslate(Vector3(nan, 0, 0));
    EXPECT_FALSE(nanTranslate == nanTranslate);
    EXPECT_FALSE(nanTranslate.Equals(nanTranslate));
    Transform nanScale = a;
    nanScale.SetScale(Vector3(1, nan, 1));
    EXPECT_FALSE(nanScale == nanScale);
    // The matrix is compared as memory: the same NaN bits are equal there.
    Transform nanMatrix = general(Matrix3(nan, 0, 0, 0, 1, 0, 0, 0, 1));
    EXPECT_TRUE(nanMatrix == nanMatrix);
    EXPECT_FALSE(nanMatrix.Equals(nanMatrix));

    // The flags count for ==, not for Equals.
    Transform flagged;
    flagged.SetRotate(Matrix3::IDENTITY);
    EXPECT_FALSE(flagged == Transform());
    EXPECT_TRUE(flagged.Equals(Transform()));
    EXPECT_TRUE(general(Matrix3::IDENTITY).Equals(Transform()));
}

TEST(GenericTransformationCompare, EqualsToleratesOneMillionthStrictly)
{
    using TransformD = zuGenericTransformation<double>;
    const TransformD base;

    TransformD t;
    t.SetMatrix(Wm4::Matrix3d(1 + 0.9e-6, 0, 0, 0, 1, 0, 0, 0, 1));
    EXPECT_TRUE(t.Equals(base));
    t.SetMatrix(Wm4::Matrix3d(1, 0, 0, 0, 1, 0, 0, 0, 1 - 1.1e-6));
    EXPECT_FALSE(t.Equals(base));

    // Squared distances: 0.9e-3 squared passes, 1.1e-3 squared does not.
    t = TransformD();
    t.SetTranslate(Wm4::Vector3d(0, 0.9e-3, 0));
    EXPECT_TRUE(t.Equals(base));
    t.SetTranslate(Wm4::Vector3d(0, 0.8e-3, 0.8e-3));
    EXPECT_FALSE(t.Equals(base));
    t = TransformD();
    t.SetScale(Wm4::Vector3d(1, 1, 1 + 0.9e-3));
    EXPECT_TRUE(t.Equals(base));
    t.SetScale(Wm4::Vector3d(1 - 1.1e-3, 1, 1));
    EXPECT_FALSE(t.Equals(base));
}

TEST(GenericTransformationCompare, NormIsTheLargestScaleUnlessAllScalesAreUnit)
{
    const Matrix3 r45 = rotation(Vector3(0, 0, 1), 45);
    EXPECT_NEAR(rs(r45, Vector3::ONE).GetNorm(), std::sqrt(2.0f), 1e-6f);
    EXPECT_EQ(rs(r45, Vector3(2, 2, 2)).GetNorm(), 2.0f);
    EXPECT_EQ(rs(r45, Vector3(1, -3, 2)).GetNorm(), 3.0f);
    // Unit magnitudes with a sign fall through to the rows as well.
    EXPECT_NEAR(rs(r45, Vector3(-1, 1, 1)).GetNorm(), std::sqrt(2.0f), 1e-6f);
    EXPECT_EQ(rs(r45, Vector3(1, 1, 0.5f)).GetNorm(), 1.0f);
    EXPECT_EQ(Transform().GetNorm(), 1.0f);
    // A general matrix: the largest row sum of magnitudes.
    EXPECT_EQ(general(Matrix3(1, -2, 0, 0, 1, 0, 3, 0, -1.5f)).GetNorm(), 4.5f);
}

TEST(GenericTransformationCompare, FiniteMeansNoNaNAndNoInfinityAnywhere)
{
    EXPECT_TRUE(Transform().IsFinite());
    const float big = std::numeric_limits<float>::max();
    EXPECT_TRUE(rs(Matrix3(big, 0, 0, 0, 1, 0, 0, 0, 1), Vector3(big, 1, 1), Vector3(-big, 0, 0)).IsFinite());

    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Transform t;
    t.SetTranslate(Vector3(0, 0, nan));
    EXPECT_FALSE(t.IsFinite());
    t = Transform();
    t.SetScale(Vector3(1, inf, 1));
    EXPECT_FALSE(t.IsFinite());
    t = general(Matrix3(1, 0, 0, 0, 1, 0, 0, 0, -inf));
    EXPECT_FALSE(t.IsFinite());
    // The scale is checked even when the matrix is general.
    t.SetScale(Vector3(nan, 1, 1));
    t.SetMatrix(Matrix3::IDENTITY);
    EXPECT_FALSE(t.IsFinite());

    zuGenericTransformation<double> d;
    d.SetTranslate(Wm4::Vector3d(std::numeric_limits<double>::max(), 0, 0));
    EXPECT_TRUE(d.IsFinite());
    d.SetTranslate(Wm4::Vector3d(std::numeric_limits<double>::infinity(), 0, 0));
    EXPECT_FALSE(d.IsFinite());
}

} // namespace
} // namespace zu::test
