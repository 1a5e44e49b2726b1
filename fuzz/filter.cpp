// Row and column pipelines.
#include <zvpcv/filter.h>

#include "families.h"
#include "operands.h"

namespace fuzz {
namespace {

// Rows apart from each other, and the pointers to them.
template <class T>
class Rows {
 public:
  Rows(Bytes& in, std::int64_t count, std::int64_t values) {
    if (count < 1 || count > 200 || values < 1 || values > 3000) return;  // the call must refuse these
    const std::size_t misaligned = oneIn(4, in) ? 1 : 0;
    for (int y = 0; y < count; ++y) {
      std::vector<std::uint8_t> bytes(static_cast<std::size_t>(values) * sizeof(T) + misaligned);
      for (auto& b : bytes) b = static_cast<std::uint8_t>(seed_ = seed_ * 171 + 11);
      rows_.push_back(exactArray(bytes));
      pointers_.push_back(reinterpret_cast<T*>(rows_.back().get() + misaligned));
    }
    hasNull_ = oneIn(64, in);
    if (hasNull_) pointers_[in.ConsumeIntegralInRange<std::size_t>(0, pointers_.size() - 1)] = nullptr;
  }

  T** pointers() { return pointers_.data(); }
  bool hasNull() const { return hasNull_; }

 private:
  unsigned seed_ = 3;
  std::vector<std::unique_ptr<std::uint8_t[]>> rows_;
  std::vector<T*> pointers_;
  bool hasNull_ = false;
};

using Query = Status(RoiSize, int, int*);

Operand workMemory(Bytes& in, Query* query, RoiSize size, int kernelSize) {
  int bytes = 0;
  if (query(size, kernelSize, &bytes) != StatusOk) bytes = 0;
  return block(in, bytes);
}

// Value is a pixel's value, or a pointer to three.
template <int channels, class S, class D, class K, class Value, class... Rest>
void rows(Bytes& in, Status (*f)(const S*, int, D**, RoiSize, const K*, int, int, BorderType, Value, Rest...),
          Query* query) {
  const RoiSize size = someSize(in);
  const int taps = oneIn(8, in) ? number(in, 1, 100) : number(in, 1, 9);
  const auto src = readsImage<S>(in, double(size.width) * channels, size.height);
  Rows<D> dst(in, size.height, std::int64_t{size.width} * channels);
  const auto kernel = readsArray<K>(in, taps);
  const auto buffer = workMemory(in, query, size, taps);
  if (taps > 100) return;  // no memory holds so many
  const S pixel[3] = {1, 2, 3};
  Value value;
  if constexpr (std::is_pointer_v<Value>) {
    value = oneIn(8, in) ? nullptr : pixel;
  } else {
    value = pixel[2];
  }
  const int anchor = number(in, 0, std::max(taps, 1) - 1);
  const BorderType border = number(in, 0, 6);
  Status status;
  if constexpr (sizeof...(Rest) == 2) {
    status = f(src, src.step, dst.pointers(), size, kernel, taps, anchor, border, value, number(in, -2, 20), buffer);
  } else {
    status = f(src, src.step, dst.pointers(), size, kernel, taps, anchor, border, value, buffer);
  }
  checkCall(status, src, kernel);
  require(dst.hasNull() || buffer.isIntact(status < 0), "a failing call leaves the work memory");
}

// `leastRow`: values of a row that a step must hold.
template <int channels, int leastRow, class S, class D, class K, class... Rest>
void columns(Bytes& in, Status (*f)(const S**, D*, int, RoiSize, const K*, int, Rest...), Query* query) {
  const RoiSize size = someSize(in);
  const int taps = oneIn(8, in) ? number(in, 1, 100) : number(in, 1, 9);
  Rows<const S> src(in, std::int64_t{size.height} + taps - 1, std::int64_t{size.width} * channels);
  const auto dst = Operand::make(in, Access::kWrite, region(double(size.width) * channels, size.height),
                                 double(size.width) * leastRow, D{});
  const auto kernel = readsArray<K>(in, taps);
  const auto buffer = workMemory(in, query, size, taps);
  if (taps > 100 || size.width > 1000 || size.height > 100) return;  // no memory holds so many taps or rows
  Status status;
  if constexpr (sizeof...(Rest) == 2) {
    status = f(src.pointers(), dst, dst.step, size, kernel, taps, number(in, -2, 20), buffer);
  } else {
    status = f(src.pointers(), dst, dst.step, size, kernel, taps, buffer);
  }
  checkCall(status, dst, kernel, buffer);
}

#define ZVP_ROWS(channels, types)                                                      \
  [](Bytes& in) {                                                                      \
    rows<channels>(in, zvpiFilterRowBorderPipeline_##types##_C##channels##R,           \
                   zvpiFilterRowBorderPipelineGetBufferSize_##types##_C##channels##R); \
  }
#define ZVP_COLUMNS(channels, leastRow, types)                                                   \
  [](Bytes& in) {                                                                                \
    columns<channels, leastRow>(in, zvpiFilterColumnPipeline_##types##_C##channels##R,           \
                                zvpiFilterColumnPipelineGetBufferSize_##types##_C##channels##R); \
  }

constexpr Target kTargets[] = {
    ZVP_ROWS(1, 8u16s),       ZVP_ROWS(3, 8u16s),       ZVP_ROWS(1, 16s),           ZVP_ROWS(3, 16s),
    ZVP_ROWS(1, Low_16s),     ZVP_ROWS(3, Low_16s),     ZVP_ROWS(1, 32f),           ZVP_ROWS(3, 32f),
    ZVP_COLUMNS(1, 1, 16s8u), ZVP_COLUMNS(3, 3, 16s8u), ZVP_COLUMNS(1, 1, 16s8s),   ZVP_COLUMNS(3, 3, 16s8s),
    ZVP_COLUMNS(1, 1, 16s),   ZVP_COLUMNS(3, 3, 16s),   ZVP_COLUMNS(1, 1, Low_16s), ZVP_COLUMNS(3, 1, Low_16s),
    ZVP_COLUMNS(1, 1, 32f),   ZVP_COLUMNS(3, 3, 32f),
};

}  // namespace

Targets filterTargets() { return kTargets; }

}  // namespace fuzz
