#include <zuSceneGraph/math/zuGenericTransformation.h>

#include <zuSceneGraph/math/zuMatrixInverse.h>
#include <zuSceneGraph/math/zuSse.h>

#include <Wm4/Wm4Math.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>


namespace zu {

namespace {

using sse::broadcast;
using sse::shuffle;

// The matrix and translation of a∘b for two RS transformations where a's scale `s` is
// uniform: M = A·B and T = (A·Tb)·s + Ta. `a`, `b` and `out` point at the nine matrix
// entries (row-major) followed by the translation, read and written as three runs of four
// floats: a transformation is read as it was written, so the processor hands each load the
// value of its store without waiting for the store to reach the cache.
//
// Each row of the result is the row of A applied to B's rows extended by Tb's components,
// so that lane 3 carries A·Tb: every number is the sum of the same products in the same
// order as the scalar Matrix3 and Vector3 expressions, with no fused operation, and comes
// out with the same bits.
inline void composeUniformRS(const float* a, const float* b, float s, float* out)
{
    // (m00 m01 m02 m10) (m11 m12 m20 m21) (m22 t0 t1 t2)
    const __m128 a0 = _mm_loadu_ps(a), a1 = _mm_loadu_ps(a + 4), a2 = _mm_loadu_ps(a + 8);
    const __m128 b0 = _mm_loadu_ps(b), b1 = _mm_loadu_ps(b + 4), b2 = _mm_loadu_ps(b + 8);
    const __m128 row0 = shuffle<0, 1, 0, 2>(b0, shuffle<2, 2, 1, 1>(b0, b2));
    const __m128 row1 = shuffle<0, 2, 0, 2>(shuffle<3, 3, 0, 0>(b0, b1), shuffle<1, 1, 2, 2>(b1, b2));
    const __m128 row2 = shuffle<2, 3, 0, 3>(b1, b2);
    const auto combine = [&](__m128 x, __m128 y, __m128 z) {
        return _mm_add_ps(_mm_add_ps(_mm_mul_ps(x, row0), _mm_mul_ps(y, row1)), _mm_mul_ps(z, row2));
    };
    const __m128 p0 = combine(broadcast<0>(a0), broadcast<1>(a0), broadcast<2>(a0));
    const __m128 p1 = combine(broadcast<3>(a0), broadcast<0>(a1), broadcast<1>(a1));
    const __m128 p2 = combine(broadcast<2>(a1), broadcast<3>(a1), broadcast<0>(a2));
    // A·Tb in lanes 1-3, as the translation lies in a2 and in the third run of the result.
    const __m128 q = shuffle<3, 3, 2, 3>(p0, _mm_unpackhi_ps(p1, p2));
    const __m128 t = _mm_add_ps(_mm_mul_ps(q, _mm_set1_ps(s)), a2);
    _mm_storeu_ps(out, shuffle<0, 1, 0, 2>(p0, shuffle<2, 2, 0, 0>(p0, p1)));
    _mm_storeu_ps(out + 4, shuffle<1, 2, 0, 1>(p1, p2));
    _mm_storeu_ps(out + 8, _mm_move_ss(t, broadcast<2>(p2)));
}

// The tolerance of the comparisons and of the decomposition of 4x4 matrices, applied in
// double whatever the Real.
constexpr double TOLERANCE = 1e-6;
constexpr double LARGEST = std::numeric_limits<double>::max();

template <class Real>
bool isWithinLargest(Real value)
{
    return static_cast<double>(value) >= -LARGEST && static_cast<double>(value) <= LARGEST;
}

// The reciprocals of the three scales from one division: 1/sx = sy·sz/(sx·sy·sz).
template <class Real>
Wm4::Vector3<Real> scaleReciprocals(const Wm4::Vector3<Real>& s)
{
    const Real inverseProduct = Real(1) / (s[0] * s[1] * s[2]);
    return Wm4::Vector3<Real>(s[1] * s[2] * inverseProduct, s[0] * s[2] * inverseProduct, s[0] * s[1] * inverseProduct);
}

// Where the translation T goes when packed xyz triples are mapped by a 3x3 matrix C.
enum class Translation { NONE, AFTER, BEFORE };

// Y = C·X, C·X + T or C·(X - T) over packed xyz triples. The caller has resolved every flag:
// the loop body has no branch, and each point is read whole before it is written, so `out`
// may equal `in`.
template <class Real, Translation translation>
inline void mapTriples(std::ptrdiff_t count, const Real* in, Real* out, const Real* c, const Real* t)
{
    const Real c00 = c[0], c01 = c[1], c02 = c[2], c10 = c[3], c11 = c[4], c12 = c[5], c20 = c[6], c21 = c[7], c22 = c[8];
    const Real t0 = t[0], t1 = t[1], t2 = t[2];
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        Real x = in[3 * i], y = in[3 * i + 1], z = in[3 * i + 2];
        if constexpr (translation == Translation::BEFORE) {
            x -= t0;
            y -= t1;
            z -= t2;
        }
        Real u = c00 * x + c01 * y + c02 * z, v = c10 * x + c11 * y + c12 * z, w = c20 * x + c21 * y + c22 * z;
        if constexpr (translation == Translation::AFTER) {
            u += t0;
            v += t1;
            w += t2;
        }
        out[3 * i] = u;
        out[3 * i + 1] = v;
        out[3 * i + 2] = w;
    }
}

// The in-place case gets its own loop: with one pointer the compiler sees that the writes
// never reach a later point and vectorises without a run-time overlap check.
template <class Real, Translation translation>
void mapPoints(int count, const Real* in, Real* out, const Real* c, const Real* t)
{
    if (in == out)
        mapTriples<Real, translation>(count, out, out, c, t);
    else
        mapTriples<Real, translation>(count, in, out, c, t);
}

// The decomposition of a 4x4 matrix (FromHomogeneousMatrix) in steps.

// The columns of K made unit length; a column that cannot be becomes zero.
template <class Real>
Wm4::Matrix3<Real> unitColumns(const Wm4::Matrix3<Real>& k)
{
    Wm4::Matrix3<Real> q;
    for (int col = 0; col < 3; ++col) {
        const Wm4::Vector3<Real> column = k.GetColumn(col);
        const Real length = column.Length();
        const Real reciprocal = Real(1) / length;
        if (length == Real(0) || !(static_cast<double>(reciprocal) <= LARGEST))
            q.SetColumn(col, Wm4::Vector3<Real>::ZERO);
        else
            q.SetColumn(col, column / length);
    }
    return q;
}

// Q is orthonormal when its inverse is its transpose.
template <class Real>
bool isOrthonormal(const Wm4::Matrix3<Real>& q)
{
    const Wm4::Matrix3<Real> qInverse = zuMatrixInverse<Real>::Compute(q);
    for (int i = 0; i < 3; ++i) {
        const Wm4::Vector3<Real> difference = q.GetRow(i) - qInverse.GetColumn(i);
        if (!(static_cast<double>(difference.SquaredLength()) < TOLERANCE))
            return false;
    }
    return true;
}

// The diagonal of D = Qᵀ·K into `s`; false when D has a positive off-diagonal entry (a
// negative one is let through). A mirror is kept in the x scale, so that Q becomes a proper
// rotation.
template <class Real>
bool splitScale(const Wm4::Matrix3<Real>& k, Wm4::Matrix3<Real>& q, Wm4::Vector3<Real>& s)
{
    if (q.Determinant() < Real(0))
        for (int row = 0; row < 3; ++row)
            q[row][0] = -q[row][0];
    const Wm4::Matrix3<Real> d = q.TransposeTimes(k);
    s = Wm4::Vector3<Real>(d[0][0], d[1][1], d[2][2]);
    for (int row = 0; row < 3; ++row)
        for (int col = 0; col < 3; ++col)
            if (row != col && static_cast<double>(d[row][col]) >= TOLERANCE)
                return false;
    return true;
}

template <class Real>
bool differsFromIdentity(const Wm4::Matrix3<Real>& m)
{
    for (int row = 0; row < 3; ++row)
        for (int col = 0; col < 3; ++col)
            if (Wm4::Math<double>::FAbs(static_cast<double>(m[row][col]) - (row == col ? 1.0 : 0.0)) >= TOLERANCE)
                return true;
    return false;
}

} // namespace

