// Exact Euclidean distance transform. Columns first: the distance to the nearest zero pixel of the column. Then every
// row is the lower envelope of the parabolas (x - q)^2 + column(q)^2, in integers throughout; only the result is
// rounded. Where zero pixels are near, comparing with the next columns on both sides takes less time.
#include <string.h>

#include <limits>

#include "core/carver.h"
#include "core/query.h"
#include "core/runs.h"
#include "simd/simd.h"
#include "zvpcv/distance.h"

namespace zvp::distance {
namespace {

// No zero pixel in the column. Distances are less than a height.
constexpr int32_t kNone = INT32_MAX;

constexpr int32_t farther(int32_t distance) { return distance < kNone ? distance + 1 : kNone; }

// Column distances live in the destination, as 32-bit integers, until their row becomes the result.
int32_t distanceAt(const float* row, int x) { return simd::load<int32_t>(row + x); }

// The nearest zero pixel of the column at or above each pixel.
void lookUp(const uint8_t* src, const float* above, float* row, int width) {
  for (int x = 0; x < width; ++x) {
    const int32_t previous = above != nullptr ? distanceAt(above, x) : kNone;
    simd::store(row + x, src[x] == 0 ? 0 : farther(previous));
  }
}

// The nearer one of that and the nearest zero pixel below.
void lookDown(const float* below, float* row, int width) {
  for (int x = 0; x < width; ++x) simd::store(row + x, simd::min(distanceAt(row, x), farther(distanceAt(below, x))));
}

// Work memory, as documented; every row uses it anew.
Bytes workBytes(RoiSize roi) {
  constexpr int kItemBytes = 24, kSlack = 56;
  return roundUp(Bytes(simd::max(roi.width, roi.height)), 4) * kItemBytes + kSlack;
}

// The lower envelope of the parabolas of a row, from left to right. Int holds w^2 + h^2.
template <class Int>
class Envelope {
 public:
  Envelope(Carver carver, int width) {
    offset_ = carver.take<Int>(width, kAlignment);
    apex_ = carver.take<int32_t>(width, kAlignment);
    start_ = carver.take<int32_t>(width, kAlignment);
  }

  static constexpr size_t kAlignment = 16;

  // A parabola to the right of all the others; x < width are of interest.
  void add(int32_t apex, Int offset, int width) {
    while (count_ > 0 && value(count_ - 1, start_[count_ - 1]) > square(start_[count_ - 1] - apex) + offset) --count_;
    int64_t start = 0;
    if (count_ > 0) {
      // Where the new parabola is the lower one for the first time. The loop has left no negative quotient.
      const Int last = apex_[count_ - 1];
      const Int rise = square(apex) - square(last) + offset - offset_[count_ - 1];
      start = int64_t{rise / (2 * (apex - last))} + 1;
      if (start >= width) return;
    }
    apex_[count_] = apex;
    offset_[count_] = offset;
    start_[count_] = static_cast<int32_t>(start);
    ++count_;
  }

  void write(float* dst, int width) const {
    for (int k = 0; k < count_; ++k) {
      const int end = k + 1 < count_ ? start_[k + 1] : width;
      for (int x = start_[k]; x < end; ++x) simd::store(dst + x, static_cast<float>(value(k, x)));
    }
  }

  bool empty() const { return count_ == 0; }

 private:
  static Int square(Int v) { return v * v; }
  Int value(int k, Int x) const { return square(x - apex_[k]) + offset_[k]; }

  Int* offset_;  // what a parabola adds to the squared distance from its apex
  int32_t *apex_, *start_;
  int count_ = 0;
};

// Rows all of whose pixels lie within kReach of a zero pixel, by trying the columns on both sides of each pixel.
//
// Single precision is enough: a square beyond 2^24 may be rounded, but it does not become less than kReach^2, and only
// a row of results up to that is taken.
class NearbySearch {
 public:
  // Narrower rows are not worth it, and leave no room in the buffer.
  static constexpr int kLeastWidth = 64;

  NearbySearch(Carver carver, int width) : width_(width) {
    squares_ = carver.take<float>(int64_t{width} + 2 * kReach, sizeof(float)) + kReach;
    result_ = carver.take<float>(width, sizeof(float));
  }

  // Turns distances within columns into the result, or returns false and leaves the row as it is.
  bool transform(float* row) const {
    square(row);
    // As a coverRow, with its choice of narrower packs, up to 1.17 times slower.
    for (int x = 0; x < width_ - N; x += N)
      if (!searchAround(x)) return false;
    if (!searchAround(width_ - N)) return false;
    memcpy(row, result_, static_cast<size_t>(width_) * sizeof(float));
    return true;
  }

