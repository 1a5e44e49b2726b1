// Distance transforms and flood fill as a reader would write them first.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

// Two passes with the given weights, integers in 32 bits, saturated before they are stored.
template <bool knights, class T, class M>
void chamfer(const Image<std::uint8_t>& src, const Image<T>& dst, const M* weights) {
  using Sum = std::conditional_t<std::is_same_v<T, float>, float, int>;
  constexpr T kMax = std::numeric_limits<T>::max();
  const int w = src.width, h = src.height;
  const Sum a = weights[0], b = weights[1];
  [[maybe_unused]] const Sum c = knights ? weights[2] : 0;
  const auto pass = [&](int y, int sign, bool forward) {
    const auto row = [&](int i) { return y + i < 0 || y + i >= h ? nullptr : dst.row(y + i); };
    const T *above = row(-sign), *above2 = row(-2 * sign);
    T* out = dst.row(y);
    for (int i = 0; i < w; ++i) {
      const int x = forward ? i : w - 1 - i;
      if (src.row(y)[x] == 0) {
        out[x] = 0;
        continue;
      }
      Sum least = forward ? kMax : out[x];
      const auto lower = [&](const T* line, int at, Sum weight) {
        if (at >= 0 && at < w) least = std::min(least, Sum(line[at]) + weight);
      };
      lower(out, x - sign, a);
      if (above != nullptr) {
        lower(above, x, a), lower(above, x - 1, b), lower(above, x + 1, b);
        if constexpr (knights) lower(above, x - 2, c), lower(above, x + 2, c);
      }
      if constexpr (knights)
        if (above2 != nullptr) lower(above2, x - 1, c), lower(above2, x + 1, c);
      out[x] = T(least);
    }
  };
  for (int y = 0; y < h; ++y) pass(y, 1, true);
  for (int y = h - 1; y >= 0; --y) pass(y, -1, false);
}

// One-dimensional lower envelopes in single precision: of the columns, then of the rows.
inline void trueDistance(const Image<std::uint8_t>& src, const Image<float>& dst) {
  constexpr float kInf = 1e20f;
  const int w = src.width, h = src.height, n = std::max(w, h);
  std::vector<float> f(static_cast<std::size_t>(n)), z(static_cast<std::size_t>(n) + 1);
  std::vector<int> v(static_cast<std::size_t>(n));
  const auto envelope = [&](int count, auto write) {
    int k = 0;
    v[0] = 0, z[0] = -kInf, z[1] = kInf;
    for (int q = 1; q < count; ++q) {
      const auto cross = [&](int p) {
        const auto i = std::size_t(q), j = std::size_t(p);
        return ((f[i] + float(q) * float(q)) - (f[j] + float(p) * float(p))) / float(2 * q - 2 * p);
      };
      float s = cross(v[std::size_t(k)]);
      while (k > 0 && s <= z[std::size_t(k)]) s = cross(v[std::size_t(--k)]);
      if (s <= z[std::size_t(k)]) k = -1;
      ++k;
      v[std::size_t(k)] = q, z[std::size_t(k)] = s, z[std::size_t(k) + 1] = kInf;
      if (k == 0) z[0] = -kInf;
    }
    k = 0;
    for (int q = 0; q < count; ++q) {
      while (z[std::size_t(k) + 1] < float(q)) ++k;
      const float d = float(q - v[std::size_t(k)]);
      write(q, d * d + f[std::size_t(v[std::size_t(k)])]);
    }
  };
  for (int x = 0; x < w; ++x) {
    for (int y = 0; y < h; ++y) f[std::size_t(y)] = src.row(y)[x] == 0 ? 0 : kInf;
    envelope(h, [&](int y, float d) { dst.row(y)[x] = d; });
  }
  for (int y = 0; y < h; ++y) {
    std::copy_n(dst.row(y), w, f.begin());
    envelope(w, [&](int x, float d) { dst.row(y)[x] = d; });
  }
}

// A stack of pixels. `links(p, q)`: a channel of pixel p joins from its neighbour q, both values before the fill.
template <int connectivity, int channels, class T, class Links>
void floodFill(const Image<T>& image, const Image<std::uint8_t>& visited, Point seed, T newVal, Links links) {
  struct Pixel {
    int x, y;
    T value[channels];
  };
  static std::vector<Pixel> stack;  // kept: no allocation is measured
  const int w = visited.width, h = visited.height;
  for (int y = 0; y < h; ++y) std::memset(visited.row(y), 0, std::size_t(w));
  const auto take = [&](int x, int y) {
    Pixel& p = stack.emplace_back();
    T* here = image.row(y) + x * channels;
    p.x = x, p.y = y;
    for (int c = 0; c < channels; ++c) p.value[c] = here[c], here[c] = newVal;
    visited.row(y)[x] = 1;
  };
  take(seed.x, seed.y);
  while (!stack.empty()) {
    Pixel q{stack.back().x, stack.back().y, {}};
    for (int c = 0; c < channels; ++c) q.value[c] = stack.back().value[c];
    stack.pop_back();
    const auto visit = [&](int x, int y) {
      if (x < 0 || y < 0 || x >= w || y >= h || visited.row(y)[x] != 0) return;
      const T* p = image.row(y) + x * channels;
      bool joins = true;
      for (int c = 0; c < channels; ++c) joins = joins && links(p[c], q.value[c]);
      if (joins) take(x, y);
    };
    visit(q.x - 1, q.y), visit(q.x + 1, q.y), visit(q.x, q.y - 1), visit(q.x, q.y + 1);
    if constexpr (connectivity == 8)
      visit(q.x - 1, q.y - 1), visit(q.x + 1, q.y - 1), visit(q.x - 1, q.y + 1), visit(q.x + 1, q.y + 1);
  }
}

}  // namespace bench::ZVP_LOOPS::plain