template <class Real>
zuGenericTransformation<Real>::zuGenericTransformation()
{
    MakeIdentity();
}

template <class Real>
void zuGenericTransformation<Real>::MakeIdentity()
{
    matrix = Matrix3::IDENTITY;
    translate = Vector3::ZERO;
    scale = Vector3::ONE;
    isIdentity = true;
    isRSMatrix = true;
    isUniformScale = true;
}

template <class Real>
void zuGenericTransformation<Real>::MakeUnitScale()
{
    scale = Vector3::ONE;
    isUniformScale = true;
}

template <class Real>
bool zuGenericTransformation<Real>::IsFinite() const
{
    for (int i = 0; i < 3; ++i)
        if (!isWithinLargest(translate[i]))
            return false;
    for (int i = 0; i < 3; ++i)
        if (!isWithinLargest(scale[i]))
            return false;
    for (int i = 0; i < 9; ++i)
        if (!isWithinLargest(static_cast<const Real*>(matrix)[i]))
            return false;
    return true;
}

template <class Real>
void zuGenericTransformation<Real>::SetRotate(const Matrix3& rotate)
{
    matrix = rotate;
    isIdentity = false;
    isRSMatrix = true;
}

template <class Real>
void zuGenericTransformation<Real>::SetMatrix(const Matrix3& general)
{
    matrix = general;
    isIdentity = false;
    isRSMatrix = false;
    isUniformScale = false;
}

