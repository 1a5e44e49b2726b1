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

#include "simd/shuffle.h"
#include "simd/simd.h"

namespace zvp::simd {

template <int N>
struct Phases {
  Pack<float, N> even, odd;
};

// Where element i of the even pixels is among the interleaved ones; the odd pixel follows.
template <int channels>
constexpr int evenAt(int i) {
  return i / channels * 2 * channels + i % channels;
}
// Where interleaved element i is among the even and, from N on, the odd ones.
template <int N, int channels>
constexpr int phaseAt(int i) {
  return i / (2 * channels) * channels + i % channels + i / channels % 2 * N;
}

template <int N, int channels = 1>
ZVP_INLINE Phases<N> loadPhases(const float* p) {
  using V = Pack<float, N>;
  static_assert(channels == 1 || channels == 3);
  if constexpr (N / channels == 1) {  // a pack is a pixel
    return {load<V>(p), load<V>(p + channels)};
  } else if constexpr (N == 8 && channels == 1) {
    // Halves that change places on their way from memory leave one shuffle inside halves for each result.
    const auto halves = [p](int low, int high) {
      return joined(load<Pack<float, 4>>(p + low), load<Pack<float, 4>>(p + high));
    };
    const V a = halves(0, 8), b = halves(4, 12);
    return {_mm256_shuffle_ps(a, b, 0x88), _mm256_shuffle_ps(a, b, 0xdd)};
  } else {
    const V a = load<V>(p), b = load<V>(p + N);
    return {shuffle(a, b, [](int i) { return evenAt<channels>(i) % (2 * N); }),
            shuffle(a, b, [](int i) { return (evenAt<channels>(i) + channels) % (2 * N); })};
  }
}

template <int N, int channels = 1>
ZVP_INLINE void storePhases(float* p, Phases<N> v) {
  static_assert(channels == 1 || channels == 3);
  if constexpr (N / channels == 1) {
    store(p, v.even);
    store(p + channels, v.odd);
  } else {
    store(p, shuffle(v.even, v.odd, [](int i) { return phaseAt<N, channels>(i); }));
    store(p + N, shuffle(v.even, v.odd, [](int i) { return phaseAt<N, channels>(i + N); }));
  }
}

template <int N>
struct Strided {
  Pack<float, N> pack[5];
};

template <int N, int channels = 1>
ZVP_INLINE Strided<N> loadStrided(const float* p) {
  if constexpr (N == 16 && channels == 1) {
    // A pack is the one before last, moved on by one element: that is fewer loads across cache lines.
    const auto append = [](Pack<float, N> v, const float* last) {
      return slideDown<1>(v, broadcast<float, N>(load<float>(last)));
    };
    const auto first = loadPhases<N>(p);
    const auto third = append(first.even, p + 2 * N);
    return {{first.even, first.odd, third, append(first.odd, p + 2 * N + 1), append(third, p + 2 * N + 2)}};
  } else {
    constexpr int kPair = 2 * channels;
    const auto first = loadPhases<N, channels>(p), second = loadPhases<N, channels>(p + kPair);
    return {{first.even, first.odd, second.even, second.odd, loadPhases<N, channels>(p + 2 * kPair).even}};
  }
}

// Both work on the first three quarters of a register and leave the last quarter undefined.
template <class V>
ZVP_INLINE V permuteSixes(V v, __m128i order) {
  if constexpr (sizeof(V) == 16) {
    return V(_mm_shuffle_epi8(asRegister(v), order));
  } else if constexpr (sizeof(V) == 32) {
    const __m256i spread = _mm256_permutevar8x32_epi32(asRegister(v), _mm256_setr_epi32(0, 1, 2, 2, 3, 4, 5, 5));
    const __m256i permuted = _mm256_shuffle_epi8(spread, _mm256_broadcastsi128_si256(order));
    return V(_mm256_permutevar8x32_epi32(permuted, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 6, 6)));
  } else {
    const __m512i apart = _mm512_setr_epi32(0, 1, 2, 2, 3, 4, 5, 5, 6, 7, 8, 8, 9, 10, 11, 11);
    const __m512i together = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 14, 14, 14, 14);
    const __m512i spread = _mm512_permutexvar_epi32(apart, asRegister(v));
    return V(_mm512_permutexvar_epi32(together, _mm512_shuffle_epi8(spread, _mm512_broadcast_i32x4(order))));
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
