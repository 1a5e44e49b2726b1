// The vector vocabulary: everything the kernels need beyond the operators of the compilers' vector types.
//
//   Pack<T, N>           N elements of T; Pack<T, 1> is T itself, so that a kernel's tail is the kernel with N = 1
//   lanes<T>             elements of T in one register of this build
//   load<V>, store       from and to memory of any alignment
//   loadAs<T, N>         N elements of another type, converted to T
//   loadNonZero<N>       the mask of the bytes that are not 0: elements of 32 bits, all set or all clear
//   convert<T>           element by element; double to int32_t rounds to nearest even
//   min, max, absolute, squareRoot, + - * & | ^ < > ?: as usual
//   addOrdered, mulOrdered
//                        + and * of floats with every bit defined: of two NaNs the left one is kept, made quiet
//   maskBits             one bit for each element of a comparison
//   mulSigned32          64-bit products of the low signed halves
//   prefixSum            element i becomes the sum of the elements 0..i
//   prefixSumOfBytes     the same for the bytes at an address, which is faster than widening them first
//   mulAddBytes, mulAddWords
//                        products of adjacent elements, added in pairs
//   broadcastLast        every element becomes the last one
//   addSaturated         unsigned sums that stop at the type's maximum
//   slideUp<n>, slideDown<n>
//                        elements move up (down) by n places; the free places take the last (first) n of another pack
//   loadBetween, storeBetween
//                        some elements in the middle of a pack; no other memory is touched
//   storeStream, fence   stores that pass the caches by
//
// This is the only header with intrinsics and processor macros.
#pragma once

#include <immintrin.h>
#include <stdint.h>

#include <bit>
#include <type_traits>