template <class Real>
void zuGenericTransformation<Real>::SetTranslate(const Vector3& translation)
{
    translate = translation;
    isIdentity = false;
}

template <class Real>
void zuGenericTransformation<Real>::SetScale(const Vector3& scales)
{
    scale = scales;
    isIdentity = false;
    isUniformScale = scales[0] == scales[1] && scales[0] == scales[2];
}

template <class Real>
void zuGenericTransformation<Real>::SetUniformScale(Real uniform)
{
    scale = Vector3(uniform, uniform, uniform);
    isIdentity = false;
    isUniformScale = true;
}

template <class Real>
typename zuGenericTransformation<Real>::Matrix3 zuGenericTransformation<Real>::linearPart() const
{
    if (!isRSMatrix)
        return matrix;
    Matrix3 combined = matrix;
    for (int row = 0; row < 3; ++row)
        for (int col = 0; col < 3; ++col)
            combined[row][col] *= scale[col];
    return combined;
}

template <class Real>
void zuGenericTransformation<Real>::ApplyForward(int count, const Vector3* input, Vector3* output,
                                                 bool withTranslation) const
{
    if (count <= 0)
        return;
    if (isIdentity) {
        if (input != output)
            std::memmove(static_cast<void*>(output), input, static_cast<size_t>(count) * sizeof(Vector3));
        return;
    }
    // R·diag(S) once, instead of scaling every point first.
    const Matrix3 combined = linearPart();
    const Real* in = reinterpret_cast<const Real*>(input);
    Real* out = reinterpret_cast<Real*>(output);
    if (withTranslation)
        mapPoints<Real, Translation::AFTER>(count, in, out, combined, translate);
    else
        mapPoints<Real, Translation::NONE>(count, in, out, combined, translate);
}

template <class Real>
typename zuGenericTransformation<Real>::Vector3 zuGenericTransformation<Real>::ApplyInverse(const Vector3& input,
                                                                                             bool withTranslation) const
{
    if (isIdentity)
        return input;
    const Vector3 difference = withTranslation ? input - translate : input;
    if (!isRSMatrix)
        return zuMatrixInverse<Real>::Compute(matrix) * difference;
    // Rᵀ·D, written as the row vector D times R.
    const Vector3 unrotated = difference * matrix;
    if (isUniformScale) {
        if (scale[0] == Real(0))
            return Vector3(Wm4::Math<Real>::MAX_REAL, Wm4::Math<Real>::MAX_REAL, Wm4::Math<Real>::MAX_REAL);
        return unrotated / scale[0];
    }
    const Vector3 reciprocal = scaleReciprocals(scale);
    return Vector3(unrotated[0] * reciprocal[0], unrotated[1] * reciprocal[1], unrotated[2] * reciprocal[2]);
}

