// Builds, measures and releases classifier objects.
#include <algorithm>

#include "core/checks.h"
#include "core/memory.h"
#include "detect/haar_object.h"

namespace zvp::detect {
namespace {

enum class Orientation { kUpright, kTilted };

// The caller's arrays; T is the type of the numbers.
template <class T>
struct Stage {
  Array<Rect> rects;
  Array<T> weights, thresholds, val1, val2;
  Array<int> rectCounts;
  int length;
};

template <class F>
bool allOf(int64_t count, F holds) {
  for (int64_t i = 0; i < count; ++i)
    if (!holds(i)) return false;
  return true;
}

Bytes objectBytes(int64_t rects, int64_t length) {
  return int64_t{sizeof(HaarClassifier)} + Bytes(length) * int64_t{sizeof(HaarRecord)} +
         Bytes(rects) * int64_t{sizeof(HaarFeature)};
}

bool isValid(const Rect& r, Orientation orientation) {
  if (r.x < 0 || r.y < 0 || r.width < 1 || r.height < 1) return false;
  const int64_t right = int64_t{r.x} + r.width;
  const int64_t bottom = int64_t{r.y} + r.height + (orientation == Orientation::kTilted ? r.width : 0);
  return right <= INT32_MAX && bottom <= INT32_MAX;
}

Rect bounds(Array<Rect> rects, int n) {
  if (n == 0) return {};
  Rect all = rects[0];
  for (int i = 1; i < n; ++i) {
    const Rect r = rects[i];
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
constexpr int kGroups = 3;
int group(int rectCount) { return rectCount == 2 ? 0 : rectCount == 3 ? 1 : 2; }

template <class T>
void fillRecords(HaarClassifier* object, const Stage<T>& stage, Orientation orientation) {
  HaarRecord* record = object->records();
  HaarFeature* feature = object->allFeatures();
  for (int g = 0; g < kGroups; ++g) {
    int64_t first = 0;  // rectangle of classifier k
    for (int k = 0; k < stage.length; first += stage.rectCounts[k], ++k) {
      if (group(stage.rectCounts[k]) != g) continue;
      record->features = stage.rectCounts[k];
      record->firstFeature.set(object, feature);
      record->threshold = number(stage.thresholds[k]);
      record->val1 = number(stage.val1[k]);
      record->val2 = number(stage.val2[k]);
      record->tag = static_cast<uint32_t>(k) << HaarRecord::kPositionShift;
      if (orientation == Orientation::kTilted) record->tag |= HaarRecord::kTilted;
      for (int i = 0; i < record->features; ++i, ++feature) {
        setCorners(feature->corners, stage.rects[first + i], orientation);
        feature->weight = number(stage.weights[first + i]);
      }
      ++record;
    }
  }
}

template <class T>
Status build(HaarClassifier** state, const Stage<T>& stage, Orientation orientation) {
  if (Status s = firstFailure(
          nonNull(state, stage.rects, stage.rectCounts, stage.weights, stage.thresholds, stage.val1, stage.val2),
          check(stage.length >= 0, ErrSize)))
    return s;
  int64_t rects = 0;
  int32_t twoRectangleClassifiers = 0;
  for (int k = 0; k < stage.length; ++k) {
    if (stage.rectCounts[k] < 1) return ErrSize;
    rects += stage.rectCounts[k];
    twoRectangleClassifiers += stage.rectCounts[k] == 2 ? 1 : 0;
  }
  const Bytes bytes = objectBytes(rects, stage.length);
  if (!bytes.fit()) return ErrNoMemory;
  if (!allOf(rects, [&](int64_t i) { return isValid(stage.rects[i], orientation); })) return ErrBadArg;

  auto* object = static_cast<HaarClassifier*>(allocWords(bytes.value() / int{sizeof(int32_t)}));
  if (object == nullptr) return ErrNoMemory;
  *object = {};
  object->classifiers = stage.length;
  object->features = static_cast<int32_t>(rects);
  object->firstRecord.set(object, reinterpret_cast<HaarRecord*>(object + 1));
  object->bounds = bounds(stage.rects, object->features);
  object->flags = orientation == Orientation::kTilted ? HaarClassifier::kTilted : 0;
  object->twoRectangleClassifiers = twoRectangleClassifiers;
  fillRecords(object, stage, orientation);
  simd::store(state, object);
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
  simd::store(size, largest);
  return StatusOk;
}

// Of no object, too.
Status releaseAny(HaarClassifier* object) {
  releaseMemory(object);
  return StatusOk;
}

}  // namespace
}  // namespace zvp::detect

using namespace zvp::detect;

#define ZVP_INIT_ALLOC(name, T, orientation)                                                                        \
  Status name(HaarClassifier** pState, const Rect* pFeature, const T* pWeight, const T* pThreshold, const T* pVal1, \
              const T* pVal2, const int* pNum, int length) {                                                        \
    const Stage<T> stage{{pFeature}, {pWeight}, {pThreshold}, {pVal1}, {pVal2}, {pNum}, length};                    \
    return build(pState, stage, orientation);                                                                       \
  }
ZVP_INIT_ALLOC(zvpiHaarClassifierInitAlloc_32f, float, Orientation::kUpright)
ZVP_INIT_ALLOC(zvpiHaarClassifierInitAlloc_32s, int32_t, Orientation::kUpright)
ZVP_INIT_ALLOC(zvpiTiltedHaarClassifierInitAlloc_32f, float, Orientation::kTilted)
ZVP_INIT_ALLOC(zvpiTiltedHaarClassifierInitAlloc_32s, int32_t, Orientation::kTilted)

Status zvpiHaarClassifierFree_32f(HaarClassifier* pState) { return releaseAny(pState); }
Status zvpiHaarClassifierFree_32s(HaarClassifier* pState) { return releaseAny(pState); }

Status zvpiGetHaarClassifierSize_32f(HaarClassifier* pState, RoiSize* pSize) { return extent(pState, pSize); }
Status zvpiGetHaarClassifierSize_32s(HaarClassifier* pState, RoiSize* pSize) { return extent(pState, pSize); }
