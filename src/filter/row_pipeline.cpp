// Filters the rows of an image with a one-dimensional kernel.
#include "core/checks.h"
#include "core/query.h"
#include "core/rows.h"
#include "filter/border.h"
#include "filter/sums.h"
#include "zvpcv/filter.h"

namespace zvp::filter {
namespace {

struct Kernel {
  int size, anchor;
};

// One copy of this code serves every number of channels.
template <class Arithmetic, class Source, class Out>
[[gnu::noinline]] void filterInner(const Arithmetic& arithmetic, Source source, ptrdiff_t n, Out* out) {
  innerOutputs(arithmetic, source, n, out);
}

// One call's image side: everything but the arithmetic.
template <int channels, class T, class Out>
struct RowCall {
  Rows<const T> src;
  Out** dst;
  RoiSize roi;
  Kernel kernel;
  BorderType borderType;
  const T* borderValue;
  T* line;  // work memory: 2 x kernel.size pixels

  template <class Tap>
  Status checkArguments(const Tap* taps, int divisor) const {
    return firstFailure(nonNull(src, dst, taps, line), nonEmpty(roi), check(kernel.size >= 1, ErrSize),
                        check(kernel.anchor >= 0 && kernel.anchor < kernel.size, ErrAnchor),
                        rowsFit(int64_t{roi.width} * channels, src), wholeElements(src),
                        check(borderType >= BorderConstant && borderType <= BorderReflectEdge, ErrBadArg),
                        check(borderValue != nullptr || borderType != BorderConstant, ErrNullPtr),
                        check(divisor != 0, ErrBadArg));
  }

  template <class Arithmetic>
  Status run(const Arithmetic& arithmetic) const {
    for (int y = 0; y < roi.height; ++y) {
      Out* const out = simd::load<Out*>(dst + y);
      if (out == nullptr) return ErrNullPtr;
      filterRow(arithmetic, src.row(y), out);
    }
    return StatusOk;
  }

 private:
  // Outputs left of `left` and from `right` on meet the border.
  template <class Arithmetic>
  void filterRow(const Arithmetic& arithmetic, const T* row, Out* out) const {
    const int reach = kernel.size - 1 - kernel.anchor, width = roi.width;
    const int left = kernel.anchor < width ? kernel.anchor : width;
    const int right = left < width - reach ? width - reach : left;
    filterEnds(arithmetic, row, out, 0, left);
    const Along<T> source{row + ptrdiff_t{left - kernel.anchor} * channels, channels};
    filterInner(arithmetic, source, ptrdiff_t{right - left} * channels, out + ptrdiff_t{left} * channels);
    filterEnds(arithmetic, row, out, right, width);
  }

  template <class Arithmetic>
  void filterEnds(const Arithmetic& arithmetic, const T* row, Out* out, int begin, int end) const {
    if (begin == end) return;
    const int64_t first = int64_t{begin} - kernel.anchor;
    extendRow<channels>(row, roi.width, horizontalBorder(borderType), borderValue, first,
                        int64_t{end} - begin + kernel.size - 1, line);
    endOutputs(arithmetic, Along<T>{line, channels}, 0, ptrdiff_t{end - begin} * channels,
               out + ptrdiff_t{begin} * channels);
  }
};

template <int channels, class T>
Status filterRows(const RowCall<channels, T, int16_t>& call, const int16_t* taps, int divisor) {
  if (Status s = call.checkArguments(taps, divisor)) return s;
  return withKernelSize(call.kernel.size, [&]<int K>() {
    return withIntegerSums<T, K>(taps, call.kernel.size, divisor, [&](const auto& sums) { return call.run(sums); });
  });
}

template <int channels>
Status filterRowsLow(const RowCall<channels, int16_t, int16_t>& call, const int16_t* taps, int divisor) {
  if (Status s = call.checkArguments(taps, divisor)) return s;
  return withKernelSize(call.kernel.size, [&]<int K>() {
    return withLowSums<K>(taps, call.kernel.size, divisor, [&](const auto& sums) { return call.run(sums); });
  });
}

template <int channels>
Status filterRowsFloat(const RowCall<channels, float, float>& call, const float* taps) {
  constexpr int kNoDivisor = 1;
  if (Status s = call.checkArguments(taps, kNoDivisor)) return s;
  return withKernelSize(call.kernel.size, [&]<int K>() {
    return withFloatSums<K>(taps, call.kernel.size, [&](const auto& sums) { return call.run(sums); });
  });
}

// The pixel of the constant border, by value or by address; both live as long as the call.
template <class T>
const T* pixelAt(const T& value) {
  return &value;
}
template <class T>
const T* pixelAt(const T* values) {
  return values;
}

template <int channels, class T, class Out>
RowCall<channels, T, Out> rowCall(const T* src, int srcStep, Out** dst, RoiSize roi, int kernelSize, int xAnchor,
                                  BorderType borderType, const T* borderValue, uint8_t* buffer) {
  return {{src, srcStep}, dst, roi, {kernelSize, xAnchor}, borderType, borderValue, reinterpret_cast<T*>(buffer)};
}

// The published sizes are a multiple of the taps and a constant.
Status bufferSize(RoiSize roi, int kernelSize, int bytesPerTap, int bytes, int* size) {
  return reportSize(firstFailure(nonNull(size), nonEmpty(roi), check(kernelSize >= 1, ErrSize)),
                    Bytes(bytesPerTap) * kernelSize + bytes, size);
}

}  // namespace
}  // namespace zvp::filter

