// What looks along a pack: prefix sums, the last element, and slides of one pack into another.
#pragma once

#include "simd/arithmetic.h"
#include "simd/memory.h"

namespace zvp::simd {

// Bytes k.. of two registers, `low` being the first of them. 32 bytes without AVX2 are floats that move by one; on 64
// bytes k is a multiple of 4, or of the first or last 16.
template <int k, class V>
ZVP_INLINE V middleBytes(V low, V high) {
  static_assert(0 < k && k < int{sizeof(V)}, "no bytes in the middle");
  if constexpr (sizeof(V) == 16) {
    return V(_mm_alignr_epi8(__m128i(high), __m128i(low), k));
  } else if constexpr (sizeof(V) == 32 && kIntegerBytes < 32) {
    static_assert(std::is_same_v<V, Pack<float, 8>> && k == 28, "no such slide in this build");
    const __m256 l = __m256(low), h = __m256(high), inner = _mm256_permute2f128_ps(l, h, 0x21);
    const __m256 ends = _mm256_shuffle_ps(inner, h, _MM_SHUFFLE(0, 0, 3, 3));
    return V(_mm256_shuffle_ps(ends, h, _MM_SHUFFLE(2, 1, 2, 0)));
  } else if constexpr (sizeof(V) == 32) {
    const __m256i l = __m256i(low), h = __m256i(high), inner = _mm256_permute2x128_si256(l, h, 0x21);
    if constexpr (k < 16) {
      return V(_mm256_alignr_epi8(inner, l, k));
    } else {
      return V(_mm256_alignr_epi8(h, inner, k - 16));
    }
  } else {
    static_assert(sizeof(V) == kIntegerBytes, "no such register in this build");
    const __m512i l = __m512i(low), h = __m512i(high);
    if constexpr (k % 4 == 0) {
      return V(_mm512_alignr_epi32(h, l, k / 4));
    } else if constexpr (k < 16) {
      return V(_mm512_alignr_epi8(_mm512_alignr_epi64(h, l, 2), l, k));
    } else {
      static_assert(k > 48, "no such slide");
      return V(_mm512_alignr_epi8(h, _mm512_alignr_epi64(h, l, 6), k - 48));
    }
  }
}

template <int n, class V>
ZVP_INLINE V slideUp(V v, V before) {
  return middleBytes<int{sizeof(V)} - n* int{sizeof(Element<V>)}>(before, v);
}
template <int n, class V>
ZVP_INLINE V slideDown(V v, V after) {
  return middleBytes<n* int{sizeof(Element<V>)}>(v, after);
}

template <class V>
ZVP_INLINE V broadcastLast(V v) {
  static_assert(sizeof(Element<V>) == 4);
  if constexpr (laneCount<V> == 1) {
    return v;
  } else if constexpr (laneCount<V> == 4) {
    return V(_mm_shuffle_epi32(__m128i(v), 0xff));
  } else if constexpr (laneCount<V> == 8) {
    return V(_mm256_permutevar8x32_epi32(asRegister(v), _mm256_set1_epi32(7)));
  } else {
    return V(_mm512_permutexvar_epi32(_mm512_set1_epi32(15), asRegister(v)));
  }
}

// Sums wrap modulo 2^32.
template <int step = 1, class V>
ZVP_INLINE V prefixSum(V v) {
  static_assert(std::is_integral_v<Element<V>> && sizeof(Element<V>) == 4);
  if constexpr (laneCount<V> == 8) {
    // Both halves at once; the low one's sum then goes to every element of the high one.
    __m256i s = asRegister(v);
    s = _mm256_add_epi32(s, _mm256_slli_si256(s, 4));
    s = _mm256_add_epi32(s, _mm256_slli_si256(s, 8));
    const __m256i afterZero = _mm256_permute2x128_si256(s, s, 0x08);  // zero, then the low half
    return V(_mm256_add_epi32(s, _mm256_shuffle_epi32(afterZero, 0xff)));
  } else if constexpr (step < laneCount<V>) {
    using Wrapping = Pack<uint32_t, laneCount<V>>;
    return prefixSum<2 * step>(V(Wrapping(v) + Wrapping(slideUp<step>(v, V{}))));
  } else {
    return v;
  }
}

// For each group of four among N bytes: the weights, 1 or 0, with which they enter each of the N sums.
template <int N>
struct PrefixWeights {
  alignas(64) int8_t group[N / 4][4 * N] = {};

  constexpr PrefixWeights() {
    for (int g = 0; g < N / 4; ++g)
      for (int i = 0; i < 4 * N; ++i) group[g][i] = 4 * g + i % 4 <= i / 4;
  }
};
template <int N>
inline constexpr PrefixWeights<N> kPrefixWeights;

// Element i is the sum of the bytes p[0..i]. A group of four bytes, read into every 32-bit lane, takes no shuffle.
template <int N>
ZVP_INLINE Pack<int32_t, N> prefixSumOfBytes(const uint8_t* p) {
  if constexpr (N == 1) {
    return *p;
  } else {
    using Words = Pack<int16_t, 2 * N>;
    Words sums{};
    for (int g = 0; g < N / 4; ++g) {
      const auto bytes = broadcast<int32_t, N>(load<int32_t>(p + 4 * g));
      sums += Words(mulAddBytes(bytes, load<Pack<int32_t, N>>(kPrefixWeights<N>.group[g])));
    }
    const auto ones = broadcast<int16_t, 2 * N>(1);
    return Pack<int32_t, N>(mulAddWords(sums, ones));
  }
}

}  // namespace zvp::simd
