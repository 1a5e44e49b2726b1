// Octave expansion: sums of neighbouring pixels along every row, for the even and for the odd columns; then across
// rows.
#include "pyramid/octave.h"

namespace zvp::pyramid {
namespace {

constexpr int kRingRows = 3;

using Memory = OctaveMemory<kRingRows, 2>;

// 1 6 1 and 4 4, in the order of the taps.
template <class V>
ZVP_INLINE V evenSum(V a, V b, V c) {
  return V(V(a + V(b * simd::Element<V>{6})) + c);
}
template <class V>
ZVP_INLINE V oddSum(V b, V c) {
  return V(V(b * simd::Element<V>{4}) + V(c * simd::Element<V>{4}));
}

// Which pixels stand for those before the first and after the last of n.
constexpr int64_t before(int64_t i, int64_t n) { return modeCoordinate(i - 1, n, BorderReflect); }
constexpr int64_t after(int64_t i, int64_t n) { return modeCoordinate(i + 1, n, BorderReplicate); }

// The sums along one row: those of the even columns of the result, then those of the odd ones.
template <class Sum>
struct PhaseRows {
  Sum *even, *odd;
};

template <class Sum, int N, class T>
ZVP_INLINE Pack<Sum, N> loadSums(const T* p) {
  if constexpr (N == 1) {
    return static_cast<Sum>(simd::load<T>(p));
  } else if constexpr (std::is_same_v<T, float>) {
    return simd::load<Pack<float, N>>(p);
  } else {
    return Pack<Sum, N>(simd::loadWords<N>(p));
  }
}

template <int channels, class T>
void sumRow(const T* row, int64_t width, PhaseRows<OctaveSum<T>> out) {
  using Sum = OctaveSum<T>;
  const auto end = [=](int64_t x) {
    const T *previous = row + before(x, width) * channels, *self = row + x * channels,
            *next = row + after(x, width) * channels;
    for (int c = 0; c < channels; ++c) {
      const auto a = loadSums<Sum, 1>(previous + c), b = loadSums<Sum, 1>(self + c), d = loadSums<Sum, 1>(next + c);
      simd::store(out.even + x * channels + c, width == 1 ? oddSum(b, d) : evenSum(a, b, d));
      simd::store(out.odd + x * channels + c, oddSum(b, d));
    }
  };
  end(0);
  end(width - 1);
  simd::coverRow<Sum>(static_cast<int>((width - 2) * channels), [=]<int N>(int i) {
    const int64_t at = i + channels;
    const auto previous = loadSums<Sum, N>(row + at - channels), self = loadSums<Sum, N>(row + at),
               next = loadSums<Sum, N>(row + at + channels);
    simd::store(out.even + at, evenSum(previous, self, next));
    simd::store(out.odd + at, oddSum(self, next));
  });
}

// sum / 64, rounded half up; the result fits the element type.
template <class T, class V>
ZVP_INLINE V mean(V sum) {
  if constexpr (std::is_same_v<T, float>) {
    return sum * 0.015625f;
  } else {
    return V(V(sum + OctaveSum<T>{32}) >> 6);
  }
}

// Three rows of sums around row i of the source become row 2 i or 2 i + 1 of the result.
template <class Sum, bool kEvenRow>
struct RowsAround {
  PhaseRows<Sum> previous, self, next;

  template <int N>
  ZVP_INLINE Pack<Sum, N> sum(Sum* PhaseRows<Sum>::*phase, int64_t i) const {
    const auto at = [i, phase](const PhaseRows<Sum>& rows) { return simd::load<Pack<Sum, N>>(rows.*phase + i); };
    return kEvenRow ? evenSum(at(previous), at(self), at(next)) : oddSum(at(self), at(next));
  }
};

// Interleaves the means of both phases into the row of the result.
template <class T, int channels, bool kEvenRow>
struct ResultKernel {
  using Sum = OctaveSum<T>;
  RowsAround<Sum, kEvenRow> rows;
  T* dst;
  int64_t width;

  template <int N>
  int64_t last() const {
    const int64_t room = width * channels - N;
    return room < 0 ? -1 : room / channels;
  }

