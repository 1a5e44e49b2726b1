// Derivatives under a square window as a reader would write them first: the whole kernel on the image, whose border is
// repeated.
#pragma once

#include <algorithm>
#include <array>

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

// Tap (i, k) of the kernel is down[i] x along[k].
template <std::size_t taps>
void separable(const Image<std::uint8_t>& src, const Image<std::int16_t>& dst, const std::array<int, taps>& down,
               const std::array<int, taps>& along) {
  constexpr int kReach = int{taps} / 2;
  const auto sum = [&](int y, auto column) {
    int s = 0;
    for (int i = 0; i < int{taps}; ++i) {
      const std::uint8_t* row = src.row(std::clamp(y + i - kReach, 0, src.height - 1));
      for (int k = 0; k < int{taps}; ++k) s += down[std::size_t(i)] * along[std::size_t(k)] * row[column(k)];
    }
    return std::int16_t(s);
  };
  for (int y = 0; y < src.height; ++y) {
    std::int16_t* out = dst.row(y);
    const auto atEnd = [&](int x) {
      out[x] = sum(y, [&](int k) { return std::clamp(x + k - kReach, 0, src.width - 1); });
    };
    for (int x = 0; x < kReach; ++x) atEnd(x);
    for (int x = kReach; x < src.width - kReach; ++x) out[x] = sum(y, [x](int k) { return x + k - kReach; });
    for (int x = src.width - kReach; x < src.width; ++x) atEnd(x);
  }
}

}  // namespace bench::ZVP_LOOPS::plain
