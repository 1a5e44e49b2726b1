// The classifier object: one block of 32-bit words, a header, the classifier records, the feature records.
#pragma once

#include <stdint.h>

#include <bit>

#include "core/link.h"
#include "zvpcv/detect.h"

namespace zvp::detect {

// A float or an int32_t, as the object's type says.
struct Number {
  uint32_t bits;

  template <class T>
  T as() const {
    return std::bit_cast<T>(bits);
  }
};

template <class T>
Number number(T value) {
  return {std::bit_cast<uint32_t>(value)};
}

struct HaarFeature {
  Point corners[4];  // in the order of the rectangle sum c0 - c1 - c2 + c3
  Number weight;
};
static_assert(sizeof(HaarFeature) == 36);

struct HaarRecord {
  int32_t features;
  Link<HaarFeature> firstFeature;
  Number threshold, val1, val2;
  uint32_t tag;  // position in the caller's arrays << 8; kTilted: evaluated on the tilted integral image

  static constexpr uint32_t kTilted = 1;
  static constexpr int kPositionShift = 8;
};
static_assert(sizeof(HaarRecord) == 24);

}  // namespace zvp::detect

struct HaarClassifier {
  int32_t classifiers;
  int32_t features;  // of all classifiers; their records stand in the order of the classifier records
  zvp::Link<zvp::detect::HaarRecord> firstRecord;
  Rect bounds;  // of all rectangles as the caller gave them
  uint32_t flags;
  int32_t twoRectangleClassifiers;
  uint32_t zero[2];
  uint32_t reserved;

  static constexpr uint32_t kTilted = 1;  // some features are tilted already

  zvp::detect::HaarRecord* records() { return firstRecord.get(this); }
  zvp::detect::HaarFeature* allFeatures() {
    return reinterpret_cast<zvp::detect::HaarFeature*>(records() + classifiers);
  }
};
static_assert(sizeof(HaarClassifier) == 48);

namespace zvp::detect {

// The rectangle turned by 45 degrees about its topmost corner (x, y).
inline void setTiltedCorners(Point (&c)[4], int64_t x, int64_t y, int64_t w, int64_t h) {
  const auto at = [](int64_t column, int64_t row) { return Point{int32_t(column), int32_t(row)}; };
  c[0] = at(x + w - h, y + h + w);
  c[1] = at(x - h, y + h);
  c[2] = at(x + w, y + w);
  c[3] = at(x, y);
}

}  // namespace zvp::detect