  template <int N>
  ZVP_INLINE void run(int64_t x) const {
    const auto even = mean<T>(rows.template sum<N>(&PhaseRows<Sum>::even, x * channels));
    const auto odd = mean<T>(rows.template sum<N>(&PhaseRows<Sum>::odd, x * channels));
    T* out = dst + 2 * x * channels;
    if constexpr (std::is_same_v<T, float>) {
      simd::storePhases<N, channels>(out, {even, odd});
    } else {
      using Pairs = Pack<uint16_t, N>;
      const Pairs pairs = (Pairs(even) & uint16_t{0xff}) | (Pairs(odd) << 8);
      simd::store(out, channels == 3 ? simd::unpairChannels(pairs) : pairs);
    }
  }

  void runPixel(int64_t x) const {
    for (int c = 0; c < channels; ++c) {
      T* out = dst + 2 * x * channels + c;
      simd::store(out, static_cast<T>(mean<T>(rows.template sum<1>(&PhaseRows<Sum>::even, x * channels + c))));
      simd::store(out + channels,
                  static_cast<T>(mean<T>(rows.template sum<1>(&PhaseRows<Sum>::odd, x * channels + c))));
    }
  }
};

template <class T, int channels, bool kEvenRow>
void makeResult(const RowsAround<OctaveSum<T>, kEvenRow>& rows, int64_t width, T* dst) {
  const ResultKernel<T, channels, kEvenRow> kernel{rows, dst, width};
  int64_t x = simd::sweep<OctavePacks<OctaveSum<T>, channels>>(0, 0, kernel);
  for (; x < width; ++x) kernel.runPixel(x);
}

template <int channels, class T>
class OctaveExpansion {
  using Sum = OctaveSum<T>;

 public:
  static constexpr int64_t resultSize(int64_t n) { return 2 * n; }

  OctaveExpansion(Rows<const T> src, RoiSize size, uint8_t* buffer)
      : src_(src), size_(size), ring_(Memory::ring<Sum, kRingRows>(elements(), buffer)) {}

  void makeRow(int64_t y, T* out) {
    const int64_t i = y / 2, height = size_.height;
    ring_.provide(0, after(i, height),
                  [this](int64_t row, Sum* sums) { sumRow<channels>(src_.row(row), size_.width, phases(sums)); });
    const auto row = [this](int64_t at) { return phases(ring_.row(at)); };
    const PhaseRows<Sum> previous = row(before(i, height)), self = row(i), next = row(after(i, height));
    if (y % 2 == 0 && height > 1) {
      makeResult<T, channels, true>({previous, self, next}, size_.width, out);
    } else {
      makeResult<T, channels, false>({previous, self, next}, size_.width, out);
    }
  }

 private:
  int64_t elements() const { return int64_t{size_.width} * channels; }
  PhaseRows<Sum> phases(Sum* sums) const { return {sums, sums + elements()}; }

  Rows<const T> src_;
  RoiSize size_;
  FixedRing<Sum, kRingRows> ring_;
};

}  // namespace
}  // namespace zvp::pyramid

ZVP_OCTAVE(zvpiPyrUp_Gauss5x5_8u_C1R, OctaveExpansion, uint8_t, 1)
ZVP_OCTAVE(zvpiPyrUp_Gauss5x5_8u_C3R, OctaveExpansion, uint8_t, 3)
ZVP_OCTAVE(zvpiPyrUp_Gauss5x5_8s_C1R, OctaveExpansion, int8_t, 1)
ZVP_OCTAVE(zvpiPyrUp_Gauss5x5_8s_C3R, OctaveExpansion, int8_t, 3)
ZVP_OCTAVE(zvpiPyrUp_Gauss5x5_32f_C1R, OctaveExpansion, float, 1)
ZVP_OCTAVE(zvpiPyrUp_Gauss5x5_32f_C3R, OctaveExpansion, float, 3)

Status zvpiPyrUpGetBufSize_Gauss5x5(int roiWidth, DataType dataType, int channels, int* pBufSize) {
  return zvp::pyramid::Memory::reportBytes(roiWidth, dataType, channels, pBufSize);
}
