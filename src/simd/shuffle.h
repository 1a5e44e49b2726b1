// Shuffles of two packs by a formula.
#pragma once

#include <utility>

#include "simd/registers.h"

namespace zvp::simd {

template <class V, class Source, std::size_t... lane>
ZVP_INLINE V shuffle(V a, V b, Source, std::index_sequence<lane...>) {
  return __builtin_shufflevector(a, b, Source{}(int{lane})...);
}

// Element i is element source(i) of a and b in a row, where `source` is a lambda that captures nothing.
template <class V, class Source>
ZVP_INLINE V shuffle(V a, V b, Source source) {
  return shuffle(a, b, source, std::make_index_sequence<laneCount<V>>());
}

}  // namespace zvp::simd
