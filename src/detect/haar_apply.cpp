// Evaluates a stage at the positions that a mask selects, adjacent positions side by side.
#include <algorithm>

#include "core/checks.h"
#include "core/memory.h"
#include "core/rows.h"
#include "detect/haar_object.h"
#include "simd/simd.h"

namespace zvp::detect {
namespace {

using simd::broadcast, simd::convert, simd::load, simd::Pack;

// --- The three arithmetics: how a rectangle sum, a classifier's decision and the stage's sum are formed ---------------

// Rectangle sums in single precision (Entry = float) or in 32-bit integers that wrap and are then converted.
template <class E>
struct FloatArithmetic {
  using Entry = E;
  using Norm = float;
  using Value = float;
  using Sum = float;
  static constexpr int lanes = simd::lanes<E>;

  template <int N>
  using Weighted = Pack<float, N>;

  template <int N>
  static ZVP_INLINE Weighted<N> weighted(Pack<E, N> rectSum, float weight) {
    if constexpr (std::is_same_v<E, float>) {
      return rectSum * weight;
    } else {
      return convert<float>(Pack<int32_t, N>(rectSum)) * weight;
    }
  }

  template <int N>
  ZVP_INLINE Pack<float, N> limit(Pack<float, N> norm, float threshold) const {
    return norm * threshold;
  }
};

// 64-bit integers that wrap, from 32-bit rectangle sums that wrap; the limit is scaled and rounded down.
struct ScaledArithmetic {
  using Entry = uint32_t;
  using Norm = int32_t;
  using Value = int32_t;
  using Sum = int64_t;
  static constexpr int lanes = std::max(4, simd::lanes<int64_t>);

  int scaleFactor;

  template <int N>
  using Weighted = Pack<uint64_t, N>;

  template <int N>
  static ZVP_INLINE Pack<uint64_t, N> product(Pack<int32_t, N> a, int32_t b) {
    return Pack<uint64_t, N>(simd::mulSigned32(convert<int64_t>(a), broadcast<int64_t, N>(b)));
  }

  template <int N>
  static ZVP_INLINE Weighted<N> weighted(Pack<uint32_t, N> rectSum, int32_t weight) {
    return product<N>(Pack<int32_t, N>(rectSum), weight);
  }

  template <int N>
  ZVP_INLINE Pack<uint64_t, N> limit(Pack<int32_t, N> norm, int32_t threshold) const {
    const Pack<uint64_t, N> p = product<N>(norm, threshold);
    if (scaleFactor >= 0) {  // an arithmetic shift, by a logical one of the value moved to 0..2^64 - 1
      constexpr uint64_t kOffset = uint64_t{1} << 63;
      const int shift = std::min(scaleFactor, 63);
      return ((p + kOffset) >> shift) - (kOffset >> shift);
    }
    return scaleFactor > -64 ? p << -scaleFactor : Pack<uint64_t, N>{};
  }
};

// --- Where the corners of a feature are ------------------------------------------------------------------------------

// One integral image; the offsets of all corners, feature by feature, stand in a table.
template <class Entry>
struct PlainCorners {
  Rows<const Entry> image;
  const ptrdiff_t* offsets;

  struct AtRow {
    const Entry* row;
    const ptrdiff_t* next;

    void startRecord(const HaarRecord&) {}
    template <int N>
    ZVP_INLINE Pack<Entry, N> rectSum(const HaarFeature&, int x) {
      const Entry* origin = row + x;
      const auto c = [&](int k) { return load<Pack<Entry, N>>(origin + next[k]); };
      const Pack<Entry, N> sum = c(0) - c(1) - c(2) + c(3);
      next += 4;
      return sum;
    }
  };

  AtRow atRow(int y) const { return {image.row(y), offsets}; }
};

// The upright and the tilted integral image; a record's tag says which.
template <class Entry>
struct MixedCorners {
  Rows<const Entry> upright, tilted;

  struct AtRow {
    const Entry *upright, *tilted;
    ptrdiff_t uprightStep, tiltedStep;  // entries
    const Entry* row;
    ptrdiff_t step;

    void startRecord(const HaarRecord& record) {
      const bool isTilted = (record.tag & HaarRecord::kTilted) != 0;
      row = isTilted ? tilted : upright;
      step = isTilted ? tiltedStep : uprightStep;
    }
    template <int N>
    ZVP_INLINE Pack<Entry, N> rectSum(const HaarFeature& feature, int x) const {
      const Entry* origin = row + x;
      const auto c = [&](int k) {
        return load<Pack<Entry, N>>(origin + (feature.corners[k].y * step + feature.corners[k].x));
      };
      return c(0) - c(1) - c(2) + c(3);
    }
  };

