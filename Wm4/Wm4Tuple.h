#pragma once

namespace Wm4 {

// Operations over the N contiguous Reals that a vector, colour, quaternion or matrix
// stores, written once for all of them.
namespace Tuple {

// Lexicographic order by value, for ordered containers of finite values.
template <int N, class Real> bool Less(const Real* a, const Real* b)
{
    for (int i = 0; i < N; ++i) {
        if (a[i] < b[i]) {
            return true;
        }
        if (b[i] < a[i]) {
            return false;
        }
    }
    return false;
}

template <int N, class Real> void Add(const Real* a, const Real* b, Real* out)
{
    for (int i = 0; i < N; ++i) {
        out[i] = a[i] + b[i];
    }
}

template <int N, class Real> void Subtract(const Real* a, const Real* b, Real* out)
{
    for (int i = 0; i < N; ++i) {
        out[i] = a[i] - b[i];
    }
}

template <int N, class Real> void Scale(const Real* a, Real s, Real* out)
{
    for (int i = 0; i < N; ++i) {
        out[i] = s * a[i];
    }
}

template <int N, class Real> void Divide(const Real* a, Real s, Real* out)
{
    for (int i = 0; i < N; ++i) {
        out[i] = a[i] / s;
    }
}

template <int N, class Real> void Negate(const Real* a, Real* out)
{
    for (int i = 0; i < N; ++i) {
        out[i] = -a[i];
    }
}

} // namespace Tuple
} // namespace Wm4
