// Optical-flow states: made and released.
#include "pyramid/flow/state.h"

#include "core/checks.h"
#include "core/data_type.h"
#include "core/memory.h"
#include "filter/scharr.h"
#include "simd/loose.h"

namespace zvp::flow {

// Twelve words for each sample of a window and two for each pixel of a level, both with room around them, and the work
// memory of the derivatives in words.
Bytes workingMemory(RoiSize largest, int winSize) {
  constexpr int kWindowPadding = 3, kLevelPadding = 5, kWordsPerSample = 12, kWordsPerPixel = 2, kWord = 4, kRest = 36;
  const auto padded = [](int32_t n) { return Bytes(int64_t{n} + kLevelPadding).value(); };
  const RoiSize level{padded(largest.width), padded(largest.height)};
  const Bytes side = int64_t{winSize} + kWindowPadding;
  return (side * side * kWordsPerSample + filter::scharrBufferSize(level) +
          Bytes(level.width) * level.height * kWordsPerPixel) *
             kWord +
         kRest;
}

namespace {

template <class T>
Status initAlloc(OpticalFlowState** state, RoiSize roi, int winSize, int hint) {
  if (Status s = firstFailure(nonNull(state), check(winSize >= 1, ErrSize), nonEmpty(roi))) return s;
  auto* made = static_cast<OpticalFlowState*>(allocate(int64_t{sizeof(OpticalFlowState)}));
  if (made == nullptr) return ErrNoMemory;
  auto* buffer = static_cast<uint8_t*>(allocate(workingMemory(roi, winSize)));
  if (buffer == nullptr) {
    releaseMemory(made);
    return ErrNoMemory;
  }
  constexpr int32_t kBuffers = 1, kReserved = 0;
  *made = {roi.width, roi.height, kBuffers, kDataType<T>, kReserved, hint, winSize, buffer};
  simd::store(state, made);
  return StatusOk;
}

Status releaseState(OpticalFlowState* state) {
  if (Status s = nonNull(state)) return s;
  releaseMemory(state->buffer);
  return release(state);
}

}  // namespace
}  // namespace zvp::flow

#define ZVP_FLOW_INIT(NAME, T)                                                      \
  Status NAME(OpticalFlowState** ppState, RoiSize roiSize, int winSize, int hint) { \
    return zvp::flow::initAlloc<T>(ppState, roiSize, winSize, hint);                \
  }

ZVP_FLOW_INIT(zvpiOpticalFlowPyrLKInitAlloc_8u_C1R, uint8_t)
ZVP_FLOW_INIT(zvpiOpticalFlowPyrLKInitAlloc_16u_C1R, uint16_t)
ZVP_FLOW_INIT(zvpiOpticalFlowPyrLKInitAlloc_32f_C1R, float)

Status zvpiOpticalFlowPyrLKFree_8u_C1R(OpticalFlowState* pState) { return zvp::flow::releaseState(pState); }
Status zvpiOpticalFlowPyrLKFree_16u_C1R(OpticalFlowState* pState) { return zvp::flow::releaseState(pState); }
Status zvpiOpticalFlowPyrLKFree_32f_C1R(OpticalFlowState* pState) { return zvp::flow::releaseState(pState); }
