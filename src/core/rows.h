// Operands: every pointer-and-step pair becomes a Rows at the border and stays one.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "simd/loose.h"
#include "zvpcv/types.h"

namespace zvp {

template <class T>
struct Rows {
  T* data;
  int step;  // bytes

  // The offset is formed in pointer width.
  T* row(int64_t y) const {
    const auto offset = static_cast<uintptr_t>(y) * static_cast<uintptr_t>(intptr_t{step});
    return reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(data) + offset);
  }
};
template <class T>
Rows(T*, int) -> Rows<T>;

// A caller's array of numbers, at any alignment.
template <class T>
struct Array {
  const T* data;

  T operator[](int64_t i) const { return simd::load<T>(data + i); }
};
template <class T>
Array(const T*) -> Array<T>;

// Calls kernel(row of each operand..., n) from the top row to the bottom, for an operation on n elements a row each of
// which stands alone. Rows without gaps between them are one long row.
template <class Kernel, class... T>
inline void forEachRow(int height, int n, Kernel kernel, Rows<T>... rows) {
  const bool gapless = ((rows.step == int64_t{n} * int64_t{sizeof(T)}) && ...);
  if (gapless && int64_t{n} * height <= INT32_MAX) {
    n *= height;
    height = 1;
  }
  for (int y = 0; y < height; ++y) kernel(rows.row(y)..., n);
}

}  // namespace zvp
