// What an optical-flow state holds, and how its working memory is laid out.
#pragma once

#include <stdint.h>

#include "core/carver.h"
#include "core/rows.h"
#include "zvpcv/pyramid.h"

struct OpticalFlowState {
  int32_t width, height;  // of the largest level
  int32_t bufferCount;    // this, the type, a reserved word and the hint are written and not read
  int32_t dataType;
  int32_t reserved;
  int32_t hint;
  int32_t winSize;
  uint8_t* buffer;
};

namespace zvp::flow {

// Bytes of working memory.
Bytes workingMemory(RoiSize largest, int winSize);

// The samples of one window. Rows are padded with zeros to `stride` samples and the window to an even number of rows:
// padding adds nothing to any sum.
struct Windows {
  static constexpr int kColumns = 8;

  float *previous, *next;
  float *singleDx, *singleDy;  // as they are sampled
  double *dx, *dy;
  int stride, rows;

  Windows(int winSize, Carver& memory)
      : stride(static_cast<int>(roundUp(winSize, kColumns))), rows(static_cast<int>(roundUp(winSize, 2))) {
    previous = memory.take<float>(samples(), kAlignment);
    next = memory.take<float>(samples(), kAlignment);
    singleDx = memory.take<float>(samples(), kAlignment);
    singleDy = memory.take<float>(samples(), kAlignment);
    dx = memory.take<double>(samples(), kAlignment);
    dy = memory.take<double>(samples(), kAlignment);
  }

  int samples() const { return stride * rows; }  // of 31 bits, as their bytes
  Rows<float> rowsOf(float* window) const { return {window, stride * int{sizeof(float)}}; }

 private:
  static constexpr size_t kAlignment = 64;
};

// The derivatives of a level, rows without gaps.
struct Derivatives {
  float *dx, *dy;

  Derivatives(RoiSize largest, Carver& memory) {
    const Bytes pixels = Bytes(largest.width) * largest.height;
    dx = memory.take<float>(pixels, alignof(float));
    dy = memory.take<float>(pixels, alignof(float));
  }
};

}  // namespace zvp::flow
