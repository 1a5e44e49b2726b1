// Values from and to memory of any alignment and any effective type. Apart from the rest of the vocabulary, so that files
// without kernels do without the intrinsics, which take long to compile.
#pragma once

#define ZVP_INLINE __attribute__((always_inline)) inline

namespace zvp::simd {

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

}  // namespace zvp::simd
