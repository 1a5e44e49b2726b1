// Octave expansion: sums of neighbouring pixels along every row, for the even and for the odd columns; then across
// rows.
#include <algorithm>

#include "core/carver.h"
#include "core/rows.h"
#include "pyramid/octave.h"
#include "zvpcv/pyramid.h"

namespace zvp {
namespace {

constexpr int kBufferRows = 3;

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
constexpr int64_t before(int64_t i, int64_t n) { return i > 0 ? i - 1 : std::min<int64_t>(1, n - 1); }
constexpr int64_t after(int64_t i, int64_t n) { return std::min(i + 1, n - 1); }

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
    for (int c = 0; c < channels; ++c) {
      const auto pixel = [=](int64_t at) { return loadSums<Sum, 1>(row + at * channels + c); };
      const Sum self = pixel(x), next = pixel(after(x, width)), odd = oddSum(self, next);
      out.even[x * channels + c] = width == 1 ? odd : evenSum(pixel(before(x, width)), self, next);
      out.odd[x * channels + c] = odd;
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
void makeRow(const RowsAround<OctaveSum<T>, kEvenRow>& rows, int64_t width, T* dst) {
  const ResultKernel<T, channels, kEvenRow> kernel{rows, dst, width};
  int64_t x = simd::sweep<OctavePacks<OctaveSum<T>, channels>>(0, 0, kernel);
  for (; x < width; ++x) kernel.runPixel(x);
}

template <int channels, class T>
Status expand(Rows<const T> src, Rows<T> dst, RoiSize roi, uint8_t* buffer) {
  using Sum = OctaveSum<T>;
  const int64_t width = roi.width, height = roi.height, n = width * channels;
  if (Status s = firstFailure(nonNull(src, dst), nonNull(buffer), nonEmpty(roi), rowsFit(n, src), rowsFit(2 * n, dst),
                              wholeElements(src, dst)))
    return s;
  auto* memory = Carver(buffer).take<uint8_t>(0, kOctaveAlignment);
  const auto ring = [=, rowBytes = octaveRowBytes(2 * n)](int64_t y) {
    auto* even = reinterpret_cast<Sum*>(memory + y % kBufferRows * rowBytes);
    return PhaseRows<Sum>{even, even + n};
  };
  int64_t summed = 0;
  for (int64_t y = 0; y < height; ++y) {
    for (; summed <= after(y, height); ++summed) sumRow<channels>(src.row(summed), width, ring(summed));
    const auto previous = ring(before(y, height)), self = ring(y), next = ring(after(y, height));
    makeRow<T, channels, false>({previous, self, next}, width, dst.row(2 * y + 1));
    if (height == 1) {
      makeRow<T, channels, false>({previous, self, next}, width, dst.row(2 * y));
    } else {
      makeRow<T, channels, true>({previous, self, next}, width, dst.row(2 * y));
    }
  }
  return StatusOk;
}

}  // namespace
}  // namespace zvp

#define ZVP_PYR_UP(NAME, T, CHANNELS)                                                                              \
  Status zvpiPyrUp_Gauss5x5_##NAME(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize srcRoi,               \
                                   uint8_t* pBuffer) {                                                             \
    return zvp::expand<CHANNELS>(zvp::Rows<const T>{pSrc, srcStep}, zvp::Rows<T>{pDst, dstStep}, srcRoi, pBuffer); \
  }

ZVP_PYR_UP(8u_C1R, uint8_t, 1)
ZVP_PYR_UP(8u_C3R, uint8_t, 3)
ZVP_PYR_UP(8s_C1R, int8_t, 1)
ZVP_PYR_UP(8s_C3R, int8_t, 3)
ZVP_PYR_UP(32f_C1R, float, 1)
ZVP_PYR_UP(32f_C3R, float, 3)

Status zvpiPyrUpGetBufSize_Gauss5x5(int roiWidth, DataType dataType, int channels, int* pBufSize) {
  return zvp::octaveBufferSize(roiWidth, dataType, channels, 2, zvp::kBufferRows, pBufSize);
}
