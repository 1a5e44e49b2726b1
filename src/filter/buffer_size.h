// What all queries of work memory share.
#pragma once

#include "core/checks.h"
#include "simd/simd.h"

namespace zvp {

inline Status bufferSize(RoiSize roi, int kernelSize, int64_t bytes, int* size) {
  if (Status s = firstFailure(nonNull(size), nonEmpty(roi), check(kernelSize >= 1 && bytes <= INT32_MAX, ErrSize)))
    return s;
  simd::store(size, static_cast<int>(bytes));
  return StatusOk;
}

}  // namespace zvp