template <class Real>
void zuGenericTransformation<Real>::ApplyInverse(int count, const Vector3* input, Vector3* output) const
{
    if (count <= 0)
        return;
    if (isIdentity) {
        if (input != output)
            std::memmove(static_cast<void*>(output), input, static_cast<size_t>(count) * sizeof(Vector3));
        return;
    }
    Matrix3 combined;
    if (isRSMatrix) {
        Vector3 reciprocal;
        if (isUniformScale) {
            if (scale[0] == Real(0)) {
                const Vector3 huge(Wm4::Math<Real>::MAX_REAL, Wm4::Math<Real>::MAX_REAL, Wm4::Math<Real>::MAX_REAL);
                std::fill(output, output + count, huge);
                return;
            }
            const Real uniform = Real(1) / scale[0];
            reciprocal = Vector3(uniform, uniform, uniform);
        } else {
            reciprocal = scaleReciprocals(scale);
        }
        // diag(1/S)·Rᵀ: row i of the combined matrix is column i of R over scale i.
        for (int row = 0; row < 3; ++row)
            for (int col = 0; col < 3; ++col)
                combined[row][col] = matrix[col][row] * reciprocal[row];
    } else {
        combined = zuMatrixInverse<Real>::Compute(matrix);
    }
    mapPoints<Real, Translation::BEFORE>(count, reinterpret_cast<const Real*>(input), reinterpret_cast<Real*>(output), combined, translate);
}

template <class Real>
typename zuGenericTransformation<Real>::Vector3 zuGenericTransformation<Real>::InvertVector(const Vector3& vector) const
{
    return ApplyInverse(vector, false);
}

template <class Real>
typename zuGenericTransformation<Real>::Vector3 zuGenericTransformation<Real>::ApplyNormal(const Vector3& normal) const
{
    zuGenericTransformation inverse;
    Inverse(inverse);
    // Aᵀ·N, written as the row vector N times A.
    Vector3 mapped = normal * inverse.linearPart();
    const Real length = mapped.Length();
    const Real reciprocal = Real(1) / length;
    if (length == Real(0) || !(static_cast<double>(reciprocal) <= LARGEST))
        return Vector3::ZERO;
    return mapped * reciprocal;
}

template <class Real>
typename zuGenericTransformation<Real>::Plane3 zuGenericTransformation<Real>::ApplyForward(const Plane3& plane) const
{
    if (isIdentity)
        return plane;
    if (IsUniformScale()) {
        // R·n is the inverse transpose scaled by s: the constant takes the same factor and
        // the normal keeps its length.
        const Vector3 normal = matrix * plane.Normal;
        return Plane3(normal, scale[0] * plane.Constant + normal.Dot(translate));
    }
    Vector3 normal;
    if (isRSMatrix) {
        const Vector3 reciprocal = scaleReciprocals(scale);
        normal = matrix * Vector3(plane.Normal[0] * reciprocal[0], plane.Normal[1] * reciprocal[1],
                                  plane.Normal[2] * reciprocal[2]);
    } else {
        normal = plane.Normal * zuMatrixInverse<Real>::Compute(matrix);
    }
    const Real length = normal.Length();
    normal /= length;
    return Plane3(normal, plane.Constant / length + normal.Dot(translate));
}

template <class Real>
void zuGenericTransformation<Real>::Product(const zuGenericTransformation& a, const zuGenericTransformation& b)
{
    if (a.isIdentity) {
        *this = b;
        return;
    }
    if (b.isIdentity) {
        *this = a;
        return;
    }

    if (a.isRSMatrix && b.isRSMatrix && a.isUniformScale) {
        // The common case of a scene (rotations and uniform scales), computed into locals
        // (a or b may be *this) and stored once: it runs once per object of an update pass.
        const Real as = a.scale[0];
        Vector3 s;
        bool uniform = true;
        if (b.isUniformScale) {
            const Real product = as * b.scale[0];
            s = Vector3(product, product, product);
        } else {
            s = b.scale * as;
            uniform = s[0] == s[1] && s[0] == s[2];
        }
        if constexpr (std::is_same_v<Real, float>) {
            // The matrix, the translation and the scale are 15 consecutive floats.
            static_assert(offsetof(zuGenericTransformation, translate) == 9 * sizeof(float)
                          && offsetof(zuGenericTransformation, scale) == 12 * sizeof(float));
            composeUniformRS(a.matrix, b.matrix, as, matrix);
        } else {
            const Matrix3 m = a.matrix * b.matrix;
            translate = (a.matrix * b.translate) * as + a.translate;
            matrix = m;
        }
        scale = s;
        isIdentity = false;
        isRSMatrix = true;
        isUniformScale = uniform;
        return;
    }

    // Built aside: a or b may be *this.
    zuGenericTransformation result;
    result.isIdentity = false;
    if (a.isRSMatrix && b.isRSMatrix) {
        // An axis-aligned non-uniform scale composes with b's rotation by the shortcut
        // rotation = b.R, scale = a.S·b.s, which leaves b's rotation outside a's scale (the
        // exact product is S_a·R_b). Scenes rely on this composition; it is kept as is.
        const bool bIdentityRotation = b.matrix == Matrix3::IDENTITY;
        if (a.matrix == Matrix3::IDENTITY && (b.isUniformScale || bIdentityRotation)) {
            if (b.isUniformScale) {
                result.matrix = b.matrix;
                result.scale = a.scale * b.scale[0];
            } else {
                result.matrix = Matrix3::IDENTITY;
                result.scale = Vector3(a.scale[0] * b.scale[0], a.scale[1] * b.scale[1], a.scale[2] * b.scale[2]);
            }
            const Vector3 scaled(a.scale[0] * b.translate[0], a.scale[1] * b.translate[1], a.scale[2] * b.translate[2]);
            result.translate = a.matrix * scaled + a.translate;
            result.isUniformScale = result.scale[0] == result.scale[1] && result.scale[0] == result.scale[2];
            *this = result;
            return;
        }
    }

    const Matrix3 ma = a.linearPart();
    result.matrix = ma * b.linearPart();
    result.translate = ma * b.translate + a.translate;
    result.isRSMatrix = false;
    result.isUniformScale = false;
    *this = result;
}

