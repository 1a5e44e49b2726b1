// Pyramid octaves and layers as a reader would write them first: along rows into an image of sums, then across rows.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <type_traits>

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

template <class T>
using OctaveSum = std::conditional_t<std::is_same_v<T, float>, float, int>;

inline int mirrored(int i, int n) { return i < 0 ? -i : i < n ? i : 2 * (n - 1) - i; }

// Divides by a power of two.
template <class T, int shift>
T mean(OctaveSum<T> sum) {
  if constexpr (std::is_same_v<T, float>) {
    return sum * (1.0f / (1 << shift));
  } else {
    return T((sum + (1 << (shift - 1))) >> shift);
  }
}

template <int channels, class T>
void octaveDown(const Image<T>& src, const Image<T>& dst, const Image<OctaveSum<T>>& sums) {
  const auto weighted = [](auto a, auto b, auto c, auto d, auto e) { return a + 4 * b + 6 * c + 4 * d + e; };
  const int width = src.width / channels, results = dst.width / channels;
  for (int y = 0; y < src.height; ++y) {
    const T* row = src.row(y);
    const auto sum = [&](int x, auto at) {
      for (int c = 0; c < channels; ++c) {
        const auto tap = [&](int i) { return OctaveSum<T>(row[at(2 * x + i) * channels + c]); };
        sums.row(y)[x * channels + c] = weighted(tap(-2), tap(-1), tap(0), tap(1), tap(2));
      }
    };
    const auto atEnd = [width](int i) { return mirrored(i, width); };
    sum(0, atEnd);
    for (int x = 1; x < results - 1; ++x) sum(x, [](int i) { return i; });
    sum(results - 1, atEnd);
  }
  for (int y = 0; y < dst.height; ++y) {
    const auto row = [&](int i) { return sums.row(mirrored(2 * y + i, src.height)); };
    const auto *a = row(-2), *b = row(-1), *c = row(0), *d = row(1), *e = row(2);
    for (int n = 0; n < dst.width; ++n) dst.row(y)[n] = mean<T, 8>(weighted(a[n], b[n], c[n], d[n], e[n]));
  }
}

template <int channels, class T>
void octaveUp(const Image<T>& src, const Image<T>& dst, const Image<OctaveSum<T>>& sums) {
  const auto even = [](auto a, auto b, auto c) { return a + 6 * b + c; };
  const auto odd = [](auto b, auto c) { return 4 * b + 4 * c; };
  const int width = src.width / channels;
  for (int y = 0; y < src.height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int c = 0; c < channels; ++c) {
        const auto at = [&](int i) { return OctaveSum<T>(src.row(y)[i * channels + c]); };
        const auto next = at(x + 1 < width ? x + 1 : x);
        sums.row(y)[2 * x * channels + c] = even(at(x > 0 ? x - 1 : 1), at(x), next);
        sums.row(y)[(2 * x + 1) * channels + c] = odd(at(x), next);
      }
    }
  }
  for (int y = 0; y < src.height; ++y) {
    const auto *a = sums.row(y > 0 ? y - 1 : 1), *b = sums.row(y), *c = sums.row(std::min(y + 1, src.height - 1));
    for (int n = 0; n < dst.width; ++n) {
      dst.row(2 * y)[n] = mean<T, 6>(even(a[n], b[n], c[n]));
      dst.row(2 * y + 1)[n] = mean<T, 6>(odd(b[n], c[n]));
    }
  }
}

// --- Layers ----------------------------------------------------------------------------------------------------------

constexpr std::array<float, 5> kBinomial = {0.0625f, 0.25f, 0.375f, 0.25f, 0.0625f};

template <int channels, class S>
void filterRows(const Image<S>& src, const Image<float>& out) {
  const int width = src.width / channels;
  for (int y = 0; y < src.height; ++y) {
    const S* row = src.row(y);
    const auto filter = [&](int x, auto at) {
      for (int c = 0; c < channels; ++c) {
        float sum = 0;
        for (int i = 0; i < 5; ++i) sum += kBinomial[std::size_t(i)] * float(row[at(x + i - 2) * channels + c]);
        out.row(y)[x * channels + c] = sum;
      }
    };
    const auto atEnd = [width](int i) { return mirrored(i, width); };
    for (int x = 0; x < 2; ++x) filter(x, atEnd);
    for (int x = 2; x < width - 2; ++x) filter(x, [](int i) { return i; });
    for (int x = width - 2; x < width; ++x) filter(x, atEnd);
  }
}

template <class T>
T toNearest(float v) {
  if constexpr (std::is_same_v<T, float>) {
    return v;
  } else {
    return T(std::lrint(std::clamp(v, 0.0f, float(std::numeric_limits<T>::max()))));
  }
}

template <class T>
void filterColumns(const Image<float>& src, const Image<T>& out) {
  for (int y = 0; y < src.height; ++y) {
    const auto row = [&](int i) { return src.row(mirrored(y + i - 2, src.height)); };
    const float* rows[] = {row(0), row(1), row(2), row(3), row(4)};
    for (int n = 0; n < src.width; ++n) {
      float sum = 0;
      for (std::size_t i = 0; i < 5; ++i) sum += kBinomial[i] * rows[i][n];
      out.row(y)[n] = toNearest<T>(sum);
    }
  }
}

// Calls use(first, second, t) for the two samples between which position lies.
template <class Use>
void between(float position, int n, Use use) {
  const int i = int(position);
  i + 1 < n ? use(i, i + 1, position - float(i)) : use(n - 1, n - 1, 0.0f);
}

template <int channels, class S, class Position>
void sampleRows(const Image<S>& src, const Image<float>& out, Position position) {
  for (int x = 0; x < out.width / channels; ++x)
    between(position(x), src.width / channels, [&](int i, int j, float t) {
      for (int y = 0; y < src.height; ++y)
        for (int c = 0; c < channels; ++c)
          out.row(y)[x * channels + c] =
              t * float(src.row(y)[j * channels + c]) + (1 - t) * float(src.row(y)[i * channels + c]);
    });
}

template <class T, class Position>
void sampleColumns(const Image<float>& src, const Image<T>& out, Position position) {
  for (int y = 0; y < out.height; ++y)
    between(position(y), src.height, [&](int i, int j, float t) {
      for (int n = 0; n < out.width; ++n) out.row(y)[n] = toNearest<T>(t * src.row(j)[n] + (1 - t) * src.row(i)[n]);
    });
}

}  // namespace bench::ZVP_LOOPS::plain
