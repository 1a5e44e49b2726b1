// Builds, measures and releases classifier objects.
#include <algorithm>
#include <numeric>

#include "core/checks.h"
#include "core/memory.h"
#include "detect/haar_object.h"

namespace zvp {
namespace {

enum class Orientation { kUpright, kTilted };

// The caller's arrays; T is the type of the numbers.
template <class T>
struct Stage {
  const Rect* rects;
  const T *weights, *thresholds, *val1, *val2;
  const int* rectCounts;
  int length;
};

Status positiveCounts(const int* counts, int length) {
  return check(std::all_of(counts, counts + length, [](int n) { return n >= 1; }), ErrSize);
}

int64_t objectBytes(int64_t rects, int64_t length) {
  return int64_t{sizeof(HaarClassifier)} + length * int64_t{sizeof(HaarRecord)} + rects * int64_t{sizeof(HaarFeature)};
}

bool isValid(const Rect& r, Orientation orientation) {
  if (r.x < 0 || r.y < 0 || r.width < 1 || r.height < 1) return false;
  const int64_t right = int64_t{r.x} + r.width;
  const int64_t bottom = int64_t{r.y} + r.height + (orientation == Orientation::kTilted ? r.width : 0);
  return right <= INT32_MAX && bottom <= INT32_MAX;
}

Rect bounds(const Rect* rects, int n) {
  if (n == 0) return {};
  Rect all = rects[0];
  for (int i = 1; i < n; ++i) {
    const Rect& r = rects[i];
    const int right = std::max(all.x + all.width, r.x + r.width), bottom = std::max(all.y + all.height, r.y + r.height);
    all.x = std::min(all.x, r.x);
    all.y = std::min(all.y, r.y);
    all.width = right - all.x;
    all.height = bottom - all.y;
  }
  return all;
}

void setCorners(Point (&c)[4], const Rect& r, Orientation orientation) {
  if (orientation == Orientation::kTilted) {
    setTiltedCorners(c, r.x, r.y, r.width, r.height);
  } else {
    c[0] = {r.x + r.width, r.y + r.height};
    c[1] = {r.x, r.y + r.height};
    c[2] = {r.x + r.width, r.y};
    c[3] = {r.x, r.y};
  }
}

// Records are grouped by their number of rectangles: two, three, any other.
int group(int rectCount) { return rectCount == 2 ? 0 : rectCount == 3 ? 1 : 2; }

template <class T>
void fillRecords(HaarClassifier* object, const Stage<T>& stage, Orientation orientation) {
  HaarRecord* record = object->records();
  HaarFeature* feature = object->allFeatures();
  for (int g = 0; g < 3; ++g) {
    const Rect* rect = stage.rects;
    const T* weight = stage.weights;
    for (int k = 0; k < stage.length; rect += stage.rectCounts[k], weight += stage.rectCounts[k], ++k) {
      if (group(stage.rectCounts[k]) != g) continue;
      record->features = stage.rectCounts[k];
      record->firstFeature.set(object, feature);
      record->threshold = number(stage.thresholds[k]);
      record->val1 = number(stage.val1[k]);
      record->val2 = number(stage.val2[k]);
      record->tag = static_cast<uint32_t>(k) << HaarRecord::kPositionShift;
      if (orientation == Orientation::kTilted) record->tag |= HaarRecord::kTilted;
      ++record;
      for (int i = 0; i < stage.rectCounts[k]; ++i, ++feature) {
        setCorners(feature->corners, rect[i], orientation);
        feature->weight = number(weight[i]);
      }
    }
  }
}

template <class T>
Status build(HaarClassifier** state, const Stage<T>& stage, Orientation orientation) {
  if (Status s = firstFailure(nonNull(state), nonNull(stage.rects, stage.rectCounts),
                              nonNull(stage.weights, stage.thresholds, stage.val1, stage.val2),
                              check(stage.length >= 0, ErrSize)))
    return s;
  if (Status s = positiveCounts(stage.rectCounts, stage.length)) return s;
  const int64_t rects = std::accumulate(stage.rectCounts, stage.rectCounts + stage.length, int64_t{0});
  if (rects > INT32_MAX || objectBytes(rects, stage.length) > INT32_MAX) return ErrNoMemory;
  const auto valid = [orientation](const Rect& r) { return isValid(r, orientation); };
  if (!std::all_of(stage.rects, stage.rects + rects, valid)) return ErrBadArg;

  auto* object = static_cast<HaarClassifier*>(allocBytes(static_cast<int32_t>(objectBytes(rects, stage.length))));
  if (object == nullptr) return ErrNoMemory;
  *object = {};
  object->classifiers = stage.length;
  object->features = static_cast<int32_t>(rects);
  object->firstRecord.set(object, reinterpret_cast<HaarRecord*>(object + 1));
  object->bounds = bounds(stage.rects, object->features);
  object->flags = orientation == Orientation::kTilted ? HaarClassifier::kTilted : 0;
  object->twoRectangleClassifiers =
      static_cast<int32_t>(std::count(stage.rectCounts, stage.rectCounts + stage.length, 2));
  fillRecords(object, stage, orientation);
  *state = object;
  return StatusOk;
}

Status extent(HaarClassifier* object, RoiSize* size) {
  if (Status s = nonNull(object, size)) return s;
  RoiSize largest = {0, 0};
  const HaarFeature* features = object->allFeatures();
  for (int i = 0; i < object->features; ++i) {
    for (const Point& corner : features[i].corners) {
      largest.width = std::max(largest.width, corner.x);
      largest.height = std::max(largest.height, corner.y);
    }
  }
  *size = largest;
  return StatusOk;
}

// Of no object, too.
Status releaseAny(HaarClassifier* object) {
  releaseMemory(object);
  return StatusOk;
}

}  // namespace
}  // namespace zvp