template <class Real>
void zuGenericTransformation<Real>::Inverse(zuGenericTransformation& out) const
{
    if (isIdentity) {
        out = *this;
        return;
    }

    zuGenericTransformation result;
    result.isIdentity = false;
    if (isRSMatrix) {
        if (isUniformScale) {
            const Real reciprocal = Real(1) / scale[0];
            result.matrix = matrix.Transpose();
            result.scale = Vector3(reciprocal, reciprocal, reciprocal);
            result.translate = -((result.matrix * translate) * reciprocal);
            result.isRSMatrix = true;
            result.isUniformScale = true;
            out = result;
            return;
        }
        const Real magnitude = Wm4::Math<Real>::FAbs(scale[0]);
        if (magnitude == Wm4::Math<Real>::FAbs(scale[1]) && magnitude == Wm4::Math<Real>::FAbs(scale[2])) {
            // Equal magnitudes with signs: the signs move into the rotation, so that the
            // inverse stays RS. An even number of negative scales cancels out entirely
            // (uniform inverse); an odd number leaves one mirror, kept on the x axis.
            int negatives = 0;
            Matrix3 rotate = matrix.Transpose();
            for (int i = 0; i < 3; ++i) {
                if (scale[i] < Real(0))
                    ++negatives;
                if (!(scale[i] > Real(0)))
                    for (int col = 0; col < 3; ++col)
                        rotate[i][col] = -rotate[i][col];
            }
            const Real sign = negatives % 2 != 0 ? Real(-1) : Real(1);
            if (sign < Real(0))
                for (int row = 0; row < 3; ++row)
                    rotate[row][0] = -rotate[row][0];
            const Real reciprocal = Real(1) / magnitude;
            result.matrix = rotate;
            result.scale = Vector3(sign / magnitude, reciprocal, reciprocal);
            result.translate = -(rotate * Vector3(result.scale[0] * translate[0], result.scale[1] * translate[1],
                                                  result.scale[2] * translate[2]));
            result.isRSMatrix = true;
            result.isUniformScale = negatives % 2 == 0;
            out = result;
            return;
        }
        Matrix3 general = matrix.Transpose();
        for (int row = 0; row < 3; ++row) {
            const Real reciprocal = Real(1) / scale[row];
            for (int col = 0; col < 3; ++col)
                general[row][col] *= reciprocal;
        }
        result.matrix = general;
    } else {
        result.matrix = zuMatrixInverse<Real>::Compute(matrix);
    }
    result.translate = -(result.matrix * translate);
    result.isRSMatrix = false;
    result.isUniformScale = false;
    out = result;
}

template <class Real>
void zuGenericTransformation<Real>::GetHomogeneous(Matrix4& homogeneous) const
{
    const Matrix3 part = linearPart();
    for (int row = 0; row < 3; ++row) {
        for (int col = 0; col < 3; ++col)
            homogeneous[row][col] = part[col][row];
        homogeneous[row][3] = Real(0);
    }
    homogeneous[3][0] = translate[0];
    homogeneous[3][1] = translate[1];
    homogeneous[3][2] = translate[2];
    homogeneous[3][3] = Real(1);
}