namespace zvp::simd {

#if defined(__AVX512BW__) && defined(__AVX512DQ__) && defined(__AVX512VL__)
inline constexpr int kIntegerBytes = 64, kFloatBytes = 64;
#elif defined(__AVX2__)
inline constexpr int kIntegerBytes = 32, kFloatBytes = 32;
#else
inline constexpr int kIntegerBytes = 16, kFloatBytes = 32;
#endif

#define ZVP_INLINE __attribute__((always_inline)) inline

template <class T, int N>
struct PackOf {
  typedef T Type __attribute__((vector_size(N * sizeof(T))));
};
template <class T>
struct PackOf<T, 1> {
  using Type = T;
};
template <class T, int N>
using Pack = typename PackOf<T, N>::Type;

template <class T>
inline constexpr int lanes = (std::is_floating_point_v<T> ? kFloatBytes : kIntegerBytes) / int{sizeof(T)};

template <class V>
struct ElementOf {
  using Type = std::remove_cvref_t<decltype(std::declval<V&>()[0])>;
};
template <class V>
requires std::is_arithmetic_v<V>
struct ElementOf<V> {
  using Type = V;
};
template <class V>
using Element = typename ElementOf<V>::Type;
template <class V>
inline constexpr int laneCount = int{sizeof(V)} / int{sizeof(Element<V>)};

// Memory of any alignment and any effective type.
template <class V>
struct [[gnu::packed, gnu::may_alias]] Loose {
  V value;
};

template <class V>
ZVP_INLINE V load(const void* p) {
  return static_cast<const Loose<V>*>(p)->value;
}

template <class V>
ZVP_INLINE void store(void* p, V v) {
  static_cast<Loose<V>*>(p)->value = v;
}

template <class T, int N>
ZVP_INLINE Pack<T, N> broadcast(T value) {
  if constexpr (N == 1) {
    return value;
  } else {
    return value - Pack<T, N>{};  // v - 0 keeps every value's bits, -0 included
  }
}

template <class V>
ZVP_INLINE V min(V a, V b) {
  return a < b ? a : b;
}

template <class V>
ZVP_INLINE V max(V a, V b) {
  return a > b ? a : b;
}

// Clears the sign bit, of NaNs too.
template <class V>
ZVP_INLINE V absolute(V v) {
  static_assert(std::is_same_v<Element<V>, float>);
  using Bits = Pack<uint32_t, laneCount<V>>;
  return std::bit_cast<V>(Bits(std::bit_cast<Bits>(v) & 0x7fffffffu));
}

template <class V>
ZVP_INLINE V squareRoot(V v) {
  if constexpr (std::is_same_v<V, float>) {
    return __builtin_sqrtf(v);
  } else if constexpr (std::is_same_v<V, double>) {
    return __builtin_sqrt(v);
  } else if constexpr (std::is_same_v<V, Pack<float, 4>>) {
    return V(_mm_sqrt_ps(__m128(v)));
  } else if constexpr (std::is_same_v<V, Pack<double, 4>>) {
    return V(_mm256_sqrt_pd(__m256d(v)));
#if defined(__AVX512F__)
  } else if constexpr (std::is_same_v<V, Pack<double, 8>>) {
    return V(_mm512_sqrt_pd(__m512d(v)));
#endif
  } else {
    static_assert(std::is_same_v<V, Pack<float, 8>>);
    return V(_mm256_sqrt_ps(__m256(v)));
  }
}

template <class T, class V>
ZVP_INLINE Pack<T, laneCount<V>> convert(V v) {
  using S = Element<V>;
  constexpr int N = laneCount<V>;
  using To = Pack<T, N>;
  if constexpr (std::is_same_v<S, T>) {
    return v;
  } else if constexpr (std::is_same_v<S, double> && std::is_same_v<T, int32_t>) {
    if constexpr (N == 1) {
      return _mm_cvtsd_si32(_mm_set_sd(v));
    } else if constexpr (N == 4) {
      return To(_mm256_cvtpd_epi32(__m256d(v)));
    } else {
      static_assert(N == 8);
#if defined(__AVX512F__)
      return To(_mm512_cvtpd_epi32(__m512d(v)));
#endif
    }
  } else if constexpr (N == 1) {
    return static_cast<T>(v);
  } else if constexpr (sizeof(S) == sizeof(T)) {
    return __builtin_convertvector(v, To);
  } else if constexpr (std::is_same_v<S, int32_t> && std::is_same_v<T, double> && N == 4) {
    return To(_mm256_cvtepi32_pd(__m128i(v)));
  } else if constexpr (std::is_same_v<S, float> && std::is_same_v<T, double> && N == 4) {
    return To(_mm256_cvtps_pd(__m128(v)));
  } else if constexpr (std::is_same_v<S, double> && std::is_same_v<T, float> && N == 4) {
    return To(_mm256_cvtpd_ps(__m256d(v)));
  } else if constexpr (std::is_same_v<S, int32_t> && std::is_same_v<T, int64_t> && N == 4) {
#if defined(__AVX2__)
    return To(_mm256_cvtepi32_epi64(__m128i(v)));
#else
    const __m128i low = _mm_cvtepi32_epi64(__m128i(v)),
                  high = _mm_cvtepi32_epi64(_mm_unpackhi_epi64(__m128i(v), __m128i(v)));
    return To(_mm256_set_m128i(high, low));
#endif
#if defined(__AVX512F__)
  } else if constexpr (std::is_same_v<S, int32_t> && std::is_same_v<T, double> && N == 8) {
    return To(_mm512_cvtepi32_pd(__m256i(v)));
  } else if constexpr (std::is_same_v<S, float> && std::is_same_v<T, double> && N == 8) {
    return To(_mm512_cvtps_pd(__m256(v)));
  } else if constexpr (std::is_same_v<S, double> && std::is_same_v<T, float> && N == 8) {
    return To(_mm512_cvtpd_ps(__m512d(v)));
  } else if constexpr (std::is_same_v<S, int32_t> && std::is_same_v<T, int64_t> && N == 8) {
    return To(_mm512_cvtepi32_epi64(__m256i(v)));
#endif
  } else {
    static_assert(N < 0, "no such conversion in this build");
  }
}

template <class S>
ZVP_INLINE Pack<int32_t, 4> widenFour(const S* p) {
  const auto from = [p] {
    if constexpr (sizeof(S) == 1) return _mm_cvtsi32_si128(load<int32_t>(p));
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  }();
  using To = Pack<int32_t, 4>;
  if constexpr (std::is_same_v<S, uint8_t>) return To(_mm_cvtepu8_epi32(from));
  if constexpr (std::is_same_v<S, int8_t>) return To(_mm_cvtepi8_epi32(from));
  if constexpr (std::is_same_v<S, uint16_t>) return To(_mm_cvtepu16_epi32(from));
  if constexpr (std::is_same_v<S, int16_t>) return To(_mm_cvtepi16_epi32(from));
}

#if defined(__AVX2__)
template <class S>
ZVP_INLINE Pack<int32_t, 8> widenEight(const S* p) {
  const auto from = [p] {
    const auto* at = reinterpret_cast<const __m128i*>(p);
    return sizeof(S) == 1 ? _mm_loadl_epi64(at) : _mm_loadu_si128(at);
  }();
  using To = Pack<int32_t, 8>;
  if constexpr (std::is_same_v<S, uint8_t>) return To(_mm256_cvtepu8_epi32(from));
  if constexpr (std::is_same_v<S, int8_t>) return To(_mm256_cvtepi8_epi32(from));
  if constexpr (std::is_same_v<S, uint16_t>) return To(_mm256_cvtepu16_epi32(from));
  if constexpr (std::is_same_v<S, int16_t>) return To(_mm256_cvtepi16_epi32(from));
}
#else
template <class S>
ZVP_INLINE Pack<int32_t, 8> widenEight(const S* p) {
  return Pack<int32_t, 8>(_mm256_set_m128i(__m128i(widenFour(p + 4)), __m128i(widenFour(p))));
}
#endif

#if defined(__AVX512F__)
template <class S>
ZVP_INLINE Pack<int32_t, 16> widenSixteen(const S* p) {
  using To = Pack<int32_t, 16>;
  if constexpr (std::is_same_v<S, uint8_t>) return To(_mm512_cvtepu8_epi32(_mm_loadu_si128((const __m128i*)p)));
  if constexpr (std::is_same_v<S, int8_t>) return To(_mm512_cvtepi8_epi32(_mm_loadu_si128((const __m128i*)p)));
  if constexpr (std::is_same_v<S, uint16_t>) return To(_mm512_cvtepu16_epi32(_mm256_loadu_si256((const __m256i*)p)));
  if constexpr (std::is_same_v<S, int16_t>) return To(_mm512_cvtepi16_epi32(_mm256_loadu_si256((const __m256i*)p)));
}
#endif

template <class T, int N, class S>
ZVP_INLINE Pack<T, N> loadAs(const S* p) {
  if constexpr (std::is_same_v<S, T> || N == 1 || sizeof(S) > 2) {
    return convert<T>(load<Pack<S, N>>(p));
  } else if constexpr (std::is_same_v<T, float>) {
    return convert<T>(loadAs<int32_t, N>(p));
  } else {
    static_assert(std::is_same_v<T, int32_t>);
    if constexpr (N == 4) {
      return widenFour(p);
    } else if constexpr (N == 8) {
      return widenEight(p);
    } else {
      static_assert(N == 16);
#if defined(__AVX512F__)
      return widenSixteen(p);
#endif
    }
  }
}

// Element i is -1 where byte i is not 0, else 0.
template <int N>
ZVP_INLINE Pack<int32_t, N> loadNonZero(const uint8_t* p) {
  if constexpr (N == 1) {
    return -int32_t{*p != 0};
#if !defined(__AVX2__)
  } else if constexpr (N == 8) {
    // Every element gets a word with four bytes and keeps its own, which takes no shuffle; AVX compares only floats.
    const __m256 low = _mm256_set1_ps(load<float>(p)), high = _mm256_set1_ps(load<float>(p + 4));
    const __m256 ownByte =
        _mm256_castsi256_ps(_mm256_set_epi32(-1 << 24, 0xff0000, 0xff00, 0xff, -1 << 24, 0xff0000, 0xff00, 0xff));
    const __m256 own = _mm256_and_ps(_mm256_blend_ps(low, high, 0xf0), ownByte);
    return Pack<int32_t, N>(convert<float>(Pack<int32_t, N>(own)) != 0.0f);
#endif
  } else {
    return Pack<int32_t, N>(loadAs<int32_t, N>(p) != 0);
  }
}

// A compiler may swap the operands of a sum or product, and with them the NaN that the processor keeps. An invalid
// operation gives the quiet NaN with the sign set and no payload.
template <class V>
ZVP_INLINE V addOrdered(V a, V b) {
  static_assert(std::is_same_v<Element<V>, float>);
  V sum;
  if constexpr (laneCount<V> == 1) {
    asm("vaddss %2, %1, %0" : "=v"(sum) : "v"(a), "v"(b));
  } else {
    asm("vaddps %2, %1, %0" : "=v"(sum) : "v"(a), "v"(b));
  }
  return sum;
}

template <class V>
ZVP_INLINE V mulOrdered(V a, V b) {
  static_assert(std::is_same_v<Element<V>, float>);
  V product;
  if constexpr (laneCount<V> == 1) {
    asm("vmulss %2, %1, %0" : "=v"(product) : "v"(a), "v"(b));
  } else {
    asm("vmulps %2, %1, %0" : "=v"(product) : "v"(a), "v"(b));
  }
  return product;
}

// Bit i is set where element i of a comparison holds. V has integer elements, each 0 or -1; or is a bool.
template <class V>
ZVP_INLINE uint64_t maskBits(V comparison) {
  if constexpr (std::is_arithmetic_v<V>) {
    return comparison != 0;
  } else {
    constexpr int kElement = sizeof(Element<V>), kBytes = sizeof(V);
#if defined(__AVX512BW__) && defined(__AVX512DQ__)
    if constexpr (kBytes == 64) {
      if constexpr (kElement == 1) return _mm512_movepi8_mask(__m512i(comparison));
      if constexpr (kElement == 2) return _mm512_movepi16_mask(__m512i(comparison));
      if constexpr (kElement == 4) return _mm512_movepi32_mask(__m512i(comparison));
    }
#endif
    if constexpr (kBytes == 32 && kElement == 4) {
      return static_cast<uint32_t>(_mm256_movemask_ps(__m256(comparison)));
    } else if constexpr (kBytes == 32) {
      const __m256i v = __m256i(comparison);
      const __m128i low = _mm256_castsi256_si128(v), high = _mm256_extractf128_si256(v, 1);
      if constexpr (kElement == 2) return static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(low, high)));
      return static_cast<uint32_t>(_mm_movemask_epi8(low)) | static_cast<uint32_t>(_mm_movemask_epi8(high)) << 16;
    } else if constexpr (kBytes == 16) {
      const __m128i v = __m128i(comparison);
      if constexpr (kElement == 4) return static_cast<uint32_t>(_mm_movemask_ps(_mm_castsi128_ps(v)));
      if constexpr (kElement == 2)
        return static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(v, _mm_setzero_si128())));
      return static_cast<uint32_t>(_mm_movemask_epi8(v));
    }
  }
}

