// Erosion, dilation and their compositions as a reader would write them first. The border repeats the edge pixels.
#pragma once

#include <algorithm>
#include <vector>

#include "image.h"

namespace bench::plain {

struct Mask {
  int width, height;
  std::vector<std::uint8_t> members;
};

struct Erode {
  template <class T>
  static T pick(T a, T b) {
    return b < a ? b : a;
  }
};

struct Dilate {
  template <class T>
  static T pick(T a, T b) {
    return a < b ? b : a;
  }
};

struct Offset {
  int x, y;
};

inline std::vector<Offset> offsetsOf(const Mask& mask) {
  std::vector<Offset> offsets;
  for (int y = 0; y < mask.height; ++y)
    for (int x = 0; x < mask.width; ++x)
      if (mask.members[std::size_t(y * mask.width + x)] != 0)
        offsets.push_back({x - (mask.width - 1) / 2, y - (mask.height - 1) / 2});
  return offsets;
}

template <class Operation, int channels, class T>
void morphology(const Image<T>& src, const Image<T>& dst, const Mask& mask) {
  const auto offsets = offsetsOf(mask);
  const int width = src.width, pixels = width / channels, edge = std::min(mask.width / 2 * channels, width / 2);
  std::vector<const T*> rows(offsets.size());
  for (int y = 0; y < src.height; ++y) {
    for (std::size_t m = 0; m < rows.size(); ++m) rows[m] = src.row(std::clamp(y + offsets[m].y, 0, src.height - 1));
    T* out = dst.row(y);
    const auto atEdge = [&](int n) {
      const auto under = [&](std::size_t m) {
        return rows[m][std::clamp(n / channels + offsets[m].x, 0, pixels - 1) * channels + n % channels];
      };
      T v = under(0);
      for (std::size_t m = 1; m < rows.size(); ++m) v = Operation::pick(v, under(m));
      out[n] = v;
    };
    for (int n = 0; n < edge; ++n) atEdge(n);
    for (int n = width - edge; n < width; ++n) atEdge(n);

    for (std::size_t m = 0; m < rows.size(); ++m) rows[m] += offsets[m].x * channels;
    for (int n = edge; n < width - edge; ++n) {
      T v = rows[0][n];
      for (std::size_t m = 1; m < rows.size(); ++m) v = Operation::pick(v, rows[m][n]);
      out[n] = v;
    }
  }
}

// One bit per pixel, the most significant one first: a byte per pixel while it is filtered.
template <class Operation>
void bitMorphology(const Image<std::uint8_t>& src, const Image<std::uint8_t>& dst, const Image<std::uint8_t>& pixels,
                   const Image<std::uint8_t>& result, const Mask& mask) {
  for (int y = 0; y < pixels.height; ++y)
    for (int x = 0; x < pixels.width; ++x) pixels.row(y)[x] = (src.row(y)[x / 8] >> (7 - x % 8)) & 1;
  morphology<Operation, 1>(pixels, result, mask);
  for (int y = 0; y < pixels.height; ++y) {
    for (int x = 0; x < pixels.width; ++x) {
      const int bit = 0x80 >> (x % 8);
      auto& byte = dst.row(y)[x / 8];
      byte = std::uint8_t(result.row(y)[x] != 0 ? byte | bit : byte & ~bit);
    }
  }
}

// dst = a - b. Differences of an opening, a closing and a gradient are not negative.
template <class T>
void subtract(const Image<T>& a, const Image<T>& b, const Image<T>& dst) {
  const int width = dst.width;
  for (int y = 0; y < dst.height; ++y)
    for (int x = 0; x < width; ++x) dst.row(y)[x] = T(a.row(y)[x] - b.row(y)[x]);
}

// The compositions, for masks that a rotation by 180 degrees does not change; between holds the first step's result.
template <class First, class Second>
struct Twice {
  template <class T>
  static void run(const Image<T>& src, const Image<T>& dst, const Image<T>& between, const Mask& mask) {
    morphology<First, 1>(src, between, mask);
    morphology<Second, 1>(between, dst, mask);
  }
};
using Open = Twice<Erode, Dilate>;
using Close = Twice<Dilate, Erode>;

struct Tophat {
  template <class T>
  static void run(const Image<T>& src, const Image<T>& dst, const Image<T>& between, const Mask& mask) {
    Open::run(src, dst, between, mask);
    subtract(src, dst, dst);
  }
};

struct Blackhat {
  template <class T>
  static void run(const Image<T>& src, const Image<T>& dst, const Image<T>& between, const Mask& mask) {
    Close::run(src, dst, between, mask);
    subtract(dst, src, dst);
  }
};

struct Gradient {
  template <class T>
  static void run(const Image<T>& src, const Image<T>& dst, const Image<T>& between, const Mask& mask) {
    morphology<Erode, 1>(src, between, mask);
    morphology<Dilate, 1>(src, dst, mask);
    subtract(dst, between, dst);
  }
};

}  // namespace bench::plain
