// Octave reduction: sums of five pixels along every row, at every second column; then of five such sums across rows.
#include "pyramid/octave.h"

namespace zvp::pyramid {
namespace {

constexpr int kTaps = 5, kReach = 2, kRingRows = 5;

using Memory = OctaveMemory<kRingRows + 1, 1>;  // one more than is used

// 1 4 6 4 1, in the order of the taps.
template <class V>
ZVP_INLINE V weighted(V a, V b, V c, V d, V e) {
  using S = simd::Element<V>;
  return V(V(V(V(a + V(b * S{4})) + V(c * S{6})) + V(d * S{4})) + e);
}

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
  const auto load = [](const T* p) { return static_cast<Sum>(simd::load<T>(p)); };
  if (width < 3) {
    for (int c = 0; c < channels; ++c)
      simd::store(sums + c, static_cast<Sum>(Sum(load(row + c) + load(row + (width - 1) * channels + c)) * Sum{8}));
    return;
  }
  const auto end = [=](int64_t x) {
    const auto tap = [=](int64_t i) { return row + modeCoordinate(2 * x + i, width, BorderReflect) * channels; };
    const T* taps[kTaps] = {tap(-2), tap(-1), row + 2 * x * channels, tap(1), tap(2)};
    for (int c = 0; c < channels; ++c)
      simd::store(sums + x * channels + c, weighted<Sum>(load(taps[0] + c), load(taps[1] + c), load(taps[2] + c),
                                                         load(taps[3] + c), load(taps[4] + c)));
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
    const auto sum = static_cast<Sum>(simd::load<Sum>(a + i) + simd::load<Sum>(b + i));
    if constexpr (std::is_same_v<T, float>) {
      simd::store(dst + i, sum * 0.03125f);
    } else {
      simd::store(dst + i, mean<T>(static_cast<Sum>(sum * Sum{8})));
    }
  }
}

template <int channels, class T>
class OctaveReduction {
 public:
  static constexpr int64_t resultSize(int64_t n) { return (n + 1) / 2; }

  OctaveReduction(Rows<const T> src, RoiSize size, uint8_t* buffer)
      : src_(src), size_(size), ring_(Memory::ring<OctaveSum<T>, kRingRows>(int64_t{size.width} * channels, buffer)) {}

  void makeRow(int64_t y, T* out) {
    const int64_t height = size_.height, n = resultSize(size_.width) * channels;
    ring_.provide(0, std::min(2 * y + kReach, height - 1),
                  [this](int64_t row, OctaveSum<T>* sums) { sumRow<channels>(src_.row(row), size_.width, sums); });
    if (height < 3) return combineTwoRows(ring_.row(0), ring_.row(height - 1), n, out);
    const auto row = [=, this](int i) { return ring_.row(modeCoordinate(2 * y + i - kReach, height, BorderReflect)); };
    combineRows<T>({row(0), row(1), row(2), row(3), row(4)}, n, out);
  }

 private:
  Rows<const T> src_;
  RoiSize size_;
  FixedRing<OctaveSum<T>, kRingRows> ring_;
};

}  // namespace
}  // namespace zvp::pyramid

ZVP_OCTAVE(zvpiPyrDown_Gauss5x5_8u_C1R, OctaveReduction, uint8_t, 1)
ZVP_OCTAVE(zvpiPyrDown_Gauss5x5_8u_C3R, OctaveReduction, uint8_t, 3)
ZVP_OCTAVE(zvpiPyrDown_Gauss5x5_8s_C1R, OctaveReduction, int8_t, 1)
ZVP_OCTAVE(zvpiPyrDown_Gauss5x5_8s_C3R, OctaveReduction, int8_t, 3)
ZVP_OCTAVE(zvpiPyrDown_Gauss5x5_32f_C1R, OctaveReduction, float, 1)
ZVP_OCTAVE(zvpiPyrDown_Gauss5x5_32f_C3R, OctaveReduction, float, 3)

Status zvpiPyrDownGetBufSize_Gauss5x5(int roiWidth, DataType dataType, int channels, int* pBufSize) {
  return zvp::pyramid::Memory::reportBytes(roiWidth, dataType, channels, pBufSize);
}
