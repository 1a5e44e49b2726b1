// Optical-flow states: made and released.
#include "pyramid/optical_flow_state.h"

#include <algorithm>

#include "core/checks.h"
#include "core/memory.h"
#include "zvpcv/filter.h"

namespace zvp {
namespace {

constexpr int32_t kNoBlock = 0;

double derivativeBytes(RoiSize padded) {
  int horizontal = 0, vertical = 0;
  if (zvpiFilterScharrHorizBorderGetBufferSize_32f_C1R(padded, &horizontal) != StatusOk) return INT32_MAX;
  zvpiFilterScharrVertBorderGetBufferSize_32f_C1R(padded, &vertical);
  return std::max(horizontal, vertical);
}

// Bytes of working memory, or kNoBlock where 31 bits cannot hold them. In double precision nothing wraps.
int32_t workingMemory(RoiSize roi, int winSize) {
  constexpr int kPadding = 5;
  if (roi.width > INT32_MAX - kPadding || roi.height > INT32_MAX - kPadding) return kNoBlock;
  const RoiSize padded{roi.width + kPadding, roi.height + kPadding};
  const double side = double(winSize) + 3, images = 2.0 * padded.width * padded.height;
  const double bytes = (12 * side * side + derivativeBytes(padded) + images) * 4 + 36;
  return bytes > INT32_MAX ? kNoBlock : static_cast<int32_t>(bytes);
}

Status initAlloc(OpticalFlowState** state, RoiSize roi, int winSize, int hint, DataType type) {
  if (Status s = firstFailure(nonNull(state), check(winSize >= 1, ErrSize), nonEmpty(roi))) return s;
  auto* made = static_cast<OpticalFlowState*>(allocBytes(sizeof(OpticalFlowState)));
  if (made == nullptr) return ErrNoMemory;
  auto* buffer = static_cast<uint8_t*>(allocBytes(workingMemory(roi, winSize)));
  if (buffer == nullptr) {
    releaseMemory(made);
    return ErrNoMemory;
  }
  constexpr int32_t kBuffers = 1, kReserved = 0;
  *made = {roi.width, roi.height, kBuffers, type, kReserved, hint, winSize, buffer};
  *state = made;
  return StatusOk;
}

Status releaseState(OpticalFlowState* state) {
  if (Status s = nonNull(state)) return s;
  releaseMemory(state->buffer);
  return release(state);
}

}  // namespace
}  // namespace zvp

#define FLOW_STATE(name, type)                                                                                      \
  Status zvpiOpticalFlowPyrLKInitAlloc_##name(OpticalFlowState** ppState, RoiSize roiSize, int winSize, int hint) { \
    return zvp::initAlloc(ppState, roiSize, winSize, hint, type);                                                   \
  }                                                                                                                 \
  Status zvpiOpticalFlowPyrLKFree_##name(OpticalFlowState* pState) { return zvp::releaseState(pState); }
FLOW_STATE(8u_C1R, DataType8u)
FLOW_STATE(16u_C1R, DataType16u)
FLOW_STATE(32f_C1R, DataType32f)
