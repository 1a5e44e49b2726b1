// Speckle marking with runs instead of pixels. Each row is cut into runs of pixels that belong together; runs that
// connect across rows are united to regions; then the runs of small regions are overwritten.
#include <utility>

#include "core/query.h"
#include "segment/runs.h"
#include "zvpcv/segment.h"

namespace zvp::segment {
namespace {

template <class T>
void markRow(T* row, int width, T marker, int maxSize, Runs runs, int run, int end) {
  for (; run < end; ++run) {
    const int first = runs.regions.flatten(run);
    if (runs.regions.size(first) > maxSize) continue;
    const int start = runs.start(run), next = run + 1 < end ? runs.start(run + 1) : width;
    if (simd::load<T>(row + start) == marker) continue;  // also a -0, which stays
    for (int x = start; x < next; ++x) simd::store(row + x, marker);
  }
}

template <class T>
Status markSpeckles(Rows<T> image, RoiSize roi, T marker, int maxSize, T tolerance, int norm, uint8_t* buffer) {
  if (Status s = firstFailure(nonNull(image, buffer), nonEmpty(roi), check(norm == 1, ErrNorm))) return s;
  if (maxSize < 1) return StatusOk;
  const Rule<T> rule{marker, tolerance};
  const auto pixels = static_cast<size_t>(roi.width) * static_cast<size_t>(roi.height);
  const Runs runs(buffer, pixels);
  uint8_t* bits = buffer + Runs::kBytesPerRun * pixels;
  uint8_t* bitsAbove = bits + (static_cast<size_t>(roi.width) + 7) / 8;

  int count = cutRow(image.row(0), roi.width, rule, runs, 0, bits);
  for (int y = 1, above = 0; y < roi.height; ++y) {
    std::swap(bits, bitsAbove);
    const int begin = count;
    count = cutRow(image.row(y), roi.width, rule, runs, begin, bits);
    uniteRows<T>(image.row(y - 1), image.row(y), roi.width, rule, runs.regions, {above, bitsAbove}, {begin, bits});
    above = begin;
  }
  // A run at column 0 opens a row.
  for (int y = 0, run = 0; y < roi.height; ++y) {
    int end = run + 1;
    while (end < count && runs.start(end) != 0) ++end;
    markRow(image.row(y), roi.width, marker, maxSize, runs, run, end);
    run = end;
  }
  return StatusOk;
}

}  // namespace
}  // namespace zvp::segment

using namespace zvp;

Status zvpiMarkSpecklesGetBufferSize(RoiSize roiSize, DataType dataType, int numChannels, int* pBufferSize) {
  constexpr int kBytesPerPixel = 13;  // as documented; the runs and the bits of two rows take less
  const bool typeIsKnown =
      dataType == DataType8u || dataType == DataType16u || dataType == DataType16s || dataType == DataType32f;
  return reportSize(firstFailure(nonNull(pBufferSize), nonEmpty(roiSize), check(typeIsKnown, ErrDataType),
                                 check(numChannels == 1, ErrNumChannels)),
                    Bytes(roiSize.width) * roiSize.height * kBytesPerPixel, pBufferSize);
}

#define ZVP_MARK_SPECKLES(name, T)                                                                                   \
  Status name(T* pSrcDst, int srcDstStep, RoiSize roiSize, T speckleVal, int maxSpeckleSize, T maxPixDiff, int norm, \
              uint8_t* pBuffer) {                                                                                    \
    return segment::markSpeckles(Rows{pSrcDst, srcDstStep}, roiSize, speckleVal, maxSpeckleSize, maxPixDiff, norm,   \
                                 pBuffer);                                                                           \
  }

ZVP_MARK_SPECKLES(zvpiMarkSpeckles_8u_C1IR, uint8_t)
ZVP_MARK_SPECKLES(zvpiMarkSpeckles_16u_C1IR, uint16_t)
ZVP_MARK_SPECKLES(zvpiMarkSpeckles_16s_C1IR, int16_t)
ZVP_MARK_SPECKLES(zvpiMarkSpeckles_32f_C1IR, float)
