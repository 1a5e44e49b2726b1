// The vector vocabulary of resampling:
//
//   gather<N>            the floats at N indices
//   nearestSaturated<T>  single precision to an unsigned integer type of 8 or 16 bits, ties to even; no NaN
#pragma once

#include <limits>

#include "simd/simd.h"

namespace zvp::simd {

template <int N>
ZVP_INLINE Pack<float, N> gather(const float* p, const int32_t* indices) {
  using V = Pack<float, N>;
  if constexpr (N == 1) {
    return p[*indices];
#if defined(__AVX512F__)
  } else if constexpr (N == 16) {
    return V(_mm512_i32gather_ps(_mm512_loadu_si512(indices), p, sizeof(float)));
#endif
#if defined(__AVX2__)
  } else if constexpr (N == 8) {
    return V(_mm256_i32gather_ps(p, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(indices)), sizeof(float)));
#endif
  } else {
    V v;
    for (int i = 0; i < N; ++i) v[i] = p[indices[i]];
    return v;
  }
}

template <class T, class V>
ZVP_INLINE Pack<T, laneCount<V>> nearestSaturated(V v) {
  constexpr int N = laneCount<V>;
  using To = Pack<T, N>;
  constexpr float kHighest = std::numeric_limits<T>::max();
  const V inside = min(max(v, broadcast<float, N>(0.0f)), broadcast<float, N>(kHighest));
  if constexpr (N == 1) {
    return static_cast<T>(_mm_cvtss_si32(_mm_set_ss(inside)));
#if defined(__AVX512F__)
  } else if constexpr (N == 16) {
    const __m512i integers = _mm512_cvtps_epi32(__m512(inside));
    if constexpr (sizeof(T) == 1) {
      return To(_mm512_cvtepi32_epi8(integers));
    } else {
      return To(_mm512_cvtepi32_epi16(integers));
    }
#endif
  } else {
    static_assert(N == 4 || N == 8);
    __m128i words;
    if constexpr (N == 8) {
      const __m256i integers = _mm256_cvtps_epi32(__m256(inside));
      words = _mm_packus_epi32(_mm256_castsi256_si128(integers), _mm256_extractf128_si256(integers, 1));
    } else {
      const __m128i integers = _mm_cvtps_epi32(__m128(inside));
      words = _mm_packus_epi32(integers, integers);
    }
    const __m128i all = sizeof(T) == 1 ? _mm_packus_epi16(words, words) : words;
    if constexpr (sizeof(To) == 16) {
      return To(all);
    } else if constexpr (sizeof(To) == 8) {
      return std::bit_cast<To>(int64_t{Pack<int64_t, 2>(all)[0]});
    } else {
      return std::bit_cast<To>(int32_t{Pack<int32_t, 4>(all)[0]});
    }
  }
}

}  // namespace zvp::simd
