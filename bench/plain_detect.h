// A stage of Haar classifiers at every selected position, written from its definition.
#pragma once

#include <zvpcv/detect.h>

#include <vector>

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

// V is the type of the stage's numbers.
template <class V>
struct Stump {
  bool tilted;
  std::vector<Rect> rects;
  std::vector<V> weights;
  V threshold, val1, val2;
};

template <class V>
using Stage = std::vector<Stump<V>>;

// The three arithmetics: how a rectangle sum is formed, and how a stump decides. Integers wrap.
template <class Entry>
struct FloatArithmetic {
  using Norm = float;
  using Sum = float;
  static constexpr int scaleFactor = 0;

  static float weighted(Entry c0, Entry c1, Entry c2, Entry c3, float weight) {
    if constexpr (std::is_same_v<Entry, float>) {
      return (c0 - c1 - c2 + c3) * weight;
    } else {
      return float(std::int32_t(std::uint32_t(c0) - std::uint32_t(c1) - std::uint32_t(c2) + std::uint32_t(c3))) *
             weight;
    }
  }
  static float limit(float norm, float threshold) { return norm * threshold; }
};

struct ScaledArithmetic {
  using Norm = std::int32_t;
  using Sum = std::int64_t;
  static constexpr int scaleFactor = 3;

  static std::int64_t weighted(std::int32_t c0, std::int32_t c1, std::int32_t c2, std::int32_t c3,
                               std::int32_t weight) {
    const std::uint32_t sum = std::uint32_t(c0) - std::uint32_t(c1) - std::uint32_t(c2) + std::uint32_t(c3);
    return std::int64_t{std::int32_t(sum)} * weight;
  }
  static std::int64_t limit(std::int32_t norm, std::int32_t threshold) {
    return (std::int64_t{norm} * threshold) >> scaleFactor;
  }
};

// A rectangle with its corners as offsets from a position's entry.
template <class Entry, class V>
struct PlacedRect {
  std::ptrdiff_t corners[4];
  V weight;
};

template <class Entry, class V>
PlacedRect<Entry, V> place(Rect r, bool tilted, V weight, int step) {
  const std::ptrdiff_t entries = step / int{sizeof(Entry)};
  const auto at = [entries](int column, int row) { return row * entries + column; };
  const int x = r.x, y = r.y, w = r.width, h = r.height;
  if (tilted) return {{at(x + w - h, y + h + w), at(x - h, y + h), at(x + w, y + w), at(x, y)}, weight};
  return {{at(x + w, y + h), at(x, y + h), at(x + w, y), at(x, y)}, weight};
}

// Both integral images have the same step. Returns how many positions remain.
template <class A, class Entry, class V>
int applyStage(const Image<Entry>& upright, const Image<Entry>& tilted, const Image<typename A::Norm>& norm,
               const Image<std::uint8_t>& mask, V threshold, const Stage<V>& stage) {
  using Sum = typename A::Sum;
  std::vector<PlacedRect<Entry, V>> placed;
  for (const auto& stump : stage)
    for (std::size_t k = 0; k < stump.rects.size(); ++k)
      placed.push_back(place<Entry>(stump.rects[k], stump.tilted, stump.weights[k], upright.step));

  int positive = 0;
  for (int y = 0; y < mask.height; ++y) {
    for (int x = 0; x < mask.width; ++x) {
      if (mask.row(y)[x] == 0) continue;
      const Entry *here = upright.row(y) + x, *hereTilted = tilted.row(y + 1) + x + 1;
      const auto norms = norm.row(y)[x];
      const auto* rect = placed.data();
      Sum sum = 0;
      for (const auto& stump : stage) {
        const Entry* p = stump.tilted ? hereTilted : here;
        Sum t = 0;
        for (const auto* end = rect + stump.rects.size(); rect != end; ++rect) {
          const auto& c = rect->corners;
          t += A::weighted(p[c[0]], p[c[1]], p[c[2]], p[c[3]], rect->weight);
        }
        sum += A::limit(norms, stump.threshold) > t ? stump.val1 : stump.val2;
      }
      if (Sum{threshold} > sum) mask.row(y)[x] = 0;
      positive += mask.row(y)[x] != 0;
    }
  }
  return positive;
}

}  // namespace bench::ZVP_LOOPS::plain