  AtRow atRow(int y) const {
    constexpr int kBytes = sizeof(Entry);
    return {upright.row(y), tilted.row(int64_t{y} + 1) + 1, upright.step / kBytes, tilted.step / kBytes, nullptr, 0};
  }
};

// --- Evaluation ------------------------------------------------------------------------------------------------------

template <class Arithmetic>
struct StageCall {
  Arithmetic arithmetic;
  HaarClassifier* stage;
  typename Arithmetic::Value threshold;
};

// The stage's sums at the positions x..x + N - 1 of a row.
template <int N, class A, class CornersAtRow>
ZVP_INLINE Pack<typename A::Sum, N> stageSums(const StageCall<A>& call, CornersAtRow corners,
                                              const typename A::Norm* normRow, int x) {
  using Value = typename A::Value;
  using Sum = typename A::Sum;
  const auto norm = load<Pack<typename A::Norm, N>>(normRow + x);
  const HaarRecord* record = call.stage->records();
  const HaarFeature* feature = call.stage->allFeatures();
  Pack<Sum, N> sum{};
  for (const HaarRecord* end = record + call.stage->classifiers; record != end; ++record) {
    corners.startRecord(*record);
    typename A::template Weighted<N> t{};
    for (const HaarFeature* last = feature + record->features; feature != last; ++feature)
      t += A::template weighted<N>(corners.template rectSum<N>(*feature, x), feature->weight.template as<Value>());
    const auto limit = call.arithmetic.template limit<N>(norm, record->threshold.template as<Value>());
    const auto val1 = broadcast<Sum, N>(record->val1.template as<Value>());
    const auto val2 = broadcast<Sum, N>(record->val2.template as<Value>());
    sum += Pack<Sum, N>(Pack<Sum, N>(limit) > Pack<Sum, N>(t) ? val1 : val2);
  }
  return sum;
}

// The first selected position from x on, or end.
int nextSelected(const uint8_t* mask, int x, int end) {
  constexpr int kBlock = sizeof(uint64_t);
  while (end - x >= kBlock && load<uint64_t>(mask + x) == 0) x += kBlock;
  while (x < end && mask[x] == 0) ++x;
  return x;
}

int endOfSelected(const uint8_t* mask, int begin, int end) {
  while (end > begin && mask[end - 1] == 0) --end;
  return end;
}

// Evaluates N positions from `from` on and clears the mask where the stage rejects; counts the positions from x on.
template <int N, class A, class CornersAtRow>
int judge(const StageCall<A>& call, CornersAtRow corners, const typename A::Norm* norm, uint8_t* mask, int from,
          int x) {
  using Sum = typename A::Sum;
  Sum sums[N];
  simd::store(sums, stageSums<N>(call, corners, norm, from));
  int positive = 0;
  for (int k = 0; k < N; ++k) {
    const bool rejected = Sum{call.threshold} > sums[k];
    mask[from + k] = rejected ? uint8_t{0} : mask[from + k];
    positive += from + k >= x && mask[from + k] != 0;
  }
  return positive;
}

// Not one of the shared walks, as it steps from one selected position to the next that is not settled yet. Entries are
// read between selected positions only: the last pack of a row ends at its last selected position, though
// it may begin among positions that are settled already.
template <class A, class CornersAtRow>
int64_t applyRow(const StageCall<A>& call, CornersAtRow corners, const typename A::Norm* norm, uint8_t* mask,
                 int width) {
  constexpr int N = A::lanes;
  const int begin = nextSelected(mask, 0, width), end = endOfSelected(mask, begin, width);
  int64_t positive = 0;
  for (int x = begin; x < end;) {
    if (end - begin >= N) {
      const int from = std::min(x, end - N);
      positive += judge<N>(call, corners, norm, mask, from, x);
      x = nextSelected(mask, from + N, end);
    } else {
      positive += judge<1>(call, corners, norm, mask, x, x);
      x = nextSelected(mask, x + 1, end);
    }
  }
  return positive;
}

template <class A, class Corners>
void applyStage(const StageCall<A>& call, const Corners& corners, Rows<const typename A::Norm> norm, Rows<uint8_t> mask,
                RoiSize roi, int* positiveCount) {
  int64_t positive = 0;
  for (int y = 0; y < roi.height; ++y)
    positive += applyRow(call, corners.atRow(y), norm.row(y), mask.row(y), roi.width);
  simd::store(positiveCount, static_cast<int>(positive));
}

// The offsets of all corners from a position's own entry, in the order of the feature records; null without memory.
ptrdiff_t* cornerOffsets(HaarClassifier* stage, int step) {
  const Bytes bytes =
      Bytes(stage->features) * int64_t{sizeof(HaarFeature::corners) / sizeof(Point) * sizeof(ptrdiff_t)};
  auto* offsets = static_cast<ptrdiff_t*>(allocate(bytes));
  if (offsets == nullptr) return nullptr;
  ptrdiff_t* next = offsets;
  const HaarFeature* features = stage->allFeatures();
  for (int i = 0; i < stage->features; ++i)
    for (const Point& corner : features[i].corners) *next++ = corner.y * ptrdiff_t{step} + corner.x;
  return offsets;
}

// --- The two families ------------------------------------------------------------------------------------------------

template <class Entry>
Rows<const Entry> asEntries(const void* data, int step) {
  return {static_cast<const Entry*>(data), step};
}

template <class A>
Status apply(Rows<const typename A::Entry> src, Rows<const typename A::Norm> norm, Rows<uint8_t> mask, RoiSize roi,
             int* positive, const StageCall<A>& call) {
  if (Status s = firstFailure(nonNull(src, norm, mask, positive, call.stage), nonEmpty(roi),
                              rowsFit(roi.width, src, norm, mask), wholeElements(src, norm)))
    return s;
  ptrdiff_t* offsets = cornerOffsets(call.stage, src.step / int{sizeof(typename A::Entry)});
  if (offsets == nullptr) return ErrNoMemory;
  applyStage(call, PlainCorners<typename A::Entry>{src, offsets}, norm, mask, roi, positive);
  releaseMemory(offsets);
  return StatusOk;
}

template <class A>
Status applyMixed(Rows<const typename A::Entry> src, Rows<const typename A::Entry> tilt,
                  Rows<const typename A::Norm> norm, Rows<uint8_t> mask, RoiSize roi, int* positive,
                  const StageCall<A>& call) {
  if (Status s = firstFailure(nonNull(src, tilt, norm, mask, positive, call.stage), nonEmpty(roi),
                              rowsFit(roi.width, src, tilt, norm, mask), wholeElements(src, tilt, norm)))
    return s;
  applyStage(call, MixedCorners<typename A::Entry>{src, tilt}, norm, mask, roi, positive);
  return StatusOk;
}

}  // namespace
}  // namespace zvp::detect

