// Arithmetic beyond the operators of the compilers' vector types; every operation works on single elements too, unless
// it is one of neighbours.
#pragma once

#include "simd/registers.h"

namespace zvp::simd {

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
  } else if constexpr (std::is_same_v<Element<V>, float>) {
    ZVP_RETURN_BY_WIDTH(sizeof(V), V, sqrt_ps, asRegister(v));
  } else {
    static_assert(std::is_same_v<Element<V>, double>);
    ZVP_RETURN_BY_WIDTH(sizeof(V), V, sqrt_pd, asRegister(v));
  }
}

// A compiler may swap the operands of a sum or product, and with them the NaN that the processor keeps. An invalid
// operation gives the quiet NaN with the sign set and no payload.
#define ZVP_ORDERED_OPERATION(name, instruction)                               \
  template <class V>                                                           \
  ZVP_INLINE V name(V a, V b) {                                                \
    static_assert(std::is_same_v<Element<V>, float>);                          \
    static_assert(sizeof(V) <= kFloatBytes, "no such register in this build"); \
    V result;                                                                  \
    if constexpr (laneCount<V> == 1) {                                         \
      asm(instruction "ss %2, %1, %0" : "=v"(result) : "v"(a), "v"(b));        \
    } else {                                                                   \
      asm(instruction "ps %2, %1, %0" : "=v"(result) : "v"(a), "v"(b));        \
    }                                                                          \
    return result;                                                             \
  }
ZVP_ORDERED_OPERATION(addOrdered, "vadd")
ZVP_ORDERED_OPERATION(mulOrdered, "vmul")
#undef ZVP_ORDERED_OPERATION

// Bit i is set where element i of a comparison holds. V has integer elements, each 0 or -1; or is a bool.
template <class V>
ZVP_INLINE uint64_t maskBits(V comparison) {
  if constexpr (std::is_arithmetic_v<V>) {
    return comparison != 0;
  } else {
    constexpr int kElement = sizeof(Element<V>), kBytes = sizeof(V);
    static_assert(kElement == 1 || kElement == 2 || kElement == 4, "no such mask");
    if constexpr (kBytes == 64 && kElement == 1) {
      return _mm512_movepi8_mask(asRegister(comparison));
    } else if constexpr (kBytes == 64 && kElement == 2) {
      return _mm512_movepi16_mask(asRegister(comparison));
    } else if constexpr (kBytes == 64) {
      return _mm512_movepi32_mask(asRegister(comparison));
    } else if constexpr (kElement == 1) {
      ZVP_RETURN_BY_WIDTH(kBytes, uint32_t, movemask_epi8, asRegister(comparison));
    } else if constexpr (kElement == 2 && kBytes == 32) {
      const auto bytes = _mm_packs_epi16(asRegister(lowHalf(comparison)), asRegister(highHalf(comparison)));
      return static_cast<uint32_t>(_mm_movemask_epi8(bytes));
    } else if constexpr (kElement == 2) {
      return static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(asRegister(comparison), _mm_setzero_si128())));
    } else {
      using Signs = Pack<float, laneCount<V>>;
      ZVP_RETURN_BY_WIDTH(kBytes, uint32_t, movemask_ps, asRegister(Signs(comparison)));
    }
  }
}

// Every 64-bit lane: the product of the low 32 bits of both, taken as signed.
template <class V>
ZVP_INLINE V mulSigned32(V a, V b) {
  static_assert(std::is_same_v<Element<V>, int64_t>);
  if constexpr (laneCount<V> == 1) {
    return int64_t{static_cast<int32_t>(a)} * static_cast<int32_t>(b);
  } else if constexpr (sizeof(V) > kIntegerBytes) {
    return joined(mulSigned32(lowHalf(a), lowHalf(b)), mulSigned32(highHalf(a), highHalf(b)));
  } else {
    ZVP_RETURN_BY_WIDTH(sizeof(V), V, mul_epi32, asRegister(a), asRegister(b));
  }
}

ZVP_INTEGER_OPERATION(addSaturatedBytes, adds_epu8)
ZVP_INTEGER_OPERATION(addSaturatedWords, adds_epu16)

// Unsigned sums that stop at the type's maximum.
template <class V>
ZVP_INLINE V addSaturated(V a, V b) {
  using T = Element<V>;
  static_assert(std::is_same_v<T, uint8_t> || std::is_same_v<T, uint16_t>);
  if constexpr (laneCount<V> == 1) {
    return static_cast<T>(min<uint32_t>(uint32_t{a} + b, static_cast<T>(-1)));
  } else {
    return sizeof(T) == 1 ? addSaturatedBytes(a, b) : addSaturatedWords(a, b);
  }
}

// Unsigned bytes of a times signed bytes of b, products of neighbours added; the sums must fit 16 bits.
ZVP_INTEGER_OPERATION(mulAddBytes, maddubs_epi16)

// Signed 16-bit elements, products of neighbours added to 32 bits.
ZVP_INTEGER_OPERATION(mulAddWords, madd_epi16)

}  // namespace zvp::simd
