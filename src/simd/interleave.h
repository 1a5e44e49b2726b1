// The vector vocabulary of images of two interleaved phases: even and odd elements, even and odd pixels.
//
//   loadPhases<N, channels>
//                       2 N floats from memory, split into the even and the odd pixels: of one channel, or of three,
//                       which fill N - N % 3 elements and leave the others undefined
//   storePhases         the inverse; for three channels it spoils what follows, up to 2 N floats in all
//   loadStrided<N, channels>
//                       five packs: element i of pack k is that of pixel 2 i + k
//   pairChannels        bytes: pixels a b of three channels, in groups of six, become a0 b0 a1 b1 a2 b2
//   unpairChannels      the inverse
#pragma once

#include "simd/simd.h"

namespace zvp::simd {

template <int N>
struct Phases {
  Pack<float, N> even, odd;
};

template <int N, int channels = 1>
ZVP_INLINE Phases<N> loadPhases(const float* p) {
  using V = Pack<float, N>;
  if constexpr (channels == 3) {
    if constexpr (N == 4) {
      return {load<V>(p), load<V>(p + 3)};
#if defined(__AVX512F__)
    } else {
      const __m512 a = _mm512_loadu_ps(p), b = _mm512_loadu_ps(p + 16);
      const __m512i even = _mm512_setr_epi32(0, 1, 2, 6, 7, 8, 12, 13, 14, 18, 19, 20, 24, 25, 26, 26);
      const __m512i odd = _mm512_setr_epi32(3, 4, 5, 9, 10, 11, 15, 16, 17, 21, 22, 23, 27, 28, 29, 29);
      return {V(_mm512_permutex2var_ps(a, even, b)), V(_mm512_permutex2var_ps(a, odd, b))};
#endif
    }
  } else if constexpr (N == 1) {
    return {load<float>(p), load<float>(p + 1)};
  } else if constexpr (N == 4) {
    const __m128 a = _mm_loadu_ps(p), b = _mm_loadu_ps(p + 4);
    return {V(_mm_shuffle_ps(a, b, 0x88)), V(_mm_shuffle_ps(a, b, 0xdd))};
#if defined(__AVX512F__)
  } else if constexpr (N == 16) {
    const __m512 a = _mm512_loadu_ps(p), b = _mm512_loadu_ps(p + 16);
    const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const __m512i odd = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
    return {V(_mm512_permutex2var_ps(a, even, b)), V(_mm512_permutex2var_ps(a, odd, b))};
#endif
  } else {
    static_assert(N == 8);
    const auto halves = [p](int low, int high) {
      return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(p + low)), _mm_loadu_ps(p + high), 1);
    };
    const __m256 a = halves(0, 8), b = halves(4, 12);
    return {V(_mm256_shuffle_ps(a, b, 0x88)), V(_mm256_shuffle_ps(a, b, 0xdd))};
  }
}

template <int N, int channels = 1>
ZVP_INLINE void storePhases(float* p, Phases<N> v) {
  if constexpr (channels == 3) {
    if constexpr (N == 4) {
      store(p, v.even);
      store(p + 3, v.odd);
#if defined(__AVX512F__)
    } else {
      const __m512i low = _mm512_setr_epi32(0, 1, 2, 16, 17, 18, 3, 4, 5, 19, 20, 21, 6, 7, 8, 22);
      const __m512i high = _mm512_setr_epi32(23, 24, 9, 10, 11, 25, 26, 27, 12, 13, 14, 28, 29, 30, 30, 30);
      _mm512_storeu_ps(p, _mm512_permutex2var_ps(__m512(v.even), low, __m512(v.odd)));
      _mm512_storeu_ps(p + 16, _mm512_permutex2var_ps(__m512(v.even), high, __m512(v.odd)));
#endif
    }
  } else if constexpr (N == 1) {
    store(p, v.even);
    store(p + 1, v.odd);
  } else if constexpr (N == 4) {
    _mm_storeu_ps(p, _mm_unpacklo_ps(__m128(v.even), __m128(v.odd)));
    _mm_storeu_ps(p + 4, _mm_unpackhi_ps(__m128(v.even), __m128(v.odd)));
#if defined(__AVX512F__)
  } else if constexpr (N == 16) {
    const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512i high = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    _mm512_storeu_ps(p, _mm512_permutex2var_ps(__m512(v.even), low, __m512(v.odd)));
    _mm512_storeu_ps(p + 16, _mm512_permutex2var_ps(__m512(v.even), high, __m512(v.odd)));
#endif
  } else {
    static_assert(N == 8);
    const __m256 a = _mm256_unpacklo_ps(__m256(v.even), __m256(v.odd));
    const __m256 b = _mm256_unpackhi_ps(__m256(v.even), __m256(v.odd));
    _mm256_storeu_ps(p, _mm256_permute2f128_ps(a, b, 0x20));
    _mm256_storeu_ps(p + 8, _mm256_permute2f128_ps(a, b, 0x31));
  }
}

