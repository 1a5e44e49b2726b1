// A pass of the chamfer transform over float images, several rows at once.
//
// Float sums do not associate, but the least of rounded sums is the same in whatever order it is taken: a pixel may be
// finished as soon as its neighbours are. A band of N rows moves as one skewed front: at time t its row r is at
// column t - kSkew r, so that what a row needs of the row above has been finished before.
#pragma once

#include "distance/chamfer.h"
#include "simd/transpose.h"

namespace zvp::distance {

template <Kernel kernel, Pass pass>
class Wave {
 public:
  static constexpr int N = simd::lanes<float>;

  Wave(Rows<float> image, RoiSize roi, Weights<float> weights)
      : rows_{image, roi.height},
        width_(roi.width),
        a_(simd::broadcast<float, N>(weights.a)),
        b_(simd::broadcast<float, N>(weights.b)),
        c_(simd::broadcast<float, N>(weights.c)) {}

  // Rows first..first + N - 1 of the pass, as far as they exist.
  void relaxBand(int first) {
    for (int r = -2; r < N; ++r) line_[r + 2] = rows_.row(int64_t{first} + r);
    begin();
    const bool full = line_[N + 1] != nullptr;
    for (int t = 0; t < width_ + kSkew * (N - 1); t += N) {
      const bool inside = full && t >= kSkew * (N - 1) && t <= width_ - N;
      inside ? advance<false>(t) : advance<true>(t);
    }
  }

 private:
  using V = simd::Pack<float, N>;

  // A pixel needs the row above up to kReach columns to its right. A skew of kReach + 1 would do, but then each moment
  // would wait for the shuffled result of the one before; with more, bands take longer to start and to end.
  static constexpr int kReach = kernel == Kernel::k3x3 ? 1 : 2, kSkew = kReach + 2;
  static constexpr int kHistory = 2 * kSkew + 1;

  static V farthest() { return simd::broadcast<float, N>(kFarthest<float>); }

  // Where the pixels of row r at times t..t + N - 1 are: from that column on, backward from last to first.
  int column(int r, int t) const {
    const int x = t - kSkew * r;
    return pass == Pass::kForward ? x : width_ - N - x;
  }
  static constexpr int inMemory(int i) { return pass == Pass::kForward ? i : N - 1 - i; }

  // The lanes of N pixels from a column on that are inside the region.
  struct Inside {
    int first, end;
  };
  Inside inside(int r, int x) const {
    if (line(r) == nullptr) return {0, 0};
    return {simd::min(N, simd::max(0, -x)), simd::max(0, simd::min(N, width_ - x))};
  }

  float* line(int r) const { return line_[r + 2]; }
  static float* at(float* row, int x) {
    return reinterpret_cast<float*>(reinterpret_cast<uintptr_t>(row) +
                                    static_cast<uintptr_t>(intptr_t{x}) * sizeof(float));
  }

  V read(int r, int t) const {
    const int x = column(r, t);
    const Inside in = inside(r, x);
    return in.first < in.end ? simd::loadBetween<V>(at(line(r), x), in.first, in.end, farthest()) : farthest();
  }

  // A pixel of a finished row above the band.
  float pixel(int r, int t) const {
    const int x = t - kSkew * r;
    if (line(r) == nullptr || x < 0 || x >= width_) return kFarthest<float>;
    return simd::load<float>(line(r) + (pass == Pass::kForward ? x : width_ - 1 - x));
  }

  // The moments before the front reaches the first column.
  void begin() {
    left_ = farthest();
    for (int i = 0; i < kHistory; ++i) {
      const int t = i - kHistory;
      above_[i] = simd::slideUp<1>(farthest(), simd::broadcast<float, N>(pixel(-1, t)));
      above2_[i] = simd::slideUp<1>(above_[i], simd::broadcast<float, N>(pixel(-2, t)));
    }
  }

