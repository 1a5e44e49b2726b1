// What an optical-flow state holds, and how its working memory is laid out.
#pragma once

#include <stdint.h>

#include "core/carver.h"
#include "core/rows.h"
#include "zvpcv/pyramid.h"

struct OpticalFlowState {
  int32_t width, height;  // of the largest level
  int32_t bufferCount;
  int32_t dataType;
  int32_t reserved;
  int32_t hint;
  int32_t winSize;
  uint8_t* buffer;
};

namespace zvp {

// The samples of one window. Rows are padded with zeros to `stride` samples and the window to an even number of rows:
// padding adds nothing to any sum.
struct FlowWindows {
  static constexpr int kColumns = 8;

  float *previous, *next;
  float *singleDx, *singleDy;  // as they are sampled
  double *dx, *dy;
  int stride, rows;

  FlowWindows(int winSize, Carver& memory)
      : stride((winSize + kColumns - 1) / kColumns * kColumns), rows((winSize + 1) / 2 * 2) {
    previous = memory.take<float>(samples(), kAlignment);
    next = memory.take<float>(samples(), kAlignment);
    singleDx = memory.take<float>(samples(), kAlignment);
    singleDy = memory.take<float>(samples(), kAlignment);
    dx = memory.take<double>(samples(), kAlignment);
    dy = memory.take<double>(samples(), kAlignment);
  }

  size_t samples() const { return static_cast<size_t>(stride) * static_cast<size_t>(rows); }
  Rows<float> rowsOf(float* window) const { return {window, stride * int{sizeof(float)}}; }

 private:
  static constexpr size_t kAlignment = 64;
};

// The derivatives of a level, rows without gaps.
struct FlowDerivatives {
  float *dx, *dy;

  FlowDerivatives(RoiSize largest, Carver& memory) {
    const size_t pixels = static_cast<size_t>(largest.width) * static_cast<size_t>(largest.height);
    dx = memory.take<float>(pixels, sizeof(float));
    dy = memory.take<float>(pixels, sizeof(float));
  }
};

}  // namespace zvp
