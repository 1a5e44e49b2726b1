// Filters an image across its rows, which the caller names one by one.
#include "core/checks.h"
#include "core/query.h"
#include "core/rows.h"
#include "filter/sums.h"
#include "zvpcv/filter.h"

namespace zvp::filter {
namespace {

// Rounded outputs come in blocks of this many columns; what is left of a row is its tail. The Low members have no tail;
// their published sizes count wider blocks.
constexpr int kBlock = 4, kLowBlock = 8;

template <class T>
bool allNonNull(const T* const* rows, int64_t count) {
  for (int64_t i = 0; i < count; ++i) {
    if (simd::load<const T*>(rows + i) == nullptr) return false;
  }
  return true;
}

// One call's image side: everything but the arithmetic. stepWidth is the number of values that dst's step must hold.
template <class T, class Out>
struct ColumnCall {
  const T* const* src;
  Rows<Out> dst;
  RoiSize roi;
  int channels, stepChannels;
  int kernelSize;
  const uint8_t* buffer;

  template <class Tap>
  Status checkArguments(const Tap* taps, int divisor) const {
    if (Status s = firstFailure(nonNull(src, dst, taps), nonEmpty(roi), check(kernelSize >= 1, ErrSize),
                                rowsFit(int64_t{roi.width} * stepChannels, dst), wholeElements(dst), nonNull(buffer),
                                check(divisor != 0, ErrBadArg)))
      return s;
    return check(allNonNull(src, int64_t{roi.height} + kernelSize - 1), ErrNullPtr);
  }

  template <class Arithmetic>
  Status run(const Arithmetic& arithmetic, bool tailIsAnEnd) const {
    const ptrdiff_t width = ptrdiff_t{roi.width} * channels;
    const ptrdiff_t inner = tailIsAnEnd ? width / kBlock * kBlock : width;
    for (int y = 0; y < roi.height; ++y) {
      const Across<T, Arithmetic::kTaps> source(src + y);
      Out* out = dst.row(y);
      innerOutputs(arithmetic, source, inner, out);
      endOutputs(arithmetic, source, inner, width, out);
    }
    return StatusOk;
  }
};

template <class Out>
Status filterColumns(const ColumnCall<int16_t, Out>& call, const int16_t* taps, int divisor) {
  if (Status s = call.checkArguments(taps, divisor)) return s;
  return withKernelSize(call.kernelSize, [&]<int K>() {
    return withIntegerSums<int16_t, K>(taps, call.kernelSize, divisor,
                                       [&](const auto& sums) { return call.run(sums, true); });
  });
}

Status filterColumnsLow(const ColumnCall<int16_t, int16_t>& call, const int16_t* taps, int divisor) {
  if (Status s = call.checkArguments(taps, divisor)) return s;
  return withKernelSize(call.kernelSize, [&]<int K>() {
    return withLowSums<K>(taps, call.kernelSize, divisor, [&](const auto& sums) { return call.run(sums, false); });
  });
}

Status filterColumnsFloat(const ColumnCall<float, float>& call, const float* taps) {
  constexpr int kNoDivisor = 1;
  if (Status s = call.checkArguments(taps, kNoDivisor)) return s;
  return withKernelSize(call.kernelSize, [&]<int K>() {
    return withFloatSums<K>(taps, call.kernelSize, [&](const auto& sums) { return call.run(sums, false); });
  });
}

Status bufferSize(RoiSize roi, int kernelSize, Bytes bytes, int* size) {
  return reportSize(firstFailure(nonNull(size), nonEmpty(roi), check(kernelSize >= 1, ErrSize)), bytes, size);
}

// The published sizes: integer members, three rows of 32-bit numbers in whole blocks and room to align them; float
// members, that room alone.
constexpr int kRoomToAlignRows = 64, kRoomToAlign = 32;

Status rowsBufferSize(RoiSize roi, int channels, int block, int kernelSize, int* size) {
  constexpr int kRows = 3;
  const Bytes row = roundUp(Bytes(roi.width), block) * int64_t{sizeof(int32_t)} * channels;
  return bufferSize(roi, kernelSize, row * kRows + kRoomToAlignRows, size);
}

}  // namespace
}  // namespace zvp::filter

using namespace zvp::filter;

