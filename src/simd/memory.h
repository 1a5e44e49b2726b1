// Parts of packs from and to memory, and stores past the caches.
#pragma once

#include "simd/loose.h"
#include "simd/registers.h"

namespace zvp::simd {

// All bits of the lanes first..end - 1 of N.
template <int N>
ZVP_INLINE Pack<int32_t, N> lanesBetween(int first, int end) {
  struct Switch {
    int32_t at[2 * N] = {};
    constexpr explicit Switch(bool ones) {
      for (int i = 0; i < N; ++i) at[ones ? N + i : i] = -1;
    }
  };
  static constexpr Switch kOn(true), kOff(false);  // after N lanes
  return load<Pack<int32_t, N>>(kOn.at + N - first) & load<Pack<int32_t, N>>(kOff.at + N - end);
}

// Elements first..end - 1 of those at p; the others are those of `otherwise`.
template <class V>
ZVP_INLINE V loadBetween(const float* p, int first, int end, V otherwise) {
  static_assert(std::is_same_v<V, Pack<float, lanes<float>>>, "parts are those of this build's widest pack of floats");
  const auto wanted = lanesBetween<laneCount<V>>(first, end);
  if constexpr (laneCount<V> == 16) {
    return V(_mm512_mask_loadu_ps(__m512(otherwise), _mm512_movepi32_mask(__m512i(wanted)), p));
  } else {
    return wanted ? V(_mm256_maskload_ps(p, __m256i(wanted))) : otherwise;
  }
}

template <class V>
ZVP_INLINE void storeBetween(float* p, int first, int end, V v) {
  static_assert(std::is_same_v<V, Pack<float, lanes<float>>>, "parts are those of this build's widest pack of floats");
  const auto wanted = lanesBetween<laneCount<V>>(first, end);
  if constexpr (laneCount<V> == 16) {
    _mm512_mask_storeu_ps(p, _mm512_movepi32_mask(__m512i(wanted)), __m512(v));
  } else {
    _mm256_maskstore_ps(p, __m256i(wanted), __m256(v));
  }
}

// 16 bytes to an address that is a multiple of 16, past the caches. A fence orders them before later stores.
ZVP_INLINE void storeStream(void* p, Pack<uint8_t, 16> v) { _mm_stream_si128(static_cast<__m128i*>(p), __m128i(v)); }
ZVP_INLINE void fence() { _mm_sfence(); }

}  // namespace zvp::simd
