#include <Wm4/Wm4EigenDecomposition.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Wm4 {

template <class Real>
EigenDecomposition<Real>::EigenDecomposition() : mValue{}, mVector(Matrix3<Real>::IDENTITY)
{
}

template <class Real>
EigenDecomposition<Real>::EigenDecomposition(const Matrix3<Real>& symmetric) : EigenDecomposition()
{
    Solve(symmetric);
}

template <class Real>
void EigenDecomposition<Real>::Solve(const Matrix3<Real>& m)
{
    Real a[3][3] = {{m(0, 0), m(0, 1), m(0, 2)}, {m(0, 1), m(1, 1), m(1, 2)}, {m(0, 2), m(1, 2), m(2, 2)}};
    Matrix3<Real> v = Matrix3<Real>::IDENTITY;

    // Each rotation zeroes one off-diagonal pair; once small, the
    // off-diagonal part shrinks quadratically from sweep to sweep, so a
    // handful of sweeps reach rounding level. The test compares magnitudes rather than squares, which
    // would underflow or overflow for matrices far from unit size. The sweep
    // limit only guards against NaN input.
    constexpr int maxSweeps = 32;
    for (int sweep = 0; sweep < maxSweeps; ++sweep) {
        Real diagonal = std::max({Math<Real>::FAbs(a[0][0]), Math<Real>::FAbs(a[1][1]), Math<Real>::FAbs(a[2][2])});
        Real offDiagonal = std::max({Math<Real>::FAbs(a[0][1]), Math<Real>::FAbs(a[0][2]), Math<Real>::FAbs(a[1][2])});
        if (!(offDiagonal > Math<Real>::EPSILON * diagonal)) {
            break;
        }
        static constexpr int pairs[3][2] = {{0, 1}, {0, 2}, {1, 2}};
        for (const auto& pair : pairs) {
            int p = pair[0], q = pair[1], r = 3 - p - q;
            Real apq = a[p][q];
            if (apq == Real(0)) {
                continue;
            }
            // The rotation angle t = tan(phi) that zeroes a[p][q] is the
            // smaller root of t^2 + 2 theta t - 1 = 0. hypot keeps a huge
            // theta (a negligible apq) from overflowing; t then is 0 and the
            // entry is simply dropped below.
            Real theta = (a[q][q] - a[p][p]) / (Real(2) * apq);
            Real t = Real(1) / (Math<Real>::FAbs(theta) + std::hypot(theta, Real(1)));
            if (theta < Real(0)) {
                t = -t;
            }
            Real c = Real(1) / std::hypot(t, Real(1));
            Real s = t * c;

            a[p][p] -= t * apq;
            a[q][q] += t * apq;
            a[p][q] = a[q][p] = Real(0);
            Real arp = a[r][p], arq = a[r][q];
            a[r][p] = a[p][r] = c * arp - s * arq;
            a[r][q] = a[q][r] = s * arp + c * arq;
            for (int k = 0; k < 3; ++k) {
                Real vkp = v(k, p), vkq = v(k, q);
                v(k, p) = c * vkp - s * vkq;
                v(k, q) = s * vkp + c * vkq;
            }
        }
    }

    // Sort increasingly, carrying the columns along (three compare-swaps).
    int order[3] = {0, 1, 2};
    auto swapIfGreater = [&](int i, int j) {
        if (a[order[j]][order[j]] < a[order[i]][order[i]]) {
            std::swap(order[i], order[j]);
        }
    };
    swapIfGreater(0, 1);
    swapIfGreater(1, 2);
    swapIfGreater(0, 1);
    for (int i = 0; i < 3; ++i) {
        mValue[i] = a[order[i]][order[i]];
        mVector.SetColumn(i, v.GetColumn(order[i]));
    }
    // A product of rotations has determinant +1, but the sort may have
    // swapped two columns; a symmetric eigenvector keeps its meaning with
    // either sign.
    if (mVector.Determinant() < Real(0)) {
        mVector.SetColumn(2, -mVector.GetColumn(2));
    }
}

template class EigenDecomposition<float>;
template class EigenDecomposition<double>;

} // namespace Wm4
