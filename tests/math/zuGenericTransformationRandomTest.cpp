// The transformation against plain 4x4 matrices in double precision, on random values of
// every kind: each value's 4x4 is built here from its fields, and products and inverses are
// those of the 4x4 matrices, independent of the class's own code.

#include "zusgW1Layout.h"

#include <zuSceneGraph/math/zuGenericTransformation.h>

#include <Wm4/Wm4Matrix4.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace zu::test {
namespace {

// Plain 4x4 matrices in double, column-vector convention: Y = H·(X, 1).
using Mat4 = Wm4::Matrix4<double>;

std::array<double, 4> apply(const Mat4& m, double x, double y, double z, double w)
{
    const Wm4::Vector4<double> r = m * Wm4::Vector4<double>(x, y, z, w);
    return {r[0], r[1], r[2], r[3]};
}

// The 4x4 of a transformation, from its fields alone.
template <class Real>
Mat4 toMatrix(const zuGenericTransformation<Real>& t)
{
    if (t.IsIdentity())
        return Mat4::IDENTITY;
    Mat4 m = Mat4::IDENTITY;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            m(i, j) = t.GetMatrix()[i][j];
            if (t.IsRSMatrix())
                m(i, j) *= t.GetScale()[j];
        }
        m(i, 3) = t.GetTranslate()[i];
    }
    return m;
}

// The workloads' splitmix64, seeded: the same values on every machine.
class Random {
public:
    explicit Random(uint64_t seed) : mBits(seed) {}
    uint64_t next() { return mBits.next(); }
    double unit() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
    double range(double low, double high) { return low + (high - low) * unit(); }
    // A magnitude in [0.5, 2] with a random sign.
    double scale() { return range(0.5, 2) * (next() & 1 ? -1 : 1); }

private:
    zusg::SplitMix64 mBits;
};

enum Kind { IDENTITY, UNIFORM, NON_UNIFORM, AXIS_ALIGNED, AXIS_ALIGNED_UNIFORM, SIGNED_EQUAL, GENERAL, KIND_COUNT };

template <class Real>
zuGenericTransformation<Real> randomTransform(Random& random, Kind kind)
{
    using Vector3 = Wm4::Vector3<Real>;
    using Matrix3 = Wm4::Matrix3<Real>;
    zuGenericTransformation<Real> t;
    if (kind == IDENTITY)
        return t;
    Vector3 axis(static_cast<Real>(random.range(-1, 1)), static_cast<Real>(random.range(-1, 1)),
                 static_cast<Real>(random.range(-1, 1)));
    axis.Normalize();
    const Matrix3 rotate(axis, static_cast<Real>(random.range(-3.1, 3.1)));
    const Vector3 translate(static_cast<Real>(random.range(-10, 10)), static_cast<Real>(random.range(-10, 10)),
                            static_cast<Real>(random.range(-10, 10)));
    const Real s = static_cast<Real>(random.scale());
    switch (kind) {
    case UNIFORM:
        t.SetRotate(rotate);
        t.SetUniformScale(s);
        break;
    case NON_UNIFORM:
        t.SetRotate(rotate);
        t.SetScale(Vector3(s, static_cast<Real>(random.scale()), static_cast<Real>(random.scale())));
        break;
    case AXIS_ALIGNED:
        t.SetScale(Vector3(s, static_cast<Real>(random.scale()), static_cast<Real>(random.scale())));
        break;
    case AXIS_ALIGNED_UNIFORM:
        t.SetUniformScale(s);
        break;
    case SIGNED_EQUAL: {
        t.SetRotate(rotate);
        const Real y = random.next() & 1 ? s : -s;
        const Real z = random.next() & 1 ? s : -s;
        t.SetScale(Vector3(s, y, z));
        break;
    }
    default: {
        // Diagonally dominant, so the determinant stays well above the inverse's tolerance.
        Matrix3 m;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                m[i][j] = static_cast<Real>(random.range(-0.4, 0.4) + (i == j ? 1.5 : 0));
        t.SetMatrix(m);
        break;
    }
    }
    t.SetTranslate(translate);
    return t;
}

// Within the rounding of Real, relative to the expected value.
template <class Real, class Value>
::testing::AssertionResult near(const double* expected, const Value* actual, int count)
{
    const double tolerance = sizeof(Real) == sizeof(float) ? 1e-4 : 1e-10;
    for (int i = 0; i < count; ++i)
        if (!(std::fabs(expected[i] - actual[i]) <= tolerance * (1 + std::fabs(expected[i]))))
            return ::testing::AssertionFailure() << "entry " << i << ": expected " << expected[i] << ", got " << actual[i];
    return ::testing::AssertionSuccess();
}

