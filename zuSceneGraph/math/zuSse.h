#pragma once

// Lane shuffles the vector forms of the transformation and bound arithmetic share.

#include <emmintrin.h>

namespace zu::sse {

// Lane `i` of `v` in every lane.
template <int i>
inline __m128 broadcast(__m128 v)
{
    return _mm_shuffle_ps(v, v, _MM_SHUFFLE(i, i, i, i));
}

// (low[i0], low[i1], high[i2], high[i3]).
template <int i0, int i1, int i2, int i3>
inline __m128 shuffle(__m128 low, __m128 high)
{
    return _mm_shuffle_ps(low, high, _MM_SHUFFLE(i3, i2, i1, i0));
}

} // namespace zu::sse