template <class Real>
void zuGenericTransformation<Real>::FromHomogeneousMatrix(const Matrix4& homogeneous, bool transposed)
{
    Matrix3 k;
    Vector3 t;
    for (int row = 0; row < 3; ++row)
        for (int col = 0; col < 3; ++col)
            k[row][col] = transposed ? homogeneous[col][row] : homogeneous[row][col];
    for (int i = 0; i < 3; ++i)
        t[i] = transposed ? homogeneous[3][i] : homogeneous[i][3];

    // K = Q·D, with Q the columns of K made unit length and D diagonal when K is a rotation
    // and a scale.
    Matrix3 q = unitColumns(k);
    Vector3 s;
    const bool decomposed = isOrthonormal(q) && splitScale(k, q, s);

    MakeIdentity();
    // A translation this small is taken as rounding noise and dropped.
    if (static_cast<double>(t.SquaredLength()) >= TOLERANCE) {
        translate = t;
        isIdentity = false;
    }
    if (!decomposed) {
        matrix = k;
        isIdentity = false;
        isRSMatrix = false;
        isUniformScale = false;
        return;
    }
    if (!differsFromIdentity(k))
        return;
    if (differsFromIdentity(q)) {
        matrix = q;
        isIdentity = false;
    }
    const bool uniform = Wm4::Math<double>::FAbs(static_cast<double>(s[1]) - s[0]) < TOLERANCE
                      && Wm4::Math<double>::FAbs(static_cast<double>(s[2]) - s[1]) < TOLERANCE;
    if (!uniform) {
        scale = s;
        isIdentity = false;
        isUniformScale = s[0] == s[1] && s[0] == s[2];
    } else if (Wm4::Math<double>::FAbs(static_cast<double>(s[0]) - 1.0) > TOLERANCE) {
        scale = Vector3(s[0], s[0], s[0]);
        isIdentity = false;
    }
}

template <class Real>
bool zuGenericTransformation<Real>::operator==(const zuGenericTransformation& other) const
{
    // The matrix bit for bit (0 and -0 differ); translation and scale by value.
    if (!(matrix == other.matrix))
        return false;
    for (int i = 0; i < 3; ++i)
        if (!(translate[i] == other.translate[i]))
            return false;
    for (int i = 0; i < 3; ++i)
        if (!(scale[i] == other.scale[i]))
            return false;
    return isIdentity == other.isIdentity && isRSMatrix == other.isRSMatrix && isUniformScale == other.isUniformScale;
}

template <class Real>
bool zuGenericTransformation<Real>::Equals(const zuGenericTransformation& other) const
{
    const Real* a = matrix;
    const Real* b = other.matrix;
    for (int i = 0; i < 9; ++i)
        if (!(Wm4::Math<double>::FAbs(static_cast<double>(a[i]) - static_cast<double>(b[i])) < TOLERANCE))
            return false;
    const auto squaredDistance = [](const Vector3& u, const Vector3& v) {
        double sum = 0.0;
        for (int i = 0; i < 3; ++i) {
            const double delta = static_cast<double>(u[i]) - static_cast<double>(v[i]);
            sum += delta * delta;
        }
        return sum;
    };
    return squaredDistance(translate, other.translate) < TOLERANCE && squaredDistance(scale, other.scale) < TOLERANCE;
}

template <class Real>
Real zuGenericTransformation<Real>::GetNorm() const
{
    if (isRSMatrix) {
        const Real x = Wm4::Math<Real>::FAbs(scale[0]);
        const Real y = Wm4::Math<Real>::FAbs(scale[1]);
        const Real z = Wm4::Math<Real>::FAbs(scale[2]);
        const Real high = std::max(x, std::max(y, z));
        const Real low = std::min(x, std::min(y, z));
        if (!(high == Real(1) && low == Real(1)))
            return high;
        // Unit scales fall through to the row sums of the rotation: a rotated value reports
        // up to √3 rather than 1. Callers take the norm as a bound, and a larger bound is
        // safe.
    }
    Real norm = Real(0);
    for (int row = 0; row < 3; ++row) {
        const Real sum = Wm4::Math<Real>::FAbs(matrix[row][0]) + Wm4::Math<Real>::FAbs(matrix[row][1])
                       + Wm4::Math<Real>::FAbs(matrix[row][2]);
        norm = std::max(norm, sum);
    }
    return norm;
}

template class zuGenericTransformation<float>;
template class zuGenericTransformation<double>;

} // namespace zu
