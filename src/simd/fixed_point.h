// The vector vocabulary of fixed-point sums: 16-bit elements, their 32-bit products, and the way back.
//
//   Halves<N>            N 32-bit numbers in two packs: the lower and the upper half of every 128 bits of a pack of words
//   loadWords<N>         N 16-bit elements from memory of that type or of bytes
//   widen, products, pairProducts
//                        words to 32-bit numbers: themselves, a x b, a x s + b x t
//   pairs                the words of a and b side by side, which several pairProducts may share
//   narrow               to words, and words to bytes, with saturation
//   shiftRight           arithmetic, all elements by the same count
#pragma once

#include "simd/simd.h"

namespace zvp::simd {

template <int N>
struct Halves {
  Pack<int32_t, N / 2> low, high;
};

// The words of a and b in turn, from the lower or the upper half of every 128 bits.
ZVP_INTEGER_OPERATION(interleaveLow, unpacklo_epi16)
ZVP_INTEGER_OPERATION(interleaveHigh, unpackhi_epi16)

// The upper 16 bits of the products of signed words.
ZVP_INTEGER_OPERATION(mulHigh, mulhi_epi16)

// 32-bit numbers as words, in the order that interleaving gave them.
ZVP_INTEGER_OPERATION(saturateToWords, packs_epi32)

template <int N, class S>
ZVP_INLINE Pack<int16_t, N> loadWords(const S* p) {
  return loadAs<int16_t, N>(p);
}

// Elements of a and b side by side, a's in the lower halves of the 32-bit numbers.
template <int N>
ZVP_INLINE Halves<N> pairs(Pack<int16_t, N> a, Pack<int16_t, N> b) {
  using Half = Pack<int32_t, N / 2>;
  return {Half(interleaveLow(a, b)), Half(interleaveHigh(a, b))};
}

// a x s + b x t, element by element, from pairs of a and b; every pair (s, t) is one 32-bit number with s in the lower
// half.
template <int N>
ZVP_INLINE Halves<N> pairProducts(Halves<N> ab, Pack<int32_t, N / 2> st) {
  return {mulAddWords(ab.low, st), mulAddWords(ab.high, st)};
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
  using Wrapping = Pack<uint16_t, N>;
  return pairs<N>(Pack<int16_t, N>(Wrapping(a) * Wrapping(b)), mulHigh(a, b));
}

template <int N>
ZVP_INLINE Pack<int16_t, N> narrow(Halves<N> v) {
  return Pack<int16_t, N>(saturateToWords(v.low, v.high));
}

template <class Out, int N>
ZVP_INLINE Pack<Out, N> narrow(Pack<int16_t, N> v) {
  using To = Pack<Out, N>;
  constexpr bool isSigned = std::is_signed_v<Out>;
  if constexpr (std::is_same_v<Out, int16_t>) {
    return v;
  } else if constexpr (N == 8) {
    const __m128i x = asRegister(v);
    return firstBytes<To>(isSigned ? _mm_packs_epi16(x, x) : _mm_packus_epi16(x, x));
  } else if constexpr (kIntegerBytes == 64) {
    if constexpr (isSigned) {
      ZVP_RETURN_BY_WIDTH(sizeof(v), To, cvtsepi16_epi8, asRegister(v));
    } else {
      ZVP_RETURN_BY_WIDTH(sizeof(v), To, cvtusepi16_epi8, asRegister(max(v, Pack<int16_t, N>{})));
    }
  } else {
    static_assert(N == lanes<int16_t>, "no such register in this build");
    const __m128i low = asRegister(lowHalf(v)), high = asRegister(highHalf(v));
    return To(isSigned ? _mm_packs_epi16(low, high) : _mm_packus_epi16(low, high));
  }
}

template <class V>
ZVP_INLINE V shiftRight(V v, int count) {
  static_assert(sizeof(Element<V>) == 2);
  ZVP_RETURN_BY_WIDTH(sizeof(V), V, sra_epi16, asRegister(v), _mm_cvtsi32_si128(count));
}

}  // namespace zvp::simd
