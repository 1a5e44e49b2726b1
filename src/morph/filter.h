// Erosion (Op is Minimum) and dilation (Maximum) of a region. All arguments are valid, but for the mode of the element:
// with an unknown one nothing is written. `work` has the size of the element's work buffer.
#pragma once

#include "core/rows.h"
#include "morph/bits.h"
#include "morph/spec.h"

namespace zvp {

struct Minimum;
struct Maximum;

// What becomes of a result row: it is copied to dst, or its difference with another image's row is, saturated.
template <class T>
struct RowWriter {
  enum Kind { kCopy, kRowMinusOther, kOtherMinusRow };

  Rows<T> dst;
  Kind kind = kCopy;
  Rows<const T> other = {nullptr, 0};

  // n elements of row y, from element `first` on. dst may be other.
  void operator()(int64_t y, int64_t first, const T* row, int n) const;
};

// src may be dst (the same step), then the region is at most maxRoiWidth wide.
template <class Op, class T>
void filterRegion(Rows<const T> src, Rows<T> dst, RoiSize roi, BorderType border, const StructuringElement& element,
                  int channels, uint8_t* work);

// The same through a writer, whose dst may be src. `rows` is a second work buffer. The region is at most maxRoiWidth
// wide.
template <class Op, class T>
void filterThrough(Rows<const T> src, const RowWriter<T>& writer, RoiSize roi, BorderType border,
                   const StructuringElement& element, int channels, uint8_t* work, uint8_t* rows);

// src is not dst.
template <class Op>
void filterBits(BitRows<const uint8_t> src, BitRows<uint8_t> dst, RoiSize roi, BorderType border,
                const StructuringElement& element, uint8_t* work);

}  // namespace zvp
