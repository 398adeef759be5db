#pragma once

#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Matrix4.h>
#include <Wm4/Wm4Plane3.h>
#include <Wm4/Wm4Vector3.h>

namespace zu {

class zuBaseStream;

// The affine transformation value: Y = R·S·X + T with a rotation R and a diagonal scale S
// (a rotation-scale, or RS, transformation), or Y = M·X + T with a general matrix M.
//
// Three flags let the common cases take short paths: the identity returns its input, an
// RS transformation inverts with the transpose of R. `isUniformScale` counts only together
// with `isRSMatrix`, and the uniform scale is always `scale.x`. Each setter's effect on the
// flags is part of the interface: callers set the fields in any order and rely on it.
//
// Matrices are row-major and act on column vectors (M·X).
template <class Real>
class zuGenericTransformation {
public:
    typedef Wm4::Vector3<Real> Vector3;
    typedef Wm4::Matrix3<Real> Matrix3;
    typedef Wm4::Matrix4<Real> Matrix4;
    typedef Wm4::Plane3<Real> Plane3;

    // Bytes of the streamed value: matrix, translate, scale, three flag bytes.
    static constexpr int STREAM_SIZE = 15 * static_cast<int>(sizeof(Real)) + 3;

    // The identity.
    zuGenericTransformation();

    void MakeIdentity();
    // Scale ONE, flagged uniform; whether the value is the identity is left as it was.
    void MakeUnitScale();

    bool IsIdentity() const { return isIdentity; }
    bool IsRSMatrix() const { return isRSMatrix; }
    bool IsUniformScale() const { return isRSMatrix && isUniformScale; }
    // Every number within ±(largest double); NaN fails. Callers check this before
    // accepting a transformation computed from outside data.
    bool IsFinite() const;

    // The rotation of an RS transformation; keeps the scale and its uniform flag.
    void SetRotate(const Matrix3& rotate);
    // A general matrix: clears all three flags.
    void SetMatrix(const Matrix3& matrix);
    void SetTranslate(const Vector3& translate);
    // Flags the scale uniform when its three components are exactly equal.
    void SetScale(const Vector3& scale);
    void SetUniformScale(Real scale);

    const Matrix3& GetRotate() const { return matrix; }
    const Matrix3& GetMatrix() const { return matrix; }
    const Vector3& GetTranslate() const { return translate; }
    const Vector3& GetScale() const { return scale; }
    Real GetUniformScale() const { return scale.X(); }

    // Y = R·(S⊙X) (+T), or M·X (+T). Without the translation it maps directions.
    Vector3 ApplyForward(const Vector3& input, bool withTranslation = true) const
    {
        if (isIdentity)
            return input;
        Vector3 output = isRSMatrix ? matrix * Vector3(scale[0] * input[0], scale[1] * input[1], scale[2] * input[2])
                                    : matrix * input;
        if (withTranslation)
            output += translate;
        return output;
    }
    // The same for `count` points; `output` may be `input` itself.
    void ApplyForward(int count, const Vector3* input, Vector3* output, bool withTranslation = true) const;
    // X with Y = ApplyForward(X). A uniform scale of exactly 0 gives MAX_REAL in every
    // component; a non-uniform scale with a zero component is not tested for.
    Vector3 ApplyInverse(const Vector3& input, bool withTranslation = true) const;
    // The same for `count` points, always with the translation; `output` may be `input`.
    void ApplyInverse(int count, const Vector3* input, Vector3* output) const;
    // ApplyInverse of a direction.
    Vector3 InvertVector(const Vector3& vector) const;
    // The normal transformed by the inverse transpose and made unit length (zero when it
    // cannot be normalised).
    Vector3 ApplyNormal(const Vector3& normal) const;
    // The plane through the mapped points of `plane`.
    Plane3 ApplyForward(const Plane3& plane) const;

    // *this = a∘b: b applied first, then a. Either argument may be *this.
    void Product(const zuGenericTransformation& a, const zuGenericTransformation& b);
    // `out` may be *this.
    void Inverse(zuGenericTransformation& out) const;

    // The 4x4 matrix in the row-vector layout: rows 0-2 hold the transposed 3x3 part, row 3
    // the translation.
    void GetHomogeneous(Matrix4& homogeneous) const;
    // Rebuilds the value from a 4x4 matrix, in the column-vector layout or, with
    // `transposed`, in the layout GetHomogeneous writes. A rotation times a diagonal scale
    // (a mirror kept in the x scale) becomes an RS transformation, anything else a general
    // one; a translation shorter than 1e-3 is dropped.
    void FromHomogeneousMatrix(const Matrix4& homogeneous, bool transposed);

    // The matrix bit for bit, the other numbers by value, and the flags.
    bool operator==(const zuGenericTransformation& other) const;
    bool operator!=(const zuGenericTransformation& other) const { return !(*this == other); }
    // Within 1e-6, flags ignored.
    bool Equals(const zuGenericTransformation& other) const;

    // An upper bound of the largest stretch.
    Real GetNorm() const;

private:
    // The 3x3 part: R·diag(S) for an RS transformation, M otherwise.
    Matrix3 linearPart() const;

    Matrix3 matrix;
    Vector3 translate;
    Vector3 scale;
    bool isIdentity;
    bool isRSMatrix;
    bool isUniformScale;

    friend class zuBaseStream;
};

extern template class zuGenericTransformation<float>;
extern template class zuGenericTransformation<double>;

} // namespace zu
