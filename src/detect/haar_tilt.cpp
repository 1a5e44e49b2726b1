// Turns classifiers of an upright object into tilted ones.
#include "core/checks.h"
#include "detect/haar_object.h"

namespace zvp::detect {
namespace {

void tiltFeature(HaarFeature& feature, bool aboutTop) {
  Point(&c)[4] = feature.corners;
  const int64_t x = c[3].x, y = c[3].y, w = c[0].x - x, h = c[0].y - y;
  if (aboutTop) {
    setTiltedCorners(c, x, y, w, h);
  } else {
    const auto at = [](int64_t column, int64_t row) { return Point{int32_t(column), int32_t(row)}; };
    c[0] = at(x, y + h);
    c[1] = at(x - h, y);
    c[2] = at(x + w, y + h - w);
    c[3] = at(x + w - h, y - w);
  }
}

Status tilt(const uint8_t* mask, bool aboutTop, HaarClassifier* object) {
  if (Status s = nonNull(mask, object)) return s;
  if (object->flags & HaarClassifier::kTilted) return ErrBadArg;
  bool any = false;
  for (int k = 0; k < object->classifiers; ++k) any = any || mask[k] != 0;
  HaarRecord* records = object->records();
  for (int r = 0; r < object->classifiers; ++r) {
    HaarRecord& record = records[r];
    if (mask[record.tag >> HaarRecord::kPositionShift] == 0) continue;
    record.tag = HaarRecord::kTilted;  // its position is not kept
    HaarFeature* features = record.firstFeature.get(object);
    for (int i = 0; i < record.features; ++i) tiltFeature(features[i], aboutTop);
  }
  if (any) object->flags |= HaarClassifier::kTilted;
  return StatusOk;
}

}  // namespace
}  // namespace zvp::detect

Status zvpiTiltHaarFeatures_32f(const uint8_t* pMask, int flag, HaarClassifier* pState) {
  return zvp::detect::tilt(pMask, flag != 0, pState);
}

Status zvpiTiltHaarFeatures_32s(const uint8_t* pMask, int flag, HaarClassifier* pState) {
  return zvp::detect::tilt(pMask, flag != 0, pState);
}