  // N moments, t..t + N - 1. At an end of the rows the pixels outside stay farthest.
  template <bool atEnd>
  void advance(int t) {
    V pixels[N], outside[N];
    readBand<atEnd>(t, pixels, outside);
    moveFront<atEnd>(t, pixels, outside);
    for (int i = 0; i < kHistory; ++i) above_[i] = above_[N + i];
    if constexpr (kernel == Kernel::k5x5)
      for (int i = 0; i < kHistory; ++i) above2_[i] = above2_[N + i];
    writeBand<atEnd>(t, pixels);
  }

  // Rows as they are in memory, turned into moments: element r of a moment is the pixel of row r. The moments of
  // `outside` are farthest where there is no pixel.
  template <bool atEnd>
  ZVP_INLINE void readBand(int t, V (&pixels)[N], V (&outside)[N]) const {
    for (int r = 0; r < N; ++r) {
      if constexpr (atEnd) {
        const Inside in = inside(r, column(r, t));
        pixels[r] = read(r, t);
        outside[r] = simd::lanesBetween<N>(in.first, in.end) ? V{} : farthest();
      } else {
        pixels[r] = simd::load<V>(line(r) + column(r, t));
      }
    }
    simd::transpose(pixels);
    if constexpr (atEnd) simd::transpose(outside);
  }

  template <bool atEnd>
  ZVP_INLINE void writeBand(int t, V (&pixels)[N]) const {
    simd::transpose(pixels);
    for (int r = 0; r < N; ++r) {
      const int x = column(r, t);
      if constexpr (atEnd) {
        const Inside in = inside(r, x);
        if (in.first < in.end) simd::storeBetween(at(line(r), x), in.first, in.end, pixels[r]);
      } else {
        simd::store(line(r) + x, pixels[r]);
      }
    }
  }

  // Each moment becomes the least of itself, what comes from the rows above, and the moment before. What has been
  // finished moves on to the next row; the rows above the band enter at its top.
  template <bool atEnd>
  ZVP_INLINE void moveFront(int t, V (&pixels)[N], const V (&outside)[N]) {
    float entering[N], entering2[N];
    simd::store(entering, read(-1, t));
    simd::store(entering2, kernel == Kernel::k5x5 ? read(-2, t) : V{});
    V left = left_;
#pragma GCC unroll 16
    for (int i = 0; i < N; ++i) {
      const int k = inMemory(i);
      V* above = above_ + kHistory + i;
      V* above2 = above2_ + kHistory + i;
      left = simd::min(simd::min(pixels[k], fromAbove(above, above2)), V(left + a_));
      if constexpr (atEnd) left = simd::max(left, outside[k]);
      pixels[k] = left;
      *above = simd::slideUp<1>(left, simd::broadcast<float, N>(entering[k]));
      if constexpr (kernel == Kernel::k5x5) *above2 = simd::slideUp<1>(*above, simd::broadcast<float, N>(entering2[k]));
    }
    left_ = left;
  }

  // The pixel d columns to the right in the row above was finished kSkew - d moments ago, two rows above 2 kSkew - d.
  // Sums are monotonic: the least of two sums with the same weight is the sum of the lesser one.
  ZVP_INLINE V fromAbove(const V* above, const V* above2) const {
    const V* up = above - kSkew;
    const V* up2 = above2 - 2 * kSkew;
    const V least = simd::min(V(up[0] + a_), V(simd::min(up[-1], up[1]) + b_));
    if constexpr (kernel == Kernel::k3x3) return least;
    return simd::min(least, V(simd::min(simd::min(up[-2], up[2]), simd::min(up2[-1], up2[1])) + c_));
  }

  PassRows<pass, float> rows_;
  int width_;
  V a_, b_, c_;
  float* line_[N + 2];  // from two rows above the band on
  V left_;              // the last moment of each row
  // Element r: the last moments of row r - 1 and of row r - 2.
  V above_[kHistory + N], above2_[kHistory + N];
};

template <Kernel kernel, Pass pass>
void relaxWaves(Rows<float> image, RoiSize roi, Weights<float> weights) {
  Wave<kernel, pass> wave(image, roi, weights);
  for (int y = 0; y < roi.height; y += simd::min(Wave<kernel, pass>::N, roi.height - y)) wave.relaxBand(y);
}

}  // namespace zvp::distance
