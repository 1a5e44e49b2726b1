// Sub-pixel copies and derivatives.
#include <zvpcv/filter.h>
#include <zvpcv/geometry.h>

#include "families.h"
#include "operands.h"

namespace fuzz {
namespace {

// Mostly near 0 .. 100, sometimes any bits.
float someFloat(Bytes& in) {
  const auto bits = in.ConsumeIntegral<std::uint32_t>();
  float value;
  std::memcpy(&value, &bits, sizeof value);
  return oneIn(4, in) ? value : static_cast<float>(static_cast<std::int32_t>(bits) % 20000) / 128;
}

template <class S, class D, class... Scale>
void copy(Bytes& in, Status (*f)(const S*, int, D*, int, RoiSize, float, float, Scale...)) {
  const RoiSize size = someSize(in);
  Spans spans = region(size.width, size.height);
  if (!spans.empty()) addRegion(spans, {0, 0}, double(size.width) + 1, double(size.height) + 1);
  const auto src = reads<S>(in, spans, size.width);
  const auto dst = writesImage<D>(in, size.width, size.height);
  const float dx = someFloat(in), dy = someFloat(in);
  checkCall(f(src, src.step, dst, dst.step, size, dx, dy, static_cast<Scale>(number(in, -16, 20))...), src, dst);
}

template <class S, class D, class... Scale>
void intersect(Bytes& in, Status (*f)(const S*, int, RoiSize, D*, int, RoiSize, Point32f, Point*, Point*, Scale...)) {
  const RoiSize srcSize = someSize(in), size = someSize(in);
  const auto src = readsImage<S>(in, srcSize.width, srcSize.height);
  const auto dst = writesImage<D>(in, size.width, size.height);
  const Point32f point{someFloat(in), someFloat(in)};
  constexpr int kUnwritten = -77;
  Point min{kUnwritten, kUnwritten}, max = min;
  const Status status = f(src, src.step, srcSize, dst, dst.step, size, point, &min, oneIn(32, in) ? nullptr : &max,
                          static_cast<Scale>(number(in, -16, 20))...);
  checkCall(status, src, dst);
  if (status < 0) {
    require(min.x == kUnwritten && max.y == kUnwritten, "a failing call reports nothing");
  } else {
    require(min.x >= 0 && min.x <= size.width && max.x < size.width && max.y < size.height, "ranges fit the window");
  }
}

template <class Query>
void scharr(Bytes& in, Status (*f)(const float*, int, float*, int, RoiSize, BorderType, float, std::uint8_t*),
            Query query) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<float>(in, size.width, size.height);
  const auto dst = writesImage<float>(in, size.width, size.height);
  int bytes = 0;
  if (query(size, &bytes) != StatusOk) bytes = 0;
  const auto buffer = block(in, bytes);
  checkCall(f(src, src.step, dst, dst.step, size, number(in, 0, 5), 1.5f, buffer), src, dst, buffer);
}

#define ZVP_COPY(name) ZVP_TARGET(copy, zvpiCopySubpix_##name), ZVP_TARGET(intersect, zvpiCopySubpixIntersect_##name)
#define ZVP_SCHARR(direction)                                                                                          \
  [](Bytes& in) {                                                                                                      \
    scharr(in, zvpiFilterScharr##direction##Border_32f_C1R, zvpiFilterScharr##direction##BorderGetBufferSize_32f_C1R); \
  }

constexpr Target kTargets[] = {
    ZVP_COPY(8u_C1R),    ZVP_COPY(16u_C1R), ZVP_COPY(8u16u_C1R_Sfs), ZVP_COPY(16u32f_C1R),
    ZVP_COPY(8u32f_C1R), ZVP_COPY(32f_C1R), ZVP_SCHARR(Horiz),       ZVP_SCHARR(Vert),
};

}  // namespace

Targets geometryTargets() { return kTargets; }

}  // namespace fuzz
