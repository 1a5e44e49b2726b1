// How functions report sizes of objects and work memory.
#pragma once

#include "core/bytes.h"
#include "core/checks.h"
#include "simd/loose.h"

namespace zvp {

// A size and where its caller wants it, which may have any alignment.
struct SizeReport {
  Bytes size;
  int* to;
};

// Stores all sizes, or none: with the status of the checks, or with ErrSize where a size is beyond 31 bits. The checks
// include those of the pointers; sizes may have been formed from arguments that fail them.
template <class... Report>
Status reportSizes(Status checks, Report... reports) {
  if (Status s = firstFailure(checks, check((reports.size.fit() && ...), ErrSize))) return s;
  (simd::store(reports.to, reports.size.value()), ...);
  return StatusOk;
}

inline Status reportSize(Status checks, Bytes size, int* to) { return reportSizes(checks, SizeReport{size, to}); }

}  // namespace zvp