// Every 64-bit lane: the product of the low 32 bits of both, taken as signed.
template <class V>
ZVP_INLINE V mulSigned32(V a, V b) {
  static_assert(std::is_same_v<Element<V>, int64_t>);
  if constexpr (laneCount<V> == 1) {
    return int64_t{static_cast<int32_t>(a)} * static_cast<int32_t>(b);
#if defined(__AVX512F__)
  } else if constexpr (laneCount<V> == 8) {
    return V(_mm512_mul_epi32(__m512i(a), __m512i(b)));
#endif
  } else {
    static_assert(laneCount<V> == 4);
#if defined(__AVX2__)
    return V(_mm256_mul_epi32(__m256i(a), __m256i(b)));
#else
    const __m256i x = __m256i(a), y = __m256i(b);
    return V(_mm256_set_m128i(_mm_mul_epi32(_mm256_extractf128_si256(x, 1), _mm256_extractf128_si256(y, 1)),
                              _mm_mul_epi32(_mm256_castsi256_si128(x), _mm256_castsi256_si128(y))));
#endif
  }
}

// Sums wrap modulo 2^32.
template <class V>
ZVP_INLINE V prefixSum(V v) {
  static_assert(sizeof(Element<V>) == 4);
  if constexpr (laneCount<V> == 4) {
    __m128i s = __m128i(v);
    s = _mm_add_epi32(s, _mm_slli_si128(s, 4));
    return V(_mm_add_epi32(s, _mm_slli_si128(s, 8)));
#if defined(__AVX2__)
  } else if constexpr (laneCount<V> == 8) {
    __m256i s = __m256i(v);
    s = _mm256_add_epi32(s, _mm256_slli_si256(s, 4));
    s = _mm256_add_epi32(s, _mm256_slli_si256(s, 8));
    const __m256i lowHalf = _mm256_permute2x128_si256(s, s, 0x08);  // zero, then the low half
    return V(_mm256_add_epi32(s, _mm256_shuffle_epi32(lowHalf, 0xff)));
#endif
#if defined(__AVX512F__)
  } else if constexpr (laneCount<V> == 16) {
    const __m512i zero = _mm512_setzero_si512();
    __m512i s = __m512i(v);
    s = _mm512_add_epi32(s, _mm512_alignr_epi32(s, zero, 15));
    s = _mm512_add_epi32(s, _mm512_alignr_epi32(s, zero, 14));
    s = _mm512_add_epi32(s, _mm512_alignr_epi32(s, zero, 12));
    return V(_mm512_add_epi32(s, _mm512_alignr_epi32(s, zero, 8)));
#endif
  } else {
    static_assert(laneCount<V> == 1);
    return v;
  }
}

