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
  } else if constexpr (N == 16 && kIntegerBytes == 64) {
    return V(_mm512_i32gather_ps(_mm512_loadu_si512(indices), p, sizeof(float)));
  } else if constexpr (N == 8 && kIntegerBytes >= 32) {
    return V(_mm256_i32gather_ps(p, loadBytes<sizeof(V)>(indices), sizeof(float)));
  } else {
    V v;
    for (int i = 0; i < N; ++i) v[i] = p[indices[i]];
    return v;
  }
}

template <class T, class V>
ZVP_INLINE Pack<T, laneCount<V>> nearestSaturated(V v) {
  static_assert(std::is_same_v<T, uint8_t> || std::is_same_v<T, uint16_t>);
  constexpr int N = laneCount<V>;
  using To = Pack<T, N>;
  constexpr float kHighest = std::numeric_limits<T>::max();
  const V inside = min(max(v, broadcast<float, N>(0.0f)), broadcast<float, N>(kHighest));
  if constexpr (N == 1) {
    return static_cast<T>(_mm_cvtss_si32(_mm_set_ss(inside)));
  } else if constexpr (N == 16 && sizeof(T) == 1) {
    return To(_mm512_cvtepi32_epi8(asRegister(nearest(inside))));
  } else if constexpr (N == 16) {
    return To(_mm512_cvtepi32_epi16(asRegister(nearest(inside))));
  } else {
    const auto integers = nearest(inside);
    __m128i words;
    if constexpr (N == 8) {
      words = _mm_packus_epi32(asRegister(lowHalf(integers)), asRegister(highHalf(integers)));
    } else {
      words = _mm_packus_epi32(asRegister(integers), asRegister(integers));
    }
    return firstBytes<To>(sizeof(T) == 1 ? _mm_packus_epi16(words, words) : words);
  }
}

}  // namespace zvp::simd
