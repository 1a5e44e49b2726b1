// The part of the engine that knows element types: functions on rows, which their callers see as bytes. Rows may have
// any alignment; n counts elements; inputs and outputs are apart.
#pragma once

#include "morph/region.h"

namespace zvp::morph {

enum Extremum { kMinimum, kMaximum };

struct Kernels {
  // Extrema over a run of a row, for the columns of the strip; add: and over what `out` held. `row` points to column 0,
  // `out` to the strip's first pixel.
  void (*run)(const RunColumns& columns, const uint8_t* row, bool add, uint8_t* out);
  // out[i] = extremum of row[i] and row[i + distance].
  void (*pair)(const uint8_t* row, int distance, uint8_t* out, int n);
  // out = extremum of `count` rows, the first of which may be out.
  void (*combine)(const uint8_t* const* rows, int count, uint8_t* out, int n);
  // outputs[g] = extremum of rows[g] ... rows[g + height - 1], for `count` outputs: 1, 2, 4 or 8, at most the height.
  void (*share)(const uint8_t* const* rows, int height, uint8_t* const* outputs, int count, int n);
  // out = a - b, saturated; out may be a or b.
  void (*subtract)(const uint8_t* a, const uint8_t* b, uint8_t* out, int n);
};

// By extremum; each type in a source of its own.
extern const Kernels kKernels8u[2], kKernels16u[2], kKernels16s[2], kKernels32f[2];

inline const Kernels& kernelsOf(Extremum extremum, DataType type) {
  switch (type) {
    case DataType16u:
      return kKernels16u[extremum];
    case DataType16s:
      return kKernels16s[extremum];
    case DataType32f:
      return kKernels32f[extremum];
    default:
      return kKernels8u[extremum];
  }
}

}  // namespace zvp::morph