// Unsigned bytes of a times signed bytes of b, products of neighbours added; the sums must fit 16 bits.
template <class V>
ZVP_INLINE V mulAddBytes(V a, V b) {
  if constexpr (sizeof(V) == 16) {
    return V(_mm_maddubs_epi16(__m128i(a), __m128i(b)));
#if defined(__AVX2__)
  } else if constexpr (sizeof(V) == 32) {
    return V(_mm256_maddubs_epi16(__m256i(a), __m256i(b)));
#endif
#if defined(__AVX512F__)
  } else if constexpr (sizeof(V) == 64) {
    return V(_mm512_maddubs_epi16(__m512i(a), __m512i(b)));
#endif
  } else {
    static_assert(sizeof(V) == 0, "no such register in this build");
  }
}

// Signed 16-bit elements, products of neighbours added to 32 bits.
template <class V>
ZVP_INLINE V mulAddWords(V a, V b) {
  if constexpr (sizeof(V) == 16) {
    return V(_mm_madd_epi16(__m128i(a), __m128i(b)));
#if defined(__AVX2__)
  } else if constexpr (sizeof(V) == 32) {
    return V(_mm256_madd_epi16(__m256i(a), __m256i(b)));
#endif
#if defined(__AVX512F__)
  } else if constexpr (sizeof(V) == 64) {
    return V(_mm512_madd_epi16(__m512i(a), __m512i(b)));
#endif
  } else {
    static_assert(sizeof(V) == 0, "no such register in this build");
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

template <class V>
ZVP_INLINE V broadcastLast(V v) {
  static_assert(sizeof(Element<V>) == 4);
  if constexpr (laneCount<V> == 4) {
    return V(_mm_shuffle_epi32(__m128i(v), 0xff));
#if defined(__AVX2__)
  } else if constexpr (laneCount<V> == 8) {
    return V(_mm256_permutevar8x32_epi32(__m256i(v), _mm256_set1_epi32(7)));
#endif
#if defined(__AVX512F__)
  } else if constexpr (laneCount<V> == 16) {
    return V(_mm512_permutexvar_epi32(_mm512_set1_epi32(15), __m512i(v)));
#endif
  } else {
    static_assert(laneCount<V> == 1);
    return v;
  }
}

template <class V>
ZVP_INLINE V addSaturated(V a, V b) {
  using T = Element<V>;
  static_assert(std::is_same_v<T, uint8_t> || std::is_same_v<T, uint16_t>);
  constexpr bool kBytes = sizeof(T) == 1;
  if constexpr (laneCount<V> == 1) {
    return static_cast<T>(min<uint32_t>(uint32_t{a} + b, static_cast<T>(-1)));
  } else if constexpr (sizeof(V) == 16) {
    return kBytes ? V(_mm_adds_epu8(__m128i(a), __m128i(b))) : V(_mm_adds_epu16(__m128i(a), __m128i(b)));
#if defined(__AVX2__)
  } else if constexpr (sizeof(V) == 32) {
    return kBytes ? V(_mm256_adds_epu8(__m256i(a), __m256i(b))) : V(_mm256_adds_epu16(__m256i(a), __m256i(b)));
#endif
#if defined(__AVX512BW__)
  } else if constexpr (sizeof(V) == 64) {
    return kBytes ? V(_mm512_adds_epu8(__m512i(a), __m512i(b))) : V(_mm512_adds_epu16(__m512i(a), __m512i(b)));
#endif
  } else {
    static_assert(sizeof(V) == 0, "no such register in this build");
  }
}

// Bytes k.. of two registers, `low` being the first 16, 32 or 64 of them. On 32 and 64 bytes k is less than 16 or a
// multiple of 16.
template <int k, class V>
ZVP_INLINE V middleBytes(V low, V high) {
  if constexpr (sizeof(V) == 16) {
    return V(_mm_alignr_epi8(__m128i(high), __m128i(low), k));
#if defined(__AVX2__)
  } else if constexpr (sizeof(V) == 32) {
    const __m256i inner = _mm256_permute2x128_si256(__m256i(low), __m256i(high), 0x21);
    if constexpr (k <= 16) return V(_mm256_alignr_epi8(inner, __m256i(low), k));
    if constexpr (k > 16) return V(_mm256_alignr_epi8(__m256i(high), inner, k - 16));
#elif defined(__AVX__)
  } else if constexpr (std::is_same_v<V, Pack<float, 8>> && k == 28) {
    const __m256 l = __m256(low), h = __m256(high), inner = _mm256_permute2f128_ps(l, h, 0x21);
    const __m256 ends = _mm256_shuffle_ps(inner, h, _MM_SHUFFLE(0, 0, 3, 3));
    return V(_mm256_shuffle_ps(ends, h, _MM_SHUFFLE(2, 1, 2, 0)));
#endif
#if defined(__AVX512BW__)
  } else if constexpr (sizeof(V) == 64) {
    const __m512i l = __m512i(low), h = __m512i(high);
    if constexpr (k % 4 == 0) return V(_mm512_alignr_epi32(h, l, k / 4));
    if constexpr (k < 16) return V(_mm512_alignr_epi8(_mm512_alignr_epi64(h, l, 2), l, k));
    if constexpr (k > 48) return V(_mm512_alignr_epi8(h, _mm512_alignr_epi64(h, l, 6), k - 48));
#endif
  } else {
    static_assert(sizeof(V) == 0, "no such register in this build");
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
  constexpr int N = laneCount<V>;
  const auto wanted = lanesBetween<N>(first, end);
#if defined(__AVX512F__)
  if constexpr (N == 16) return V(_mm512_mask_loadu_ps(__m512(otherwise), _mm512_movepi32_mask(__m512i(wanted)), p));
#endif
  if constexpr (N == 8) return wanted ? V(_mm256_maskload_ps(p, __m256i(wanted))) : otherwise;
}
template <class V>
ZVP_INLINE void storeBetween(float* p, int first, int end, V v) {
  constexpr int N = laneCount<V>;
  const auto wanted = lanesBetween<N>(first, end);
#if defined(__AVX512F__)
  if constexpr (N == 16) _mm512_mask_storeu_ps(p, _mm512_movepi32_mask(__m512i(wanted)), __m512(v));
#endif
  if constexpr (N == 8) _mm256_maskstore_ps(p, __m256i(wanted), __m256(v));
}

// 16 bytes to an address that is a multiple of 16, past the caches. A fence orders them before later stores.
ZVP_INLINE void storeStream(void* p, Pack<uint8_t, 16> v) { _mm_stream_si128(static_cast<__m128i*>(p), __m128i(v)); }
ZVP_INLINE void fence() { _mm_sfence(); }

}  // namespace zvp::simd
