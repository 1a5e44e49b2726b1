// Conversion between element types, in registers and on the way from memory.
#pragma once

#include "simd/memory.h"

namespace zvp::simd {

// Between 32 and 64 bits; the wider pack fills a register, except int64_t in AVX.
template <class T, class V>
ZVP_INLINE Pack<T, laneCount<V>> convertSize(V v) {
  using S = Element<V>;
  using To = Pack<T, laneCount<V>>;
  if constexpr (std::is_same_v<S, int32_t> && std::is_same_v<T, int64_t>) {
    if constexpr (sizeof(To) > kIntegerBytes) {
      const __m128i x = __m128i(v);
      using Half = Pack<T, laneCount<V> / 2>;
      return joined(Half(_mm_cvtepi32_epi64(x)), Half(_mm_cvtepi32_epi64(_mm_unpackhi_epi64(x, x))));
    } else {
      ZVP_RETURN_BY_WIDTH(sizeof(To), To, cvtepi32_epi64, asRegister(v));
    }
  } else if constexpr (std::is_same_v<S, int32_t> && std::is_same_v<T, double>) {
    ZVP_RETURN_BY_WIDTH(sizeof(To), To, cvtepi32_pd, asRegister(v));
  } else if constexpr (std::is_same_v<S, float> && std::is_same_v<T, double>) {
    ZVP_RETURN_BY_WIDTH(sizeof(To), To, cvtps_pd, asRegister(v));
  } else if constexpr (std::is_same_v<S, double> && std::is_same_v<T, float>) {
    ZVP_RETURN_BY_WIDTH(sizeof(V), To, cvtpd_ps, asRegister(v));
  } else {
    static_assert(std::is_same_v<S, double> && std::is_same_v<T, int32_t>, "no such conversion");
    ZVP_RETURN_BY_WIDTH(sizeof(V), To, cvtpd_epi32, asRegister(v));
  }
}

template <class T, class V>
ZVP_INLINE Pack<T, laneCount<V>> convert(V v) {
  using S = Element<V>;
  if constexpr (std::is_same_v<S, T>) {
    return v;
  } else if constexpr (std::is_same_v<S, double> && std::is_same_v<T, int32_t> && laneCount<V> == 1) {
    return _mm_cvtsd_si32(_mm_set_sd(v));
  } else if constexpr (laneCount<V> == 1) {
    return static_cast<T>(v);
  } else if constexpr (sizeof(S) == sizeof(T)) {
    return __builtin_convertvector(v, Pack<T, laneCount<V>>);
  } else {
    return convertSize<T>(v);
  }
}

// Ties to even; the argument must fit.
template <class V>
ZVP_INLINE auto nearest(V v) {
  using To = Pack<int32_t, laneCount<V>>;
  static_assert(std::is_same_v<Element<V>, float>);
  ZVP_RETURN_BY_WIDTH(sizeof(V), To, cvtps_epi32, asRegister(v));
}

// The bytes at p, first in the narrowest register that holds them.
template <int bytes>
ZVP_INLINE auto loadBytes(const void* p) {
  if constexpr (bytes == 4) {
    return _mm_cvtsi32_si128(load<int32_t>(p));
  } else if constexpr (bytes == 8) {
    return _mm_loadl_epi64(static_cast<const __m128i*>(p));
  } else if constexpr (bytes == 16) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
  } else {
    static_assert(bytes == 32, "no such load");
    return _mm256_loadu_si256(static_cast<const __m256i*>(p));
  }
}

// N integers of 8 or 16 bits as wider ones that fill a register, or two in AVX.
template <class T, int N, class S>
ZVP_INLINE Pack<T, N> loadWider(const S* p) {
  using To = Pack<T, N>;
  if constexpr (sizeof(To) > kIntegerBytes) {
    return joined(loadWider<T, N / 2>(p), loadWider<T, N / 2>(p + N / 2));
  } else {
    const auto v = loadBytes<N * sizeof(S)>(p);
    if constexpr (std::is_same_v<S, uint8_t> && std::is_same_v<T, int16_t>) {
      ZVP_RETURN_BY_WIDTH(sizeof(To), To, cvtepu8_epi16, v);
    } else if constexpr (std::is_same_v<S, int8_t> && std::is_same_v<T, int16_t>) {
      ZVP_RETURN_BY_WIDTH(sizeof(To), To, cvtepi8_epi16, v);
    } else if constexpr (std::is_same_v<S, uint8_t> && std::is_same_v<T, int32_t>) {
      ZVP_RETURN_BY_WIDTH(sizeof(To), To, cvtepu8_epi32, v);
    } else if constexpr (std::is_same_v<S, int8_t> && std::is_same_v<T, int32_t>) {
      ZVP_RETURN_BY_WIDTH(sizeof(To), To, cvtepi8_epi32, v);
    } else if constexpr (std::is_same_v<S, uint16_t> && std::is_same_v<T, int32_t>) {
      ZVP_RETURN_BY_WIDTH(sizeof(To), To, cvtepu16_epi32, v);
    } else {
      static_assert(std::is_same_v<S, int16_t> && std::is_same_v<T, int32_t>, "no such conversion");
      ZVP_RETURN_BY_WIDTH(sizeof(To), To, cvtepi16_epi32, v);
    }
  }
}

template <class T, int N, class S>
ZVP_INLINE Pack<T, N> loadAs(const S* p) {
  if constexpr (std::is_same_v<S, T> || N == 1 || sizeof(S) > 2) {
    return convert<T>(load<Pack<S, N>>(p));
  } else if constexpr (std::is_same_v<T, float>) {
    return convert<T>(loadAs<int32_t, N>(p));
  } else {
    return loadWider<T, N>(p);
  }
}

// Element i is -1 where byte i is not 0, else 0.
template <int N>
ZVP_INLINE Pack<int32_t, N> loadNonZero(const uint8_t* p) {
  if constexpr (N == 1) {
    return -int32_t{*p != 0};
  } else if constexpr (N == 8 && kIntegerBytes < 32) {
    // Every element gets a word with four bytes and keeps its own, which takes no shuffle; AVX compares only floats.
    const __m256 low = _mm256_set1_ps(load<float>(p)), high = _mm256_set1_ps(load<float>(p + 4));
    const __m256 ownByte =
        _mm256_castsi256_ps(_mm256_set_epi32(-1 << 24, 0xff0000, 0xff00, 0xff, -1 << 24, 0xff0000, 0xff00, 0xff));
    const __m256 own = _mm256_and_ps(_mm256_blend_ps(low, high, 0xf0), ownByte);
    return Pack<int32_t, N>(convert<float>(Pack<int32_t, N>(own)) != 0.0f);
  } else {
    return Pack<int32_t, N>(loadAs<int32_t, N>(p) != 0);
  }
}

}  // namespace zvp::simd