using namespace zvp::detect;
using zvp::Rows;
using FromFloats = FloatArithmetic<float>;
using FromIntegers = FloatArithmetic<uint32_t>;

#define ZVP_APPLY(name, T, Entry, Arithmetic)                                                                       \
  Status name(const T* pSrc, int srcStep, const float* pNorm, int normStep, uint8_t* pMask, int maskStep,           \
              RoiSize roiSize, int* pPositive, float threshold, HaarClassifier* pState) {                           \
    return apply(asEntries<Entry>(pSrc, srcStep), Rows{pNorm, normStep}, Rows{pMask, maskStep}, roiSize, pPositive, \
                 StageCall<Arithmetic>{{}, pState, threshold});                                                     \
  }
ZVP_APPLY(zvpiApplyHaarClassifier_32f_C1R, float, float, FromFloats)
ZVP_APPLY(zvpiApplyHaarClassifier_32s32f_C1R, int32_t, uint32_t, FromIntegers)

Status zvpiApplyHaarClassifier_32s_C1RSfs(const int32_t* pSrc, int srcStep, const int32_t* pNorm, int normStep,
                                          uint8_t* pMask, int maskStep, RoiSize roiSize, int* pPositive,
                                          int32_t threshold, HaarClassifier* pState, int scaleFactor) {
  return apply(asEntries<uint32_t>(pSrc, srcStep), Rows{pNorm, normStep}, Rows{pMask, maskStep}, roiSize, pPositive,
               StageCall<ScaledArithmetic>{{scaleFactor}, pState, threshold});
}

#define ZVP_APPLY_MIXED(name, T, Entry, Arithmetic)                                                              \
  Status name(const T* pSrc, int srcStep, const T* pTilt, int tiltStep, const float* pNorm, int normStep,        \
              uint8_t* pMask, int maskStep, RoiSize roiSize, int* pPositive, float threshold,                    \
              HaarClassifier* pState) {                                                                          \
    return applyMixed(asEntries<Entry>(pSrc, srcStep), asEntries<Entry>(pTilt, tiltStep), Rows{pNorm, normStep}, \
                      Rows{pMask, maskStep}, roiSize, pPositive, StageCall<Arithmetic>{{}, pState, threshold});  \
  }
ZVP_APPLY_MIXED(zvpiApplyMixedHaarClassifier_32f_C1R, float, float, FromFloats)
ZVP_APPLY_MIXED(zvpiApplyMixedHaarClassifier_32s32f_C1R, int32_t, uint32_t, FromIntegers)

Status zvpiApplyMixedHaarClassifier_32s_C1RSfs(const int32_t* pSrc, int srcStep, const int32_t* pTilt, int tiltStep,
                                               const int32_t* pNorm, int normStep, uint8_t* pMask, int maskStep,
                                               RoiSize roiSize, int* pPositive, int32_t threshold,
                                               HaarClassifier* pState, int scaleFactor) {
  return applyMixed(asEntries<uint32_t>(pSrc, srcStep), asEntries<uint32_t>(pTilt, tiltStep), Rows{pNorm, normStep},
                    Rows{pMask, maskStep}, roiSize, pPositive,
                    StageCall<ScaledArithmetic>{{scaleFactor}, pState, threshold});
}
