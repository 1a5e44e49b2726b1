// Filters the rows of an image with a one-dimensional kernel.
#include "core/checks.h"
#include "core/rows.h"
#include "filter/border.h"
#include "filter/buffer_size.h"
#include "filter/sums.h"
#include "zvpcv/filter.h"

namespace zvp {
namespace {

struct Kernel {
  int size, anchor;
};

// One copy of this code serves every number of channels.
template <class Arithmetic, class Source, class Out>
[[gnu::noinline]] void filterInner(const Arithmetic& arithmetic, Source source, ptrdiff_t begin, ptrdiff_t end,
                                   Out* out) {
  innerOutputs(arithmetic, source, begin, end, out);
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
    return firstFailure(
        nonNull(src), nonNull(dst), nonNull(taps), nonNull(line), nonEmpty(roi), check(kernel.size >= 1, ErrSize),
        check(kernel.anchor >= 0 && kernel.anchor < kernel.size, ErrAnchor),
        rowsFit(int64_t{roi.width} * channels, src), wholeElements(src),
        check(borderType >= BorderConstant && borderType <= BorderReflectEdge, ErrBadArg),
        check(borderValue != nullptr || borderType != BorderConstant, ErrNullPtr), check(divisor != 0, ErrBadArg));
  }

  template <class Arithmetic>
  Status run(const Arithmetic& arithmetic) const {
    for (int y = 0; y < roi.height; ++y) {
      if (dst[y] == nullptr) return ErrNullPtr;
      filterRow(arithmetic, src.row(y), dst[y]);
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
    const Along<T> source{row - ptrdiff_t{kernel.anchor} * channels, channels};
    filterInner(arithmetic, source, ptrdiff_t{left} * channels, ptrdiff_t{right} * channels, out);
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
  return withKernelSize(call.kernel.size, [&]<int K>(std::integral_constant<int, K>) {
    return withIntegerSums<T, K>(taps, call.kernel.size, divisor, [&](const auto& sums) { return call.run(sums); });
  });
}

template <int channels>
Status filterRowsLow(const RowCall<channels, int16_t, int16_t>& call, const int16_t* taps, int divisor) {
  if (Status s = call.checkArguments(taps, divisor)) return s;
  return withKernelSize(call.kernel.size, [&]<int K>(std::integral_constant<int, K>) {
    return withLowSums<K>(taps, call.kernel.size, divisor, [&](const auto& sums) { return call.run(sums); });
  });
}

template <int channels>
Status filterRowsFloat(const RowCall<channels, float, float>& call, const float* taps) {
  constexpr int kNoDivisor = 1;
  if (Status s = call.checkArguments(taps, kNoDivisor)) return s;
  return withKernelSize(call.kernel.size, [&]<int K>(std::integral_constant<int, K>) {
    return withFloatSums<K>(taps, call.kernel.size, [&](const auto& sums) { return call.run(sums); });
  });
}

template <int channels, class T, class Out>
RowCall<channels, T, Out> rowCall(const T* src, int srcStep, Out** dst, RoiSize roi, int kernelSize, int xAnchor,
                                  BorderType borderType, const T* borderValue, uint8_t* buffer) {
  return {{src, srcStep}, dst, roi, {kernelSize, xAnchor}, borderType, borderValue, reinterpret_cast<T*>(buffer)};
}

}  // namespace
}  // namespace zvp

using zvp::bufferSize;

// A member: its name, channels, routine, element types, how borderValue is given and how its address is taken.
#define ROW_PIPELINE(name, channels, filter, T, Out, Value, address)                                                   \
  Status zvpiFilterRowBorderPipeline_##name(const T* pSrc, int srcStep, Out** ppDst, RoiSize roiSize,                  \
                                            const int16_t* pKernel, int kernelSize, int xAnchor,                       \
                                            BorderType borderType, Value borderValue, int divisor, uint8_t* pBuffer) { \
    return zvp::filter(zvp::rowCall<channels>(pSrc, srcStep, ppDst, roiSize, kernelSize, xAnchor, borderType,          \
                                              address borderValue, pBuffer),                                           \
                       pKernel, divisor);                                                                              \
  }
ROW_PIPELINE(16s_C1R, 1, filterRows, int16_t, int16_t, int16_t, &)
ROW_PIPELINE(16s_C3R, 3, filterRows, int16_t, int16_t, const int16_t*, )
ROW_PIPELINE(Low_16s_C1R, 1, filterRowsLow, int16_t, int16_t, int16_t, &)
ROW_PIPELINE(Low_16s_C3R, 3, filterRowsLow, int16_t, int16_t, const int16_t*, )
ROW_PIPELINE(8u16s_C1R, 1, filterRows, uint8_t, int16_t, uint8_t, &)
ROW_PIPELINE(8u16s_C3R, 3, filterRows, uint8_t, int16_t, const uint8_t*, )

#define ROW_PIPELINE_FLOAT(name, channels, Value, address)                                                             \
  Status zvpiFilterRowBorderPipeline_##name(const float* pSrc, int srcStep, float** ppDst, RoiSize roiSize,            \
                                            const float* pKernel, int kernelSize, int xAnchor, BorderType borderType,  \
                                            Value borderValue, uint8_t* pBuffer) {                                     \
    return zvp::filterRowsFloat(zvp::rowCall<channels>(pSrc, srcStep, ppDst, roiSize, kernelSize, xAnchor, borderType, \
                                                       address borderValue, pBuffer),                                  \
                                pKernel);                                                                              \
  }
ROW_PIPELINE_FLOAT(32f_C1R, 1, float, &)
ROW_PIPELINE_FLOAT(32f_C3R, 3, const float*, )

#define ROW_BUFFER_SIZE(name, bytesPerTap, bytes)                                                             \
  Status zvpiFilterRowBorderPipelineGetBufferSize_##name(RoiSize roiSize, int kernelSize, int* pBufferSize) { \
    return bufferSize(roiSize, kernelSize, int64_t{bytesPerTap} * kernelSize + (bytes), pBufferSize);         \
  }
ROW_BUFFER_SIZE(16s_C1R, 48, 112)
ROW_BUFFER_SIZE(16s_C3R, 40, 96)
ROW_BUFFER_SIZE(Low_16s_C1R, 24, 96)
ROW_BUFFER_SIZE(Low_16s_C3R, 208, 96)
ROW_BUFFER_SIZE(8u16s_C1R, 36, 144)
ROW_BUFFER_SIZE(8u16s_C3R, 60, 144)
ROW_BUFFER_SIZE(32f_C1R, 64, 96)
ROW_BUFFER_SIZE(32f_C3R, 192, 64)
