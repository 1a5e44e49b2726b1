// Filters an image across its rows, which the caller names one by one.
#include "core/checks.h"
#include "core/rows.h"
#include "filter/buffer_size.h"
#include "filter/sums.h"
#include "zvpcv/filter.h"

namespace zvp {
namespace {

// Rounded outputs come in blocks of this many columns; what is left of a row is its tail.
constexpr int kBlock = 4;

template <class T>
bool allNonNull(const T* const* rows, int64_t count) {
  for (int64_t i = 0; i < count; ++i) {
    if (rows[i] == nullptr) return false;
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
    if (Status s = firstFailure(nonNull(src), nonNull(dst), nonNull(taps), nonEmpty(roi),
                                check(kernelSize >= 1, ErrSize), rowsFit(int64_t{roi.width} * stepChannels, dst),
                                wholeElements(dst), nonNull(buffer), check(divisor != 0, ErrBadArg)))
      return s;
    return check(allNonNull(src, int64_t{roi.height} + kernelSize - 1), ErrNullPtr);
  }

  template <int K, class Arithmetic>
  Status run(const Arithmetic& arithmetic, bool tailIsAnEnd) const {
    const ptrdiff_t width = ptrdiff_t{roi.width} * channels;
    const ptrdiff_t inner = tailIsAnEnd ? width / kBlock * kBlock : width;
    for (int y = 0; y < roi.height; ++y) {
      const Across<T, K> source(src + y);
      Out* out = dst.row(y);
      innerOutputs(arithmetic, source, 0, inner, out);
      endOutputs(arithmetic, source, inner, width, out);
    }
    return StatusOk;
  }
};

template <class Out>
Status filterColumns(const ColumnCall<int16_t, Out>& call, const int16_t* taps, int divisor) {
  if (Status s = call.checkArguments(taps, divisor)) return s;
  return withKernelSize(call.kernelSize, [&]<int K>(std::integral_constant<int, K>) {
    return withIntegerSums<int16_t, K>(taps, call.kernelSize, divisor,
                                       [&](const auto& sums) { return call.template run<K>(sums, true); });
  });
}

Status filterColumnsLow(const ColumnCall<int16_t, int16_t>& call, const int16_t* taps, int divisor) {
  if (Status s = call.checkArguments(taps, divisor)) return s;
  return withKernelSize(call.kernelSize, [&]<int K>(std::integral_constant<int, K>) {
    return withLowSums<K>(taps, call.kernelSize, divisor,
                          [&](const auto& sums) { return call.template run<K>(sums, false); });
  });
}

Status filterColumnsFloat(const ColumnCall<float, float>& call, const float* taps) {
  constexpr int kNoDivisor = 1;
  if (Status s = call.checkArguments(taps, kNoDivisor)) return s;
  return withKernelSize(call.kernelSize, [&]<int K>(std::integral_constant<int, K>) {
    return withFloatSums<K>(taps, call.kernelSize, [&](const auto& sums) { return call.template run<K>(sums, false); });
  });
}

// The size of three rows of 32-bit values, each of whole blocks.
int64_t threeRows(RoiSize roi, int channels, int block) {
  const int64_t blocks = (int64_t{roi.width} + block - 1) / block;
  return blocks * block * 3 * 4 * channels;
}

}  // namespace
}  // namespace zvp

using zvp::bufferSize, zvp::ColumnCall, zvp::threeRows;

// A member: its name, channels, channels that dstStep must hold, routine and output type.
#define COLUMN_PIPELINE(name, channels, stepChannels, filter, Out)                                                \
  Status zvpiFilterColumnPipeline_##name(const int16_t** ppSrc, Out* pDst, int dstStep, RoiSize roiSize,          \
                                         const int16_t* pKernel, int kernelSize, int divisor, uint8_t* pBuffer) { \
    return zvp::filter(                                                                                           \
        ColumnCall<int16_t, Out>{ppSrc, {pDst, dstStep}, roiSize, channels, stepChannels, kernelSize, pBuffer},   \
        pKernel, divisor);                                                                                        \
  }
COLUMN_PIPELINE(16s_C1R, 1, 1, filterColumns, int16_t)
COLUMN_PIPELINE(16s_C3R, 3, 3, filterColumns, int16_t)
COLUMN_PIPELINE(16s8u_C1R, 1, 1, filterColumns, uint8_t)
COLUMN_PIPELINE(16s8u_C3R, 3, 3, filterColumns, uint8_t)
COLUMN_PIPELINE(16s8s_C1R, 1, 1, filterColumns, int8_t)
COLUMN_PIPELINE(16s8s_C3R, 3, 3, filterColumns, int8_t)
COLUMN_PIPELINE(Low_16s_C1R, 1, 1, filterColumnsLow, int16_t)
COLUMN_PIPELINE(Low_16s_C3R, 3, 1, filterColumnsLow, int16_t)

#define COLUMN_PIPELINE_FLOAT(name, channels)                                                                         \
  Status zvpiFilterColumnPipeline_##name(const float** ppSrc, float* pDst, int dstStep, RoiSize roiSize,              \
                                         const float* pKernel, int kernelSize, uint8_t* pBuffer) {                    \
    return zvp::filterColumnsFloat(                                                                                   \
        ColumnCall<float, float>{ppSrc, {pDst, dstStep}, roiSize, channels, channels, kernelSize, pBuffer}, pKernel); \
  }
COLUMN_PIPELINE_FLOAT(32f_C1R, 1)
COLUMN_PIPELINE_FLOAT(32f_C3R, 3)

#define COLUMN_BUFFER_SIZE(name, rowBytes, bytes)                                                          \
  Status zvpiFilterColumnPipelineGetBufferSize_##name(RoiSize roiSize, int kernelSize, int* pBufferSize) { \
    return bufferSize(roiSize, kernelSize, int64_t{rowBytes} + (bytes), pBufferSize);                      \
  }
COLUMN_BUFFER_SIZE(16s_C1R, threeRows(roiSize, 1, 4), 64)
COLUMN_BUFFER_SIZE(16s_C3R, threeRows(roiSize, 3, 4), 64)
COLUMN_BUFFER_SIZE(16s8u_C1R, threeRows(roiSize, 1, 4), 64)
COLUMN_BUFFER_SIZE(16s8u_C3R, threeRows(roiSize, 3, 4), 64)
COLUMN_BUFFER_SIZE(16s8s_C1R, threeRows(roiSize, 1, 4), 64)
COLUMN_BUFFER_SIZE(16s8s_C3R, threeRows(roiSize, 3, 4), 64)
COLUMN_BUFFER_SIZE(Low_16s_C1R, threeRows(roiSize, 1, 8), 64)
COLUMN_BUFFER_SIZE(Low_16s_C3R, threeRows(roiSize, 3, 8), 64)
COLUMN_BUFFER_SIZE(32f_C1R, 0, 32)
COLUMN_BUFFER_SIZE(32f_C3R, 0, 32)