using zvp::Orientation, zvp::Stage;

Status zvpiHaarClassifierInitAlloc_32f(HaarClassifier** pState, const Rect* pFeature, const float* pWeight,
                                       const float* pThreshold, const float* pVal1, const float* pVal2, const int* pNum,
                                       int length) {
  const Stage<float> stage{pFeature, pWeight, pThreshold, pVal1, pVal2, pNum, length};
  return zvp::build(pState, stage, Orientation::kUpright);
}

Status zvpiHaarClassifierInitAlloc_32s(HaarClassifier** pState, const Rect* pFeature, const int32_t* pWeight,
                                       const int32_t* pThreshold, const int32_t* pVal1, const int32_t* pVal2,
                                       const int* pNum, int length) {
  const Stage<int32_t> stage{pFeature, pWeight, pThreshold, pVal1, pVal2, pNum, length};
  return zvp::build(pState, stage, Orientation::kUpright);
}

Status zvpiTiltedHaarClassifierInitAlloc_32f(HaarClassifier** pState, const Rect* pFeature, const float* pWeight,
                                             const float* pThreshold, const float* pVal1, const float* pVal2,
                                             const int* pNum, int length) {
  const Stage<float> stage{pFeature, pWeight, pThreshold, pVal1, pVal2, pNum, length};
  return zvp::build(pState, stage, Orientation::kTilted);
}

Status zvpiTiltedHaarClassifierInitAlloc_32s(HaarClassifier** pState, const Rect* pFeature, const int32_t* pWeight,
                                             const int32_t* pThreshold, const int32_t* pVal1, const int32_t* pVal2,
                                             const int* pNum, int length) {
  const Stage<int32_t> stage{pFeature, pWeight, pThreshold, pVal1, pVal2, pNum, length};
  return zvp::build(pState, stage, Orientation::kTilted);
}

Status zvpiHaarClassifierFree_32f(HaarClassifier* pState) { return zvp::releaseAny(pState); }
Status zvpiHaarClassifierFree_32s(HaarClassifier* pState) { return zvp::releaseAny(pState); }

Status zvpiGetHaarClassifierSize_32f(HaarClassifier* pState, RoiSize* pSize) { return zvp::extent(pState, pSize); }
Status zvpiGetHaarClassifierSize_32s(HaarClassifier* pState, RoiSize* pSize) { return zvp::extent(pState, pSize); }
