// Row and column pipelines, derivatives.
#include <zvpcv/filter.h>

#include "calls/calls.h"

namespace zvp::calls {
namespace {

int someTaps(Call& c) { return c.in.oneIn(8) ? c.in.number(1, 100) : c.in.number(1, 9); }

std::string bufferSizeOf(const Call& c, std::string_view filter) {
  return "zvpi" + std::string(filter) + "GetBufferSize" + c.suffix();
}

// The size, and the kernel behind it.
void giveKernel(Call& c, RoiSize size, int taps) {
  c.give(size, kSize);
  c.array(taps);
  c.give(taps);
  c.rejects({0, -1, INT_MIN}, ErrSize, kAfterSize);
}
void giveDivisor(Call& c) {
  const int divisor = c.in.oneIn(2) ? c.in.number(-2, 20) : c.in.number(-1000000, 1000000);
  c.give(divisor != 0 || c.in.isWild() ? divisor : 1);
  c.rejects({0}, ErrBadArg);
}

void rows(Call& c) {
  const RoiSize size = c.in.size();
  const int taps = someTaps(c);
  if (taps > 100) return;  // no memory holds so many
  c.isFinite = true;
  c.image(size);
  c.rows(size.height, double(size.width) * c.channels());
  giveKernel(c, size, taps);
  c.number(0, std::max(taps, 1) - 1, ErrAnchor, kAfterSize + 1);
  const BorderType border = c.in.number(BorderConstant, c.in.isWild() ? 6 : BorderReflectEdge);
  c.give(border);
  c.rejects({5, 6, 7, 15, -1, 0x11, 0x41, 0xf0, 0x101}, ErrBadArg);
  if (c.next().depth == 0) {
    c.value();
  } else {
    c.array(3);
    c.mayBeNull();
    if (border == BorderConstant) c.rejects({nullptr}, ErrNullPtr);
  }
  if (!c.is("32f")) giveDivisor(c);
  c.scratch(c.bytesFrom(bufferSizeOf(c, "FilterRowBorderPipeline"), {size, taps}));
}

void columns(Call& c) {
  const RoiSize size = c.in.size();
  const int taps = someTaps(c);
  if (taps > 100 || size.width > 1000 || size.height > 100) return;  // no memory holds so many taps or rows
  const double width = double(size.width) * c.channels();
  c.isFinite = true;
  c.rows(double(size.height) + taps - 1, width);
  c.image(region(width, size.height), c.is("_Low_16s_C3R") ? size.width : width);
  giveKernel(c, size, taps);
  if (!c.is("32f")) giveDivisor(c);
  c.scratch(c.bytesFrom(bufferSizeOf(c, "FilterColumnPipeline"), {size, taps}));
  c.mayBeNull();
  c.rejects({nullptr}, ErrNullPtr, kStep + 5);
}

// 3x3 and 5x5 windows; the members without this argument have 3x3.
int someMask(Call& c) { return c.in.wildly(16) ? c.in.number(-60, 60) : c.in.oneIn(2) ? 33 : 55; }
void giveMask(Call& c, int mask) {
  c.give(mask);
  c.rejects({0, 3, 34, 44, 77, -33}, ErrMaskSize);
}

void windowQuery(Call& c) {
  c.give(c.in.size(), kSize);
  c.rejects({RoiSize{INT_MAX, 1}}, ErrSize, kLater + 9);
  giveMask(c, someMask(c));
  c.scalar();
}

void window(Call& c) {
  const RoiSize size = c.in.size();
  const bool hasMask = !c.is("Scharr");
  const int mask = hasMask ? someMask(c) : 33;
  const BorderType mode = c.in.number(BorderConstant, c.in.isWild() ? 6 : BorderReflectEdge);
  const BorderType border = c.in.oneIn(2)   ? mode
                            : c.in.oneIn(4) ? BorderInMemory
                                            : mode | int(c.in.integer(0, 15)) << 4;
  const auto inMemory = [&](int flag) {
    return (border & 15) == BorderInMemory || (border & flag) != 0 ? mask / 22 : 0;
  };
  const double left = inMemory(BorderLeftInMemory), top = inMemory(BorderTopInMemory);
  Spans spans;
  if (size.width > 0 && size.height > 0)
    addRegion(spans, {-left, -top}, size.width + left + inMemory(BorderRightInMemory),
              size.height + top + inMemory(BorderBottomInMemory));
  c.isFinite = true;
  c.image(spans, size.width);
  c.image(size);
  if (hasMask) c.rejects({c.argument(2)}, ErrInPlaceNotSupported, kLater + 50, 0);
  c.give(size, kSize);
  if (hasMask) giveMask(c, mask);
  c.give(border);
  c.rejects({5, 7, 15, -1, 0x15, 0x100, 0x8001, 0xf01}, ErrBadArg);
  c.value();
  const std::string query = std::string(c.name().substr(0, c.name().find('_'))) + "GetBufferSize" + c.suffix();
  c.scratch(hasMask ? c.bytesFrom(query, {size, mask}) : c.bytesFrom(query, {size}));
}

const Export kExports[] = {
    ZVP_EXPORT(query, zvpiFilterColumnPipelineGetBufferSize_16s8s_C1R),
    ZVP_EXPORT(query, zvpiFilterColumnPipelineGetBufferSize_16s8s_C3R),
    ZVP_EXPORT(query, zvpiFilterColumnPipelineGetBufferSize_16s8u_C1R),
    ZVP_EXPORT(query, zvpiFilterColumnPipelineGetBufferSize_16s8u_C3R),
    ZVP_EXPORT(query, zvpiFilterColumnPipelineGetBufferSize_16s_C1R),
    ZVP_EXPORT(query, zvpiFilterColumnPipelineGetBufferSize_16s_C3R),
    ZVP_EXPORT(query, zvpiFilterColumnPipelineGetBufferSize_32f_C1R),
    ZVP_EXPORT(query, zvpiFilterColumnPipelineGetBufferSize_32f_C3R),
    ZVP_EXPORT(query, zvpiFilterColumnPipelineGetBufferSize_Low_16s_C1R),
    ZVP_EXPORT(query, zvpiFilterColumnPipelineGetBufferSize_Low_16s_C3R),
    ZVP_EXPORT(columns, zvpiFilterColumnPipeline_16s8s_C1R),
    ZVP_EXPORT(columns, zvpiFilterColumnPipeline_16s8s_C3R),
    ZVP_EXPORT(columns, zvpiFilterColumnPipeline_16s8u_C1R),
    ZVP_EXPORT(columns, zvpiFilterColumnPipeline_16s8u_C3R),
    ZVP_EXPORT(columns, zvpiFilterColumnPipeline_16s_C1R),
    ZVP_EXPORT(columns, zvpiFilterColumnPipeline_16s_C3R),
    ZVP_EXPORT(columns, zvpiFilterColumnPipeline_32f_C1R),
    ZVP_EXPORT(columns, zvpiFilterColumnPipeline_32f_C3R),
    ZVP_EXPORT(columns, zvpiFilterColumnPipeline_Low_16s_C1R),
    ZVP_EXPORT(columns, zvpiFilterColumnPipeline_Low_16s_C3R),
    ZVP_EXPORT(query, zvpiFilterRowBorderPipelineGetBufferSize_16s_C1R),
    ZVP_EXPORT(query, zvpiFilterRowBorderPipelineGetBufferSize_16s_C3R),
    ZVP_EXPORT(query, zvpiFilterRowBorderPipelineGetBufferSize_32f_C1R),
    ZVP_EXPORT(query, zvpiFilterRowBorderPipelineGetBufferSize_32f_C3R),
    ZVP_EXPORT(query, zvpiFilterRowBorderPipelineGetBufferSize_8u16s_C1R),
    ZVP_EXPORT(query, zvpiFilterRowBorderPipelineGetBufferSize_8u16s_C3R),
    ZVP_EXPORT(query, zvpiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R),
    ZVP_EXPORT(query, zvpiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R),
    ZVP_EXPORT(rows, zvpiFilterRowBorderPipeline_16s_C1R),
    ZVP_EXPORT(rows, zvpiFilterRowBorderPipeline_16s_C3R),
    ZVP_EXPORT(rows, zvpiFilterRowBorderPipeline_32f_C1R),
    ZVP_EXPORT(rows, zvpiFilterRowBorderPipeline_32f_C3R),
    ZVP_EXPORT(rows, zvpiFilterRowBorderPipeline_8u16s_C1R),
    ZVP_EXPORT(rows, zvpiFilterRowBorderPipeline_8u16s_C3R),
    ZVP_EXPORT(rows, zvpiFilterRowBorderPipeline_Low_16s_C1R),
    ZVP_EXPORT(rows, zvpiFilterRowBorderPipeline_Low_16s_C3R),
    ZVP_EXPORT(query, zvpiFilterScharrHorizBorderGetBufferSize_32f_C1R),
    ZVP_EXPORT(window, zvpiFilterScharrHorizBorder_32f_C1R),
    ZVP_EXPORT(query, zvpiFilterScharrVertBorderGetBufferSize_32f_C1R),
    ZVP_EXPORT(window, zvpiFilterScharrVertBorder_32f_C1R),
    ZVP_EXPORT(windowQuery, zvpiFilterSobelHorizBorderGetBufferSize_8u16s_C1R),
    ZVP_EXPORT(window, zvpiFilterSobelHorizBorder_8u16s_C1R),
};

}  // namespace

Exports filterExports() { return kExports; }

}  // namespace zvp::calls