template <class Real>
::testing::AssertionResult nearMatrix(const Mat4& expected, const Mat4& actual)
{
    return near<Real>(static_cast<const double*>(expected), static_cast<const double*>(actual), 16);
}

template <class Real>
::testing::AssertionResult nearPoint(const std::array<double, 4>& expected, const Wm4::Vector3<Real>& actual)
{
    return near<Real>(expected.data(), static_cast<const Real*>(actual), 3);
}

template <class Real>
class GenericTransformationRandom : public ::testing::Test {
protected:
    Wm4::Vector3<Real> randomPoint()
    {
        return Wm4::Vector3<Real>(static_cast<Real>(mRandom.range(-20, 20)), static_cast<Real>(mRandom.range(-20, 20)),
                                  static_cast<Real>(mRandom.range(-20, 20)));
    }
    Kind randomKind() { return static_cast<Kind>(mRandom.next() % KIND_COUNT); }

    Random mRandom{42};
};

using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(GenericTransformationRandom, RealTypes);

constexpr int ROUNDS = 3000;

// Points, directions and arrays (into another array and in place), the inverse, normals,
// planes and the 4x4 round trip of one value.
TYPED_TEST(GenericTransformationRandom, EachValueMapsAsIts4x4)
{
    using Real = TypeParam;
    using Transform = zuGenericTransformation<Real>;
    using Vector3 = Wm4::Vector3<Real>;
    using Plane3 = Wm4::Plane3<Real>;
    for (int round = 0; round < ROUNDS; ++round) {
        const Kind kind = this->randomKind();
        const Transform t = randomTransform<Real>(this->mRandom, kind);
        SCOPED_TRACE(::testing::Message() << "round " << round << ", kind " << kind);
        const Mat4 h = toMatrix(t);
        const Mat4 hInverse = h.Inverse();

        std::vector<Vector3> points(7);
        for (Vector3& p : points)
            p = this->randomPoint();
        const int count = static_cast<int>(points.size());
        std::vector<Vector3> forward(points.size()), directions(points.size()), inverse(points.size());
        std::vector<Vector3> forwardInPlace = points, directionsInPlace = points, inverseInPlace = points;
        t.ApplyForward(count, points.data(), forward.data());
        t.ApplyForward(count, points.data(), directions.data(), false);
        t.ApplyInverse(count, points.data(), inverse.data());
        t.ApplyForward(count, forwardInPlace.data(), forwardInPlace.data());
        t.ApplyForward(count, directionsInPlace.data(), directionsInPlace.data(), false);
        t.ApplyInverse(count, inverseInPlace.data(), inverseInPlace.data());
        for (size_t i = 0; i < points.size(); ++i) {
            const Vector3& p = points[i];
            const auto y = apply(h, p[0], p[1], p[2], 1);
            const auto d = apply(h, p[0], p[1], p[2], 0);
            const auto x = apply(hInverse, p[0], p[1], p[2], 1);
            const auto v = apply(hInverse, p[0], p[1], p[2], 0);
            ASSERT_TRUE(nearPoint<Real>(y, t.ApplyForward(p)));
            ASSERT_TRUE(nearPoint<Real>(d, t.ApplyForward(p, false)));
            ASSERT_TRUE(nearPoint<Real>(x, t.ApplyInverse(p)));
            ASSERT_TRUE(nearPoint<Real>(v, t.ApplyInverse(p, false)));
            ASSERT_TRUE(nearPoint<Real>(v, t.InvertVector(p)));
            ASSERT_TRUE(nearPoint<Real>(y, forward[i]));
            ASSERT_TRUE(nearPoint<Real>(d, directions[i]));
            ASSERT_TRUE(nearPoint<Real>(x, inverse[i]));
            ASSERT_EQ(forward[i], forwardInPlace[i]);
            ASSERT_EQ(directions[i], directionsInPlace[i]);
            ASSERT_EQ(inverse[i], inverseInPlace[i]);
        }
        // No count, no work, no access.
        t.ApplyForward(0, nullptr, nullptr);
        t.ApplyInverse(-1, nullptr, nullptr);

        // The inverse value; an RS value keeps an RS inverse exactly when its scales share
        // one magnitude.
        Transform inverseValue;
        t.Inverse(inverseValue);
        ASSERT_TRUE(nearMatrix<Real>(hInverse, toMatrix(inverseValue)));
        if (t.IsRSMatrix() && !t.IsIdentity()) {
            const Vector3 s = t.GetScale();
            ASSERT_EQ(inverseValue.IsRSMatrix(), std::fabs(s[0]) == std::fabs(s[1]) && std::fabs(s[0]) == std::fabs(s[2]));
        }

        // (n, -c) is a plane as a row vector: it maps by the inverse transpose of H.
        Vector3 n = this->randomPoint();
        n.Normalize();
        const double c = this->mRandom.range(-5, 5);
        std::array<double, 4> mapped{};
        for (int j = 0; j < 4; ++j)
            mapped[static_cast<size_t>(j)] = hInverse(0, j) * n[0] + hInverse(1, j) * n[1] + hInverse(2, j) * n[2]
                                           - hInverse(3, j) * c;
        const double length = std::sqrt(mapped[0] * mapped[0] + mapped[1] * mapped[1] + mapped[2] * mapped[2]);
        const std::array<double, 4> unitNormal = {mapped[0] / length, mapped[1] / length, mapped[2] / length, 0};
        ASSERT_TRUE(nearPoint<Real>(unitNormal, t.ApplyNormal(n)));
        // A uniform scale keeps the normal's length and a negative one its orientation, so
        // compare the plane normalised and oriented like the expected one.
        const Plane3 plane = t.ApplyForward(Plane3(n, static_cast<Real>(c)));
        double factor = 1 / std::sqrt(double(plane.Normal.SquaredLength()));
        if (plane.Normal.Dot(Vector3(Real(unitNormal[0]), Real(unitNormal[1]), Real(unitNormal[2]))) < 0)
            factor = -factor;
        ASSERT_TRUE(nearPoint<Real>(unitNormal, plane.Normal * static_cast<Real>(factor)));
        const double constant[2] = {-mapped[3] / length, plane.Constant * factor};
        ASSERT_TRUE(near<Real>(&constant[0], &constant[1], 1));

        // The 4x4 holds H transposed, and reads back in both layouts.
        Wm4::Matrix4<Real> homogeneous;
        t.GetHomogeneous(homogeneous);
        Mat4 transposed;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                transposed(i, j) = homogeneous[j][i];
        ASSERT_TRUE(nearMatrix<Real>(h, transposed));
        Transform back;
        back.FromHomogeneousMatrix(homogeneous, true);
        ASSERT_TRUE(nearMatrix<Real>(h, toMatrix(back)));
        ASSERT_EQ(back.IsRSMatrix(), kind != GENERAL);
        back.FromHomogeneousMatrix(homogeneous.Transpose(), false);
        ASSERT_TRUE(nearMatrix<Real>(h, toMatrix(back)));
    }
}

