// Octave reduction: sums of five pixels along every row, at every second column; then of five such sums across rows.
#include <algorithm>

#include "core/carver.h"
#include "core/rows.h"
#include "pyramid/octave.h"
#include "zvpcv/pyramid.h"

namespace zvp {
namespace {

constexpr int kTaps = 5, kReach = 2, kRingRows = 5, kBufferRows = 6;

// 1 4 6 4 1, in the order of the taps.
template <class V>
ZVP_INLINE V weighted(V a, V b, V c, V d, V e) {
  using S = simd::Element<V>;
  return V(V(V(V(a + V(b * S{4})) + V(c * S{6})) + V(d * S{4})) + e);
}

// Where index i of n >= 3 pixels, at most two outside, is mirrored to.
constexpr int64_t mirrored(int64_t i, int64_t n) { return i < 0 ? -i : i < n ? i : 2 * (n - 1) - i; }

// The sums along one row for the outputs whose five pixels lie inside; output x has its centre at pixel 2 x.
template <class T, int channels>
struct RowKernel {
  using Sum = OctaveSum<T>;
  const T* row;
  Sum* sums;
  int64_t width;

  // The last tap reads a pair for every lane.
  template <int N>
  int64_t last() const {
    const int64_t room = (width - kReach) * channels - 2 * N;
    return room < 0 ? -1 : room / (2 * channels);
  }

  template <int N>
  ZVP_INLINE void run(int64_t x) const {
    simd::store(sums + x * channels, at<N>(row + 2 * x * channels));
  }

 private:
  template <int N>
  static ZVP_INLINE Pack<Sum, N> at(const T* centre) {
    if constexpr (std::is_same_v<T, float>) {
      const auto taps = simd::loadStrided<N, channels>(centre - kReach * channels);
      return weighted(taps.pack[0], taps.pack[1], taps.pack[2], taps.pack[3], taps.pack[4]);
    } else {
      constexpr int kPair = 2 * channels;
      return pairSums<N, 1, 4>(centre - kPair) + pairSums<N, 6, 4>(centre) + pairSums<N, 1, 0>(centre + kPair);
    }
  }

