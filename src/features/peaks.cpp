// Local peaks: the threshold is tested first, and only where a block of pixels holds one above it are the neighbours
// looked at. Nothing is kept between rows, so the work buffer stays unused.
#include <bit>
#include <limits>

#include "core/query.h"
#include "core/rows.h"
#include "simd/walk.h"
#include "zvpcv/features.h"

namespace zvp::features {
namespace {

using simd::load, simd::maskBits, simd::Pack;

// The published size: blocks of four pixels, five pixels more than a row has, and room to align.
Status bufferSize(int width, int* size) {
  constexpr int kBlockPixels = 4, kBytesPerBlock = 128, kMorePixels = 5, kRoomToAlign = 32;
  const Bytes blocks = (int64_t{width} + kMorePixels) / kBlockPixels;
  return reportSize(firstFailure(nonNull(size), check(width >= 1, ErrSize)), blocks * kBytesPerBlock + kRoomToAlign,
                    size);
}

// The most negative integer stays negative.
template <class V>
ZVP_INLINE V magnitude(V v) {
  if constexpr (std::is_same_v<simd::Element<V>, float>) {
    return simd::absolute(v);
  } else {
    using U = Pack<uint32_t, simd::laneCount<V>>;
    const U sign = U(v >> 31);
    return V((U(v) ^ sign) - sign);
  }
}

template <class V>
ZVP_INLINE auto isExtremum(V v, V extremum) {
  if constexpr (std::is_same_v<simd::Element<V>, float>) {
    return simd::absolute(V(v - extremum)) <= std::numeric_limits<float>::min();
  } else {
    return v == extremum;
  }
}

enum class Neighbourhood { kSquare, kCross };

// The greatest and the least value about a pack of pixels; a NaN among the neighbours changes neither.
template <class V>
struct Extrema {
  V highest, lowest;

  template <class T>
  ZVP_INLINE void add(const T* p) {
    const V v = load<V>(p);
    highest = simd::max(v, highest);
    lowest = simd::min(v, lowest);
  }
};

// Three consecutive rows.
template <class T>
struct Window {
  const T *above, *row, *below;
};

template <int N, Neighbourhood shape, class T>
ZVP_INLINE uint64_t peakBits(const Window<T>& w, int x, T threshold) {
  using V = Pack<T, N>;
  const V v = load<V>(w.row + x);
  const uint64_t candidates = maskBits(magnitude(v) > threshold);
  if (candidates == 0) return 0;
  Extrema<V> e{v, v};
  for (int side = -1; side <= 1; side += 2) {
    e.add(w.row + x + side);
    if constexpr (shape == Neighbourhood::kSquare) {
      e.add(w.above + x + side);
      e.add(w.below + x + side);
    }
  }
  e.add(w.above + x);
  e.add(w.below + x);
  const V extremum = v > T{0} ? e.highest : e.lowest;
  return candidates & maskBits(isExtremum(v, extremum));
}

class PeakList {
 public:
  PeakList(Point* points, int capacity) : points_(points), capacity_(capacity) {}

  int count() const { return count_; }
  bool isFull() const { return count_ == capacity_; }

  // One peak for each set bit, from the lowest; bit 0 is column x.
  void append(uint64_t bits, int x, int y) {
    for (; bits != 0 && !isFull(); bits &= bits - 1) {
      simd::store(points_ + count_, Point{x + std::countr_zero(bits), y});
      ++count_;
    }
  }

 private:
  Point* points_;
  int capacity_, count_ = 0;
};

template <Neighbourhood shape, class T>
void search(Rows<const T> src, RoiSize roi, T threshold, int border, PeakList& peaks) {
  for (int y = border; y < roi.height - border && !peaks.isFull(); ++y) {
    const Window<T> window{src.row(y - 1), src.row(y), src.row(y + 1)};
    simd::forEachPack<simd::lanes<T>, sizeof(T)>(
        border, roi.width - border, [&]<int N>(int x) __attribute__((always_inline)) {
          if (const uint64_t bits = peakBits<N, shape>(window, x, threshold)) peaks.append(bits, x, y);
        });
  }
}

// Half an extent is compared in single precision.
bool exceedsHalf(int border, int extent) { return static_cast<float>(border) > static_cast<float>(extent) * 0.5f; }

template <class T>
Status findPeaks(Rows<const T> src, RoiSize roi, T threshold, Point* points, int capacity, int* count, int norm,
                 int border, const uint8_t* buffer) {
  const bool sizesHold =
      capacity >= 1 && border >= 1 && !exceedsHalf(border, roi.width) && !exceedsHalf(border, roi.height);
  const bool rowFits = src.step / int{sizeof(T)} >= roi.width;
  if (Status s = firstFailure(nonNull(src, points, count, buffer), nonEmpty(roi), check(sizesHold, ErrSize),
                              check(rowFits, ErrStep), wholeElements(src), check(norm == 0 || norm == 1, ErrBadArg)))
    return s;
  PeakList peaks(points, capacity);
  (norm == 0 ? search<Neighbourhood::kSquare, T> : search<Neighbourhood::kCross, T>)(src, roi, threshold, border,
                                                                                     peaks);
  simd::store(count, peaks.count());
  return StatusOk;
}

}  // namespace
}  // namespace zvp::features

using namespace zvp::features;
using zvp::Rows;

Status zvpiFindPeaks3x3GetBufferSize_32s_C1R(int roiWidth, int* pBufferSize) {
  return bufferSize(roiWidth, pBufferSize);
}

Status zvpiFindPeaks3x3GetBufferSize_32f_C1R(int roiWidth, int* pBufferSize) {
  return bufferSize(roiWidth, pBufferSize);
}

Status zvpiFindPeaks3x3_32s_C1R(const int32_t* pSrc, int srcStep, RoiSize roiSize, int32_t threshold, Point* pPeak,
                                int maxPeakCount, int* pPeakCount, int norm, int border, uint8_t* pBuffer) {
  return findPeaks(Rows{pSrc, srcStep}, roiSize, threshold, pPeak, maxPeakCount, pPeakCount, norm, border, pBuffer);
}

Status zvpiFindPeaks3x3_32f_C1R(const float* pSrc, int srcStep, RoiSize roiSize, float threshold, Point* pPeak,
                                int maxPeakCount, int* pPeakCount, int norm, int border, uint8_t* pBuffer) {
  return findPeaks(Rows{pSrc, srcStep}, roiSize, threshold, pPeak, maxPeakCount, pPeakCount, norm, border, pBuffer);
}
