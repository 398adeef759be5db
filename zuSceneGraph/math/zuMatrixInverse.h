#pragma once

#include <Wm4/Wm4Matrix3.h>

namespace zu {

// The inverse of a 3x3 matrix as every transformation operation computes it.
//
// The cofactor inverse, refused (ZERO) for a determinant of exactly 0. A determinant of
// at least Wm4::Math<Real>::ZERO_TOLERANCE inverts. Below that, which takes in every
// negative determinant, the matrix inverts only when its determinant is close to +1 or
// -1 (|d - 1/d| <= ZERO_TOLERANCE): reflections such as diag(-1, 1, 1) invert, a
// mirrored scale such as diag(-2, 1, 1) does not. Callers depend on that rule, so all of
// them share this one function.
template <class Real>
class zuMatrixInverse {
public:
    static Wm4::Matrix3<Real> Compute(const Wm4::Matrix3<Real>& m);
};

extern template class zuMatrixInverse<float>;
extern template class zuMatrixInverse<double>;

} // namespace zu