TYPED_TEST(GenericTransformationRandom, ProductIsThe4x4ProductButForTheAxisAlignedShortcut)
{
    using Real = TypeParam;
    using Transform = zuGenericTransformation<Real>;
    int shortcuts = 0;
    for (int round = 0; round < ROUNDS; ++round) {
        const Kind kindA = this->randomKind();
        const Kind kindB = this->randomKind();
        const Transform a = randomTransform<Real>(this->mRandom, kindA);
        const Transform b = randomTransform<Real>(this->mRandom, kindB);
        SCOPED_TRACE(::testing::Message() << "round " << round << ", kinds " << kindA << ", " << kindB);
        Transform product;
        product.Product(a, b);

        Mat4 expected = toMatrix(a) * toMatrix(b);
        const bool shortcut = !a.IsIdentity() && !b.IsIdentity() && a.IsRSMatrix() && !a.IsUniformScale()
                           && a.GetRotate() == Wm4::Matrix3<Real>::IDENTITY && b.IsUniformScale();
        if (shortcut) {
            // b's rotation outside a's scale: R_b·diag(S_a·s_b), translation S_a⊙T_b + T_a.
            ++shortcuts;
            expected = Mat4::IDENTITY;
            for (int i = 0; i < 3; ++i) {
                for (int j = 0; j < 3; ++j)
                    expected(i, j) = double(b.GetRotate()[i][j]) * a.GetScale()[j] * b.GetScale()[0];
                expected(i, 3) = double(a.GetScale()[i]) * b.GetTranslate()[i] + a.GetTranslate()[i];
            }
        }
        ASSERT_TRUE(nearMatrix<Real>(expected, toMatrix(product)));
    }
    EXPECT_GT(shortcuts, ROUNDS / 100);
}

} // namespace
} // namespace zu::test
