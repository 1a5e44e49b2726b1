// The registers of this build: how wide they are, the packs that fill them, and intrinsics chosen by a pack's width.
//
// Only this header asks which processor the build is for; the others ask how wide its registers are, by `if constexpr`
// in templates, where an intrinsic that the build lacks may be named and is discarded.
#pragma once

#include <immintrin.h>
#include <stdint.h>

#include <bit>
#include <type_traits>

#include "simd/loose.h"

namespace zvp::simd {

#if defined(__AVX512BW__) && defined(__AVX512DQ__) && defined(__AVX512VL__)
inline constexpr int kIntegerBytes = 64, kFloatBytes = 64;
#elif defined(__AVX2__)
inline constexpr int kIntegerBytes = 32, kFloatBytes = 32;
#else
inline constexpr int kIntegerBytes = 16, kFloatBytes = 32;
#endif

template <class T>
inline constexpr int kRegisterBytes = std::is_floating_point_v<T> ? kFloatBytes : kIntegerBytes;
template <class T>
inline constexpr int lanes = kRegisterBytes<T> / int{sizeof(T)};

template <class T, int N>
struct PackOf {
  using Type [[gnu::vector_size(N * sizeof(T))]] = T;
};
template <class T>
struct PackOf<T, 1> {
  using Type = T;
};
template <class T, int N>
using Pack = typename PackOf<T, N>::Type;

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

// Returns the result, as a Result, of the intrinsic for registers of so many bytes.
#define ZVP_RETURN_BY_WIDTH(bytes, Result, operation, ...) \
  if constexpr ((bytes) == 16) {                           \
    return Result(_mm_##operation(__VA_ARGS__));           \
  } else if constexpr ((bytes) == 32) {                    \
    return Result(_mm256_##operation(__VA_ARGS__));        \
  } else {                                                 \
    static_assert((bytes) == 64, "no such register");      \
    return Result(_mm512_##operation(__VA_ARGS__));        \
  }

// A pack as intrinsics take it.
template <class V>
ZVP_INLINE auto asRegister(V v) {
  static_assert(sizeof(V) >= 16 && sizeof(V) <= kRegisterBytes<Element<V>>, "no such register in this build");
  if constexpr (std::is_floating_point_v<Element<V>>) {
    return v;
  } else {
    return Pack<long long, sizeof(V) / sizeof(long long)>(v);
  }
}

// Defines an operation of two packs of integers by the name of its intrinsic.
#define ZVP_INTEGER_OPERATION(name, operation)                                  \
  template <class V>                                                            \
  ZVP_INLINE V name(V a, V b) {                                                 \
    ZVP_RETURN_BY_WIDTH(sizeof(V), V, operation, asRegister(a), asRegister(b)); \
  }

// The halves of 32 bytes, which serve where AVX has operations of integers on 16 bytes only.
template <class V>
ZVP_INLINE auto lowHalf(V v) {
  static_assert(sizeof(V) == 32, "no such register in this build");
  return Pack<Element<V>, laneCount<V> / 2>(_mm256_castsi256_si128(__m256i(v)));
}
template <class V>
ZVP_INLINE auto highHalf(V v) {
  static_assert(sizeof(V) == 32, "no such register in this build");
  return Pack<Element<V>, laneCount<V> / 2>(_mm256_extractf128_si256(__m256i(v), 1));
}
template <class V>
ZVP_INLINE auto joined(V low, V high) {
  static_assert(sizeof(V) == 16, "no such register in this build");
  return Pack<Element<V>, laneCount<V> * 2>(_mm256_set_m128i(__m128i(high), __m128i(low)));
}

// The first bytes of a register.
template <class To>
ZVP_INLINE To firstBytes(__m128i v) {
  if constexpr (sizeof(To) == 16) {
    return To(v);
  } else {
    static_assert(sizeof(To) == 8 || sizeof(To) == 4);
    using Bits = std::conditional_t<sizeof(To) == 8, int64_t, int32_t>;
    return std::bit_cast<To>(Bits{Pack<Bits, 16 / sizeof(Bits)>(v)[0]});
  }
}

template <class T, int N>
ZVP_INLINE Pack<T, N> broadcast(T value) {
  if constexpr (N == 1) {
    return value;
  } else {
    return value - Pack<T, N>{};  // v - 0 keeps every value's bits, -0 included
  }
}

}  // namespace zvp::simd
