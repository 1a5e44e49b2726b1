// The operands of one fuzzed call: heap blocks that hold exactly what a call may touch once its checks have passed, so
// that the address sanitizer sees every read and write beyond; and the promises that hold for every call.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>
#include <zvpcv/types.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

namespace fuzz {

using Bytes = FuzzedDataProvider;

constexpr double kMostBytes = 1 << 20;

// True once in `n` times.
inline bool oneIn(int n, Bytes& in) { return in.ConsumeIntegralInRange(1, n) == n; }

// Mostly low..high, sometimes an edge of int.
inline int number(Bytes& in, int low, int high) {
  constexpr int kEdges[] = {INT32_MIN, INT32_MIN + 1, -1, 0, 1 << 24, 1 << 30, INT32_MAX - 1, INT32_MAX};
  return oneIn(32, in) ? in.PickValueInArray(kEdges) : in.ConsumeIntegralInRange(low, high);
}

inline RoiSize someSize(Bytes& in) {
  const int width = number(in, 1, 80);
  return {width, number(in, 1, 12)};
}

inline Rect someRect(Bytes& in) {
  const int x = number(in, 0, 9), y = number(in, 0, 9), width = number(in, 1, 12);
  return {x, y, width, number(in, 1, 12)};
}

// Elements first..end - 1 of row `row`, counted from an operand's pointer.
struct Span {
  double row, first, end;
};
using Spans = std::vector<Span>;

struct Corner {
  double x, y;
};

// The entries that a region needs which lies `at` away from the pointer; its first and last row bound the others.
inline void addRegion(Spans& spans, Corner at, double width, double height) {
  if (width < 1 || height < 1) return;
  for (const double row : {0.0, height - 1}) spans.push_back({at.y + row, at.x, at.x + width});
}
inline Spans region(double width, double height) {
  Spans spans;
  addRegion(spans, {0, 0}, width, height);
  return spans;
}

enum class Access { kRead, kWrite };

class Operand {
 public:
  // `row` elements are what a step must hold at least. Spans that would need too much memory get a step that the call
  // must refuse; behind any such step there is no memory.
  template <class T>
  static Operand make(Bytes& in, Access access, const Spans& spans, double row, T) {
    Operand o;
    o.access_ = access;
    const double rowBytes = row * double(sizeof(T));
    o.step = someStep(in, rowBytes, sizeof(T));
    if (o.place(spans, sizeof(T)) > kMostBytes) o.step = static_cast<int>(std::min(rowBytes, kMostBytes)) - 1;
    const bool refused = o.step < rowBytes || o.step % int{sizeof(T)} != 0;
    if (refused) o.place({}, sizeof(T));
    o.allocate(in);
    if (access == Access::kWrite) o.writable_ = spans, o.element_ = sizeof(T);
    return o;
  }

  // An array, an object or work memory: no step.
  static Operand flat(Bytes& in, Access access, double bytes, std::size_t alignment = 1) {
    Operand o;
    o.access_ = access;
    o.size_ = static_cast<std::size_t>(bytes > 0 && bytes <= kMostBytes ? bytes : 0);
    if (access == Access::kWrite) o.writable_ = region(double(o.size_), 1);
    o.allocate(in, alignment);
    return o;
  }

  // What a call is given.
  template <class T>
  operator T*() const {
    return isNull_ ? nullptr : reinterpret_cast<T*>(start());
  }

  // The same bytes behind the same pointer: for calls in place.
  void alias(const Operand& other) {
    block_ = other.block_, lead_ = other.lead_, size_ = other.size_, step = other.step, remember();
  }

  std::uint8_t* start() const { return block_.get() + lead_; }
  void remember() { before_.assign(block_.get(), block_.get() + size_); }

