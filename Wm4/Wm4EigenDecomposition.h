#pragma once

#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Vector3.h>

namespace Wm4 {

// Eigenvalues and eigenvectors of a symmetric 3x3 matrix, by cyclic Jacobi
// rotations. Only the diagonal and the upper triangle are read. The
// eigenvalues come in increasing order; the eigenvectors are the columns of
// an orthonormal, right-handed matrix V (determinant +1), column i belonging
// to eigenvalue i, so that M = V diag(values) Transpose(V).
//
// A default-constructed solver holds zero eigenvalues and the identity.
template <class Real>
class EigenDecomposition {
public:
    EigenDecomposition();
    explicit EigenDecomposition(const Matrix3<Real>& symmetric);

    // Replaces the result by the decomposition of another matrix.
    void Solve(const Matrix3<Real>& symmetric);

    Real GetEigenvalue(int i) const { return mValue[i]; }
    Vector3<Real> GetEigenvector(int i) const { return mVector.GetColumn(i); }
    // The eigenvectors as the columns of a rotation matrix.
    const Matrix3<Real>& GetEigenvectors() const { return mVector; }

private:
    Real mValue[3];
    Matrix3<Real> mVector;
};

extern template class EigenDecomposition<float>;
extern template class EigenDecomposition<double>;

typedef EigenDecomposition<float> EigenDecompositionf;
typedef EigenDecomposition<double> EigenDecompositiond;

} // namespace Wm4
