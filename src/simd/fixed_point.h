// The vector vocabulary of fixed-point sums: 16-bit elements, their 32-bit products, and the way back.
//
//   Halves<N>            N 32-bit numbers in two packs: the lower and the upper half of every 128 bits of a pack of words
//   loadWords<N>         N 16-bit elements from memory of that type or of bytes
//   widen, products, pairProducts
//                        words to 32-bit numbers: themselves, a x b, a x s + b x t
//   pairs                the words of a and b side by side, which several pairProducts may share
//   narrow               to words, and words to bytes, with saturation
//   nearest              single precision to 32-bit integers, ties to even; the argument must fit
//   shiftRight           arithmetic, all elements by the same count
#pragma once

#include "simd/simd.h"

namespace zvp::simd {

template <int N>
struct Halves {
  Pack<int32_t, N / 2> low, high;
};

template <int N>
struct RegisterOf;

#define ZVP_REGISTER(words, Register, Floats, prefix)                                                          \
  template <>                                                                                                  \
  struct RegisterOf<words> {                                                                                   \
    using Type = Register;                                                                                     \
  };                                                                                                           \
  ZVP_INLINE Register interleaveLow(Register a, Register b) { return prefix##_unpacklo_epi16(a, b); }          \
  ZVP_INLINE Register interleaveHigh(Register a, Register b) { return prefix##_unpackhi_epi16(a, b); }         \
  ZVP_INLINE Register addPairProducts(Register a, Register b) { return prefix##_madd_epi16(a, b); }            \
  ZVP_INLINE Register highProduct(Register a, Register b) { return prefix##_mulhi_epi16(a, b); }               \
  ZVP_INLINE Register saturateToWords(Register low, Register high) { return prefix##_packs_epi32(low, high); } \
  ZVP_INLINE Register shiftWords(Register v, __m128i count) { return prefix##_sra_epi16(v, count); }           \
  ZVP_INLINE Register nearestIntegers(Floats v) { return prefix##_cvtps_epi32(v); }

ZVP_REGISTER(8, __m128i, __m128, _mm)
#if defined(__AVX2__)
ZVP_REGISTER(16, __m256i, __m256, _mm256)
#endif
#if defined(__AVX512BW__)
ZVP_REGISTER(32, __m512i, __m512, _mm512)
#endif
#undef ZVP_REGISTER

template <int N>
using Register = typename RegisterOf<N>::Type;

template <int N>
ZVP_INLINE Pack<int16_t, N> loadWords(const int16_t* p) {
  return load<Pack<int16_t, N>>(p);
}
template <int N, class Byte>
requires(sizeof(Byte) == 1) ZVP_INLINE Pack<int16_t, N> loadWords(const Byte* p) {
  using To = Pack<int16_t, N>;
  constexpr bool isSigned = std::is_signed_v<Byte>;
  if constexpr (N == 8) {
    const __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    return To(isSigned ? _mm_cvtepi8_epi16(v) : _mm_cvtepu8_epi16(v));
#if defined(__AVX2__)
  } else if constexpr (N == 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    return To(isSigned ? _mm256_cvtepi8_epi16(v) : _mm256_cvtepu8_epi16(v));
#endif
#if defined(__AVX512BW__)
  } else if constexpr (N == 32) {
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    return To(isSigned ? _mm512_cvtepi8_epi16(v) : _mm512_cvtepu8_epi16(v));
#endif
  } else {
    static_assert(N < 0, "no such load in this build");
  }
}

// Elements of a and b side by side, a's in the lower halves of the 32-bit numbers.
template <int N>
ZVP_INLINE Halves<N> pairs(Pack<int16_t, N> a, Pack<int16_t, N> b) {
  using Half = Pack<int32_t, N / 2>;
  const Register<N> x = Register<N>(a), y = Register<N>(b);
  return {Half(interleaveLow(x, y)), Half(interleaveHigh(x, y))};
}

// a x s + b x t, element by element, from pairs of a and b; every pair (s, t) is one 32-bit number with s in the lower
// half.
template <int N>
ZVP_INLINE Halves<N> pairProducts(Halves<N> ab, Pack<int32_t, N / 2> st) {
  using Half = Pack<int32_t, N / 2>;
  const Register<N> factors = Register<N>(st);
  return {Half(addPairProducts(Register<N>(ab.low), factors)), Half(addPairProducts(Register<N>(ab.high), factors))};
}
template <int N>
ZVP_INLINE Halves<N> pairProducts(Pack<int16_t, N> a, Pack<int16_t, N> b, Pack<int32_t, N / 2> st) {
  return pairProducts<N>(pairs<N>(a, b), st);
}

template <int N>
ZVP_INLINE Halves<N> widen(Pack<int16_t, N> v) {
  return pairProducts<N>(v, Pack<int16_t, N>{}, broadcast<int32_t, N / 2>(1));
}

template <int N>
ZVP_INLINE Halves<N> products(Pack<int16_t, N> a, Pack<int16_t, N> b) {
  using Half = Pack<int32_t, N / 2>;
  using Wrapping = Pack<uint16_t, N>;
  const Register<N> low = Register<N>(Wrapping(a) * Wrapping(b)), high = highProduct(Register<N>(a), Register<N>(b));
  return {Half(interleaveLow(low, high)), Half(interleaveHigh(low, high))};
}

template <int N>
ZVP_INLINE Pack<int16_t, N> narrow(Halves<N> v) {
  return Pack<int16_t, N>(saturateToWords(Register<N>(v.low), Register<N>(v.high)));
}

template <class Out, int N>
ZVP_INLINE Pack<Out, N> narrow(Pack<int16_t, N> v) {
  using To = Pack<Out, N>;
  if constexpr (std::is_same_v<Out, int16_t>) {
    return v;
  } else if constexpr (N == 8) {
    const __m128i x = __m128i(v), bytes = std::is_signed_v<Out> ? _mm_packs_epi16(x, x) : _mm_packus_epi16(x, x);
    return std::bit_cast<To>(int64_t{Pack<int64_t, 2>(bytes)[0]});
#if defined(__AVX512BW__)
  } else if constexpr (std::is_signed_v<Out> && N == 16) {
    return To(_mm256_cvtsepi16_epi8(__m256i(v)));
  } else if constexpr (N == 16) {
    return To(_mm256_cvtusepi16_epi8(_mm256_max_epi16(__m256i(v), _mm256_setzero_si256())));
  } else if constexpr (std::is_signed_v<Out>) {
    return To(_mm512_cvtsepi16_epi8(__m512i(v)));
  } else {
    return To(_mm512_cvtusepi16_epi8(_mm512_max_epi16(__m512i(v), _mm512_setzero_si512())));
#elif defined(__AVX2__)
  } else {
    const __m128i low = _mm256_castsi256_si128(__m256i(v)), high = _mm256_extracti128_si256(__m256i(v), 1);
    return To(std::is_signed_v<Out> ? _mm_packs_epi16(low, high) : _mm_packus_epi16(low, high));
#endif
  }
}

template <class V>
ZVP_INLINE auto nearest(V v) {
  return Pack<int32_t, laneCount<V>>(nearestIntegers(v));
}

template <class V>
ZVP_INLINE V shiftRight(V v, int count) {
  static_assert(sizeof(Element<V>) == 2);
  return V(shiftWords(Register<laneCount<V>>(v), _mm_cvtsi32_si128(count)));
}

}  // namespace zvp::simd