template <int N>
struct Strided {
  Pack<float, N> pack[5];
};

template <int N, int channels = 1>
ZVP_INLINE Strided<N> loadStrided(const float* p) {
#if defined(__AVX512F__)
  if constexpr (N == 16 && channels == 1) {
    // A pack is the one before last, moved on by one element: that is fewer loads across cache lines.
    const auto append = [](Pack<float, N> v, const float* last) {
      return Pack<float, N>(_mm512_castsi512_ps(
          _mm512_alignr_epi32(_mm512_set1_epi32(load<int32_t>(last)), _mm512_castps_si512(__m512(v)), 1)));
    };
    const auto first = loadPhases<N>(p);
    const auto third = append(first.even, p + 2 * N);
    return {{first.even, first.odd, third, append(first.odd, p + 2 * N + 1), append(third, p + 2 * N + 2)}};
  }
#endif
  constexpr int kPair = 2 * channels;
  const auto first = loadPhases<N, channels>(p), second = loadPhases<N, channels>(p + kPair);
  return {{first.even, first.odd, second.even, second.odd, loadPhases<N, channels>(p + 2 * kPair).even}};
}

// Both work on the first three quarters of a register and leave the last quarter undefined.
template <class V>
ZVP_INLINE V permuteSixes(V v, __m128i order) {
  if constexpr (sizeof(V) == 16) {
    return V(_mm_shuffle_epi8(__m128i(v), order));
#if defined(__AVX2__)
  } else if constexpr (sizeof(V) == 32) {
    const __m256i spread = _mm256_permutevar8x32_epi32(__m256i(v), _mm256_setr_epi32(0, 1, 2, 2, 3, 4, 5, 5));
    const __m256i permuted = _mm256_shuffle_epi8(spread, _mm256_broadcastsi128_si256(order));
    return V(_mm256_permutevar8x32_epi32(permuted, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 6, 6)));
#endif
#if defined(__AVX512BW__)
  } else if constexpr (sizeof(V) == 64) {
    const __m512i apart = _mm512_setr_epi32(0, 1, 2, 2, 3, 4, 5, 5, 6, 7, 8, 8, 9, 10, 11, 11);
    const __m512i together = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 14, 14, 14, 14);
    const __m512i spread = _mm512_permutexvar_epi32(apart, __m512i(v));
    return V(_mm512_permutexvar_epi32(together, _mm512_shuffle_epi8(spread, _mm512_broadcast_i32x4(order))));
#endif
  } else {
    static_assert(sizeof(V) == 0, "no such register in this build");
  }
}

template <class V>
ZVP_INLINE V pairChannels(V v) {
  return permuteSixes(v, _mm_setr_epi8(0, 3, 1, 4, 2, 5, 6, 9, 7, 10, 8, 11, 11, 11, 11, 11));
}

template <class V>
ZVP_INLINE V unpairChannels(V v) {
  return permuteSixes(v, _mm_setr_epi8(0, 2, 4, 1, 3, 5, 6, 8, 10, 7, 9, 11, 11, 11, 11, 11));
}

}  // namespace zvp::simd