// Channels, channels that dstStep must hold, routine and output type of a member.
#define ZVP_COLUMN_PIPELINE(name, channels, stepChannels, routine, Out)                                               \
  Status name(const int16_t** ppSrc, Out* pDst, int dstStep, RoiSize roiSize, const int16_t* pKernel, int kernelSize, \
              int divisor, uint8_t* pBuffer) {                                                                        \
    return routine(                                                                                                   \
        ColumnCall<int16_t, Out>{ppSrc, {pDst, dstStep}, roiSize, channels, stepChannels, kernelSize, pBuffer},       \
        pKernel, divisor);                                                                                            \
  }
ZVP_COLUMN_PIPELINE(zvpiFilterColumnPipeline_16s_C1R, 1, 1, filterColumns, int16_t)
ZVP_COLUMN_PIPELINE(zvpiFilterColumnPipeline_16s_C3R, 3, 3, filterColumns, int16_t)
ZVP_COLUMN_PIPELINE(zvpiFilterColumnPipeline_16s8u_C1R, 1, 1, filterColumns, uint8_t)
ZVP_COLUMN_PIPELINE(zvpiFilterColumnPipeline_16s8u_C3R, 3, 3, filterColumns, uint8_t)
ZVP_COLUMN_PIPELINE(zvpiFilterColumnPipeline_16s8s_C1R, 1, 1, filterColumns, int8_t)
ZVP_COLUMN_PIPELINE(zvpiFilterColumnPipeline_16s8s_C3R, 3, 3, filterColumns, int8_t)
ZVP_COLUMN_PIPELINE(zvpiFilterColumnPipeline_Low_16s_C1R, 1, 1, filterColumnsLow, int16_t)
ZVP_COLUMN_PIPELINE(zvpiFilterColumnPipeline_Low_16s_C3R, 3, 1, filterColumnsLow, int16_t)

#define ZVP_COLUMN_PIPELINE_FLOAT(name, channels)                                                                     \
  Status name(const float** ppSrc, float* pDst, int dstStep, RoiSize roiSize, const float* pKernel, int kernelSize,   \
              uint8_t* pBuffer) {                                                                                     \
    return filterColumnsFloat(                                                                                        \
        ColumnCall<float, float>{ppSrc, {pDst, dstStep}, roiSize, channels, channels, kernelSize, pBuffer}, pKernel); \
  }
ZVP_COLUMN_PIPELINE_FLOAT(zvpiFilterColumnPipeline_32f_C1R, 1)
ZVP_COLUMN_PIPELINE_FLOAT(zvpiFilterColumnPipeline_32f_C3R, 3)

#define ZVP_COLUMN_BUFFER_SIZE(name, channels, block)                         \
  Status name(RoiSize roiSize, int kernelSize, int* pBufferSize) {            \
    return rowsBufferSize(roiSize, channels, block, kernelSize, pBufferSize); \
  }
ZVP_COLUMN_BUFFER_SIZE(zvpiFilterColumnPipelineGetBufferSize_16s_C1R, 1, kBlock)
ZVP_COLUMN_BUFFER_SIZE(zvpiFilterColumnPipelineGetBufferSize_16s_C3R, 3, kBlock)
ZVP_COLUMN_BUFFER_SIZE(zvpiFilterColumnPipelineGetBufferSize_16s8u_C1R, 1, kBlock)
ZVP_COLUMN_BUFFER_SIZE(zvpiFilterColumnPipelineGetBufferSize_16s8u_C3R, 3, kBlock)
ZVP_COLUMN_BUFFER_SIZE(zvpiFilterColumnPipelineGetBufferSize_16s8s_C1R, 1, kBlock)
ZVP_COLUMN_BUFFER_SIZE(zvpiFilterColumnPipelineGetBufferSize_16s8s_C3R, 3, kBlock)
ZVP_COLUMN_BUFFER_SIZE(zvpiFilterColumnPipelineGetBufferSize_Low_16s_C1R, 1, kLowBlock)
ZVP_COLUMN_BUFFER_SIZE(zvpiFilterColumnPipelineGetBufferSize_Low_16s_C3R, 3, kLowBlock)

#define ZVP_COLUMN_BUFFER_SIZE_FLOAT(name)                             \
  Status name(RoiSize roiSize, int kernelSize, int* pBufferSize) {     \
    return bufferSize(roiSize, kernelSize, kRoomToAlign, pBufferSize); \
  }
ZVP_COLUMN_BUFFER_SIZE_FLOAT(zvpiFilterColumnPipelineGetBufferSize_32f_C1R)
ZVP_COLUMN_BUFFER_SIZE_FLOAT(zvpiFilterColumnPipelineGetBufferSize_32f_C3R)