  // weight0 x even pixel + weight1 x odd pixel.
  template <int N, int weight0, int weight1>
  static ZVP_INLINE Pack<Sum, N> pairSums(const T* p) {
    using Sums = Pack<Sum, N>;
    const auto weights = simd::broadcast<Sum, N>(weight0 + 256 * weight1);
    Sums pairs = simd::load<Sums>(p);
    if constexpr (channels == 3) pairs = simd::pairChannels(pairs);
    return std::is_signed_v<T> ? simd::mulAddBytes(weights, pairs) : simd::mulAddBytes(pairs, weights);
  }
};

template <int channels, class T>
void sumRow(const T* row, int64_t width, OctaveSum<T>* sums) {
  using Sum = OctaveSum<T>;
  const auto pixel = [row](int64_t x, int c) { return static_cast<Sum>(simd::load<T>(row + x * channels + c)); };
  if (width < 3) {
    for (int c = 0; c < channels; ++c) sums[c] = static_cast<Sum>(Sum(pixel(0, c) + pixel(width - 1, c)) * Sum{8});
    return;
  }
  const auto end = [=](int64_t x) {
    for (int c = 0; c < channels; ++c) {
      const auto tap = [=](int i) { return pixel(mirrored(2 * x + i - kReach, width), c); };
      sums[x * channels + c] = weighted<Sum>(tap(0), tap(1), tap(2), tap(3), tap(4));
    }
  };
  end(0);
  int64_t x = simd::sweep<OctavePacks<Sum, channels>>(1, 1, RowKernel<T, channels>{row, sums, width});
  for (; x < (width + 1) / 2; ++x) end(x);
}

// sum / 256, rounded half up.
template <class T, class V>
ZVP_INLINE auto mean(V sum) {
  constexpr int N = simd::laneCount<V>;
  if constexpr (std::is_same_v<T, float>) {
    return V(sum * 0.00390625f);
  } else {
    const V rounded = V(V(sum + OctaveSum<T>{128}) >> 8);
    if constexpr (N == 1) {
      return static_cast<T>(rounded);
    } else {
      return simd::narrow<T, N>(Pack<int16_t, N>(rounded));
    }
  }
}

// One row of n results from five rows of sums.
template <class T>
void combineRows(const OctaveSum<T>* const (&rows)[kTaps], int64_t n, T* dst) {
  using Sum = OctaveSum<T>;
  simd::coverRow<Sum>(static_cast<int>(n), [&]<int N>(int i) {
    const auto row = [&](int k) { return simd::load<Pack<Sum, N>>(rows[k] + i); };
    simd::store(dst + i, mean<T>(weighted(row(0), row(1), row(2), row(3), row(4))));
  });
}

// Images of one or two rows: each pixel is the mean of both.
template <class T>
void combineTwoRows(const OctaveSum<T>* a, const OctaveSum<T>* b, int64_t n, T* dst) {
  using Sum = OctaveSum<T>;
  for (int64_t i = 0; i < n; ++i) {
    const Sum sum = static_cast<Sum>(a[i] + b[i]);
    if constexpr (std::is_same_v<T, float>) {
      simd::store(dst + i, sum * 0.03125f);
    } else {
      simd::store(dst + i, mean<T>(static_cast<Sum>(sum * Sum{8})));
    }
  }
}

template <int channels, class T>
Status reduce(Rows<const T> src, Rows<T> dst, RoiSize roi, uint8_t* buffer) {
  using Sum = OctaveSum<T>;
  const int64_t width = roi.width, height = roi.height, n = (width + 1) / 2 * channels;
  if (Status s = firstFailure(nonNull(src, dst), nonNull(buffer), nonEmpty(roi), rowsFit(width * channels, src),
                              rowsFit(n, dst), wholeElements(src, dst)))
    return s;
  auto* memory = Carver(buffer).take<uint8_t>(0, kOctaveAlignment);
  const auto ring = [=, rowBytes = octaveRowBytes(width * channels)](int64_t y) {
    return reinterpret_cast<Sum*>(memory + y % kRingRows * rowBytes);
  };
  int64_t summed = 0;
  for (int64_t y = 0; 2 * y < height; ++y) {
    for (; summed <= std::min(2 * y + kReach, height - 1); ++summed)
      sumRow<channels>(src.row(summed), width, ring(summed));
    if (height < 3) {
      combineTwoRows(ring(0), ring(height - 1), n, dst.row(y));
    } else {
      const auto row = [=](int i) { return ring(mirrored(2 * y + i - kReach, height)); };
      combineRows<T>({row(0), row(1), row(2), row(3), row(4)}, n, dst.row(y));
    }
  }
  return StatusOk;
}

}  // namespace
}  // namespace zvp

#define ZVP_PYR_DOWN(NAME, T, CHANNELS)                                                                            \
  Status zvpiPyrDown_Gauss5x5_##NAME(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize srcRoi,             \
                                     uint8_t* pBuffer) {                                                           \
    return zvp::reduce<CHANNELS>(zvp::Rows<const T>{pSrc, srcStep}, zvp::Rows<T>{pDst, dstStep}, srcRoi, pBuffer); \
  }

ZVP_PYR_DOWN(8u_C1R, uint8_t, 1)
ZVP_PYR_DOWN(8u_C3R, uint8_t, 3)
ZVP_PYR_DOWN(8s_C1R, int8_t, 1)
ZVP_PYR_DOWN(8s_C3R, int8_t, 3)
ZVP_PYR_DOWN(32f_C1R, float, 1)
ZVP_PYR_DOWN(32f_C3R, float, 3)

Status zvpiPyrDownGetBufSize_Gauss5x5(int roiWidth, DataType dataType, int channels, int* pBufSize) {
  return zvp::octaveBufferSize(roiWidth, dataType, channels, 1, zvp::kBufferRows, pBufSize);
}
