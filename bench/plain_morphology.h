// Erosion, dilation and their compositions as a reader would write them first. The border repeats the edge pixels.
#pragma once

#include <algorithm>
#include <limits>
#include <vector>

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

struct Mask {
  int width, height;
  std::vector<std::uint8_t> members;
};

struct Lower {
  template <class T>
  static T pick(T a, T b) {
    return b < a ? b : a;
  }
};

struct Higher {
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

// Row by row, member by member.
template <class Extremum, int channels, class T>
void extrema(const Image<T>& src, const Image<T>& dst, const Mask& mask) {
  const int width = src.width, pixels = width / channels, edge = std::min(mask.width / 2 * channels, width / 2);
  const auto visit = [=](T* out, const T* row, int shift, auto pick) {
    const auto atEdge = [=](int n) {
      out[n] = pick(out[n], row[std::clamp(n / channels + shift, 0, pixels - 1) * channels + n % channels]);
    };
    const T* under = row + shift * channels;
    for (int n = 0; n < edge; ++n) atEdge(n);
    for (int n = edge; n < width - edge; ++n) out[n] = pick(out[n], under[n]);
    for (int n = width - edge; n < width; ++n) atEdge(n);
  };
  const auto offsets = offsetsOf(mask);
  for (int y = 0; y < src.height; ++y) {
    const auto rowOf = [&](Offset o) { return src.row(std::clamp(y + o.y, 0, src.height - 1)); };
    visit(dst.row(y), rowOf(offsets[0]), offsets[0].x, [](T, T v) { return v; });
    for (std::size_t m = 1; m < offsets.size(); ++m)
      visit(dst.row(y), rowOf(offsets[m]), offsets[m].x, [](T a, T b) { return Extremum::pick(a, b); });
  }
}

// One bit per pixel, the most significant one first.
inline void unpackBits(const Image<std::uint8_t>& bits, const Image<std::uint8_t>& pixels) {
  const int width = pixels.width;
  for (int y = 0; y < pixels.height; ++y)
    for (int x = 0; x < width; ++x) pixels.row(y)[x] = (bits.row(y)[x / 8] >> (7 - x % 8)) & 1;
}

inline void packBits(const Image<std::uint8_t>& pixels, const Image<std::uint8_t>& bits) {
  for (int y = 0; y < pixels.height; ++y) {
    for (int x = 0; x < pixels.width; ++x) {
      const int bit = 0x80 >> (x % 8);
      auto& byte = bits.row(y)[x / 8];
      byte = std::uint8_t(pixels.row(y)[x] != 0 ? byte | bit : byte & ~bit);
    }
  }
}

template <class T>
T difference(T a, T b) {
  if constexpr (std::is_same_v<T, float>) {
    return a - b;
  } else {
    return T(std::clamp(a - b, int{std::numeric_limits<T>::min()}, int{std::numeric_limits<T>::max()}));
  }
}

// dst = a - b
template <class T>
void subtract(const Image<T>& a, const Image<T>& b, const Image<T>& dst) {
  const int width = dst.width;
  for (int y = 0; y < dst.height; ++y) {
    const T *rowA = a.row(y), *rowB = b.row(y);
    T* out = dst.row(y);
    for (int x = 0; x < width; ++x) out[x] = difference(rowA[x], rowB[x]);
  }
}

// The operations, for masks that a rotation by 180 degrees does not change: run<channels>(src, dst, between, mask),
// where between is room for the first of two steps.
template <class Extremum>
struct OneStep {
  template <int channels, class T>
  static void run(const Image<T>& src, const Image<T>& dst, const Image<T>&, const Mask& mask) {
    extrema<Extremum, channels>(src, dst, mask);
  }
};
using Erode = OneStep<Lower>;
using Dilate = OneStep<Higher>;

template <class First, class Second>
struct TwoSteps {
  template <int channels, class T>
  static void run(const Image<T>& src, const Image<T>& dst, const Image<T>& between, const Mask& mask) {
    extrema<First, channels>(src, between, mask);
    extrema<Second, channels>(between, dst, mask);
  }
};
using Open = TwoSteps<Lower, Higher>;
using Close = TwoSteps<Higher, Lower>;

struct Tophat {
  template <int channels, class T>
  static void run(const Image<T>& src, const Image<T>& dst, const Image<T>& between, const Mask& mask) {
    Open::run<channels>(src, dst, between, mask);
    subtract(src, dst, dst);
  }
};

struct Blackhat {
  template <int channels, class T>
  static void run(const Image<T>& src, const Image<T>& dst, const Image<T>& between, const Mask& mask) {
    Close::run<channels>(src, dst, between, mask);
    subtract(dst, src, dst);
  }
};

struct Gradient {
  template <int channels, class T>
  static void run(const Image<T>& src, const Image<T>& dst, const Image<T>& between, const Mask& mask) {
    extrema<Lower, channels>(src, between, mask);
    extrema<Higher, channels>(src, dst, mask);
    subtract(dst, between, dst);
  }
};

}  // namespace bench::ZVP_LOOPS::plain