using namespace zvp::filter;

// Channels, routine, type of the pixels and of the border value of a member.
#define ZVP_ROW_PIPELINE(name, channels, routine, T, Value)                                                         \
  Status name(const T* pSrc, int srcStep, int16_t** ppDst, RoiSize roiSize, const int16_t* pKernel, int kernelSize, \
              int xAnchor, BorderType borderType, Value borderValue, int divisor, uint8_t* pBuffer) {               \
    return routine(rowCall<channels>(pSrc, srcStep, ppDst, roiSize, kernelSize, xAnchor, borderType,                \
                                     pixelAt(borderValue), pBuffer),                                                \
                   pKernel, divisor);                                                                               \
  }
ZVP_ROW_PIPELINE(zvpiFilterRowBorderPipeline_16s_C1R, 1, filterRows, int16_t, int16_t)
ZVP_ROW_PIPELINE(zvpiFilterRowBorderPipeline_16s_C3R, 3, filterRows, int16_t, const int16_t*)
ZVP_ROW_PIPELINE(zvpiFilterRowBorderPipeline_Low_16s_C1R, 1, filterRowsLow, int16_t, int16_t)
ZVP_ROW_PIPELINE(zvpiFilterRowBorderPipeline_Low_16s_C3R, 3, filterRowsLow, int16_t, const int16_t*)
ZVP_ROW_PIPELINE(zvpiFilterRowBorderPipeline_8u16s_C1R, 1, filterRows, uint8_t, uint8_t)
ZVP_ROW_PIPELINE(zvpiFilterRowBorderPipeline_8u16s_C3R, 3, filterRows, uint8_t, const uint8_t*)

#define ZVP_ROW_PIPELINE_FLOAT(name, channels, Value)                                                               \
  Status name(const float* pSrc, int srcStep, float** ppDst, RoiSize roiSize, const float* pKernel, int kernelSize, \
              int xAnchor, BorderType borderType, Value borderValue, uint8_t* pBuffer) {                            \
    return filterRowsFloat(rowCall<channels>(pSrc, srcStep, ppDst, roiSize, kernelSize, xAnchor, borderType,        \
                                             pixelAt(borderValue), pBuffer),                                        \
                           pKernel);                                                                                \
  }
ZVP_ROW_PIPELINE_FLOAT(zvpiFilterRowBorderPipeline_32f_C1R, 1, float)
ZVP_ROW_PIPELINE_FLOAT(zvpiFilterRowBorderPipeline_32f_C3R, 3, const float*)

#define ZVP_ROW_BUFFER_SIZE(name, bytesPerTap, bytes)                        \
  Status name(RoiSize roiSize, int kernelSize, int* pBufferSize) {           \
    return bufferSize(roiSize, kernelSize, bytesPerTap, bytes, pBufferSize); \
  }
ZVP_ROW_BUFFER_SIZE(zvpiFilterRowBorderPipelineGetBufferSize_16s_C1R, 48, 112)
ZVP_ROW_BUFFER_SIZE(zvpiFilterRowBorderPipelineGetBufferSize_16s_C3R, 40, 96)
ZVP_ROW_BUFFER_SIZE(zvpiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R, 24, 96)
ZVP_ROW_BUFFER_SIZE(zvpiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R, 208, 96)
ZVP_ROW_BUFFER_SIZE(zvpiFilterRowBorderPipelineGetBufferSize_8u16s_C1R, 36, 144)
ZVP_ROW_BUFFER_SIZE(zvpiFilterRowBorderPipelineGetBufferSize_8u16s_C3R, 60, 144)
ZVP_ROW_BUFFER_SIZE(zvpiFilterRowBorderPipelineGetBufferSize_32f_C1R, 64, 96)
ZVP_ROW_BUFFER_SIZE(zvpiFilterRowBorderPipelineGetBufferSize_32f_C3R, 192, 64)