 private:
  static constexpr int N = simd::lanes<float>, kReach = 32, kStride = 4;
  using V = simd::Pack<float, N>;

  static bool anyBeyond(V squares, int distance) {
    return simd::maskBits(squares > constant(distance * distance)) != 0;
  }
  static V constant(int v) { return simd::broadcast<float, N>(static_cast<float>(v)); }

  void square(const float* row) const {
    const float none = std::numeric_limits<float>::max();
    for (int x = 0; x < width_; ++x) {
      const int32_t distance = distanceAt(row, x);
      const float exact = static_cast<float>(distance);
      squares_[x] = distance == kNone ? none : exact * exact;
    }
    for (int i = 1; i <= kReach; ++i) squares_[-i] = squares_[width_ - 1 + i] = none;
  }

  // The least of N pixels and their neighbours up to the distance beyond which nothing is less; false if that is far.
  bool searchAround(int x) const {
    V least = simd::load<V>(squares_ + x);
    for (int far = 1; far < kReach; far += kStride) {
      if (!anyBeyond(least, far)) break;
      for (int i = far; i < far + kStride; ++i) {
        const V beside = simd::min(simd::load<V>(squares_ + x - i), simd::load<V>(squares_ + x + i));
        least = simd::min(least, V(beside + constant(i * i)));
      }
    }
    simd::store(result_ + x, least);
    return !anyBeyond(least, kReach);
  }

  int width_;
  float *squares_, *result_;
};

template <class Int>
void transformRow(float* row, int width, Carver work) {
  Envelope<Int> envelope(work, width);
  for (int x = 0; x < width; ++x) {
    const int32_t distance = distanceAt(row, x);
    if (distance != kNone) envelope.add(x, Int{distance} * distance, width);
  }
  if (!envelope.empty()) return envelope.write(row, width);
  fillRun(row, width, std::numeric_limits<float>::max());
}

// After a row whose zero pixels are far, the search is not tried on the next one, then on the next two, and so on.
template <class Int>
void searchRows(Rows<float> dst, RoiSize roi, Carver work) {
  constexpr int kMostSkipped = 16;
  const NearbySearch nearby(work, roi.width);
  int skipped = 0, next = 1;
  for (int y = 0; y < roi.height; ++y) {
    if (skipped > 0) {
      --skipped;
    } else if (nearby.transform(dst.row(y))) {
      next = 1;
      continue;
    } else {
      skipped = next;
      next = simd::min(2 * next, kMostSkipped);
    }
    transformRow<Int>(dst.row(y), roi.width, work);
  }
}

template <class Int>
void trueDistance(Rows<const uint8_t> src, Rows<float> dst, RoiSize roi, Carver work) {
  for (int y = 0; y < roi.height; ++y) lookUp(src.row(y), y > 0 ? dst.row(y - 1) : nullptr, dst.row(y), roi.width);
  for (int y = roi.height - 2; y >= 0; --y) lookDown(dst.row(y + 1), dst.row(y), roi.width);
  if (roi.width >= NearbySearch::kLeastWidth) return searchRows<Int>(dst, roi, work);
  for (int y = 0; y < roi.height; ++y) transformRow<Int>(dst.row(y), roi.width, work);
}

// With both sides below this, w^2 + h^2 fits 31 bits. Beyond 46340, the square of one alone does not.
constexpr int kSmallSide = 1 << 15;

}  // namespace
}  // namespace zvp::distance

using namespace zvp;
using namespace zvp::distance;

Status zvpiTrueDistanceTransform_8u32f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                           uint8_t* pBuffer) {
  const Rows src{pSrc, srcStep};
  const Rows dst{pDst, dstStep};
  if (Status s = firstFailure(nonNull(src, dst, pBuffer), nonEmpty(roiSize), rowsFit(roiSize.width, src),
                              rowsFit(roiSize.width, dst), wholeElements(dst)))
    return s;
  const bool small = simd::max(roiSize.width, roiSize.height) < kSmallSide;
  (small ? trueDistance<int32_t> : trueDistance<int64_t>)(src, dst, roiSize, Carver(pBuffer, workBytes(roiSize)));
  return StatusOk;
}

Status zvpiTrueDistanceTransformGetBufferSize_8u32f_C1R(RoiSize roiSize, int* pBufferSize) {
  return reportSize(firstFailure(nonNull(pBufferSize), nonEmpty(roiSize)), workBytes(roiSize), pBufferSize);
}