  // Only bytes that the call may write have changed; none if it failed.
  bool isIntact(bool failed) const {
    std::vector<std::uint8_t> allowed = before_;
    if (access_ == Access::kWrite && !failed) {
      for (double row = writable_.front().row; row <= writable_.back().row; ++row) {
        const auto offset = static_cast<std::ptrdiff_t>(lead_) + static_cast<std::ptrdiff_t>(row) * step;
        const auto bytes = static_cast<std::size_t>(writable_.front().end) * element_;
        std::memcpy(&allowed[std::size_t(offset)], &block_.get()[offset], bytes);
      }
    }
    return std::equal(allowed.begin(), allowed.end(), block_.get());
  }

  int step = 0;

 private:
  static int someStep(Bytes& in, double rowBytes, int element) {
    const int least = static_cast<int>(std::clamp<double>(rowBytes, 0, INT32_MAX));
    const int slack = INT32_MAX - least;
    switch (in.ConsumeIntegralInRange(0, 40)) {
      case 0:
        return least - 1;
      case 1:
        return least + std::min(slack, 1);
      case 2:
        return -least;
      case 3:
        return number(in, -1, 1);
      default:
        return least + std::min(slack, element * in.ConsumeIntegralInRange(0, 5));
    }
  }

  // Sizes the block for the spans and returns how many bytes they take.
  double place(const Spans& spans, std::size_t element) {
    double low = 0, high = 0;
    for (const Span& s : spans) {
      low = std::min(low, s.row * step + s.first * double(element));
      high = std::max(high, s.row * step + s.end * double(element));
    }
    if (high - low <= kMostBytes) lead_ = static_cast<std::size_t>(-low), size_ = static_cast<std::size_t>(high - low);
    return high - low;
  }

  void allocate(Bytes& in, std::size_t alignment = 1) {
    const std::size_t misaligned =
        oneIn(4, in) ? in.ConsumeIntegralInRange<std::size_t>(1, 7) / alignment * alignment : 0;
    lead_ += misaligned;
    size_ += misaligned;
    block_ = std::shared_ptr<std::uint8_t>(new std::uint8_t[size_], std::default_delete<std::uint8_t[]>());
    fill(in, block_.get(), size_);
    isNull_ = oneIn(64, in);
    remember();
  }

  static void fill(Bytes& in, std::uint8_t* p, std::size_t n) {
    std::uint32_t state = in.ConsumeIntegral<std::uint16_t>();
    const bool plateaus = (state & 1) != 0;
    for (std::size_t i = 0; i < n; ++i) {
      if (!plateaus || i % 16 == 0) state = state * 1664525u + 1013904223u;
      p[i] = static_cast<std::uint8_t>(state >> 24);
    }
  }

  Access access_ = Access::kRead;
  std::shared_ptr<std::uint8_t> block_;
  std::size_t lead_ = 0, size_ = 0, element_ = 1;
  Spans writable_;
  std::vector<std::uint8_t> before_;
  bool isNull_ = false;
};

template <class T>
Operand reads(Bytes& in, const Spans& spans, double row) {
  return Operand::make(in, Access::kRead, spans, row, T{});
}
template <class T>
Operand readsImage(Bytes& in, double width, double height) {
  return reads<T>(in, region(width, height), width);
}
// n values without a step.
template <class T>
Operand readsArray(Bytes& in, double n) {
  return Operand::flat(in, Access::kRead, n * double(sizeof(T)));
}
// An object or work memory, both of a size that a query told.
inline Operand block(Bytes& in, int bytes, std::size_t alignment = 1) {
  return Operand::flat(in, Access::kWrite, bytes, alignment);
}

template <class T>
Operand writesImage(Bytes& in, double width, double height) {
  return Operand::make(in, Access::kWrite, region(width, height), width, T{});
}

// The values on the heap, exactly.
template <class T>
std::unique_ptr<T[]> exactArray(const std::vector<T>& values) {
  std::unique_ptr<T[]> copy(new T[values.size()]);
  std::copy(values.begin(), values.end(), copy.get());
  return copy;
}

inline void require(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

template <class... Operands>
void checkCall(Status status, const Operands&... operands) {
  require((operands.isIntact(status < 0) && ...), status < 0 ? "a failing call writes nothing" : "only outputs change");
}

}  // namespace fuzz
