// The operands of a call: blocks of exactly what it may touch once its checks have passed.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "calls/draw.h"

namespace zvp::calls {

// Memory of exactly so many bytes, at an end of what is accessible. Each program has its own: the heap under a
// sanitizer, else pages between inaccessible ones.
struct Block {
  std::shared_ptr<std::uint8_t> start;
  std::function<void()> freeze;  // from now on it can be read only
};
Block exactBlock(std::size_t bytes, bool atEnd);

// Elements first..end - 1 of row `row`, counted from an operand's pointer.
struct Span {
  double row, first, end;
};
using Spans = std::vector<Span>;

struct Corner {
  double x, y;
};

// The elements that a region needs which lies `at` away from the pointer; its first and last row bound the others.
inline void addRegion(Spans& spans, Corner at, double width, double height) {
  if (width < 1 || height < 1) return;
  for (const double row : {0.0, height - 1}) spans.push_back({at.y + row, at.x, at.x + width});
}
inline Spans region(double width, double height) {
  Spans spans;
  addRegion(spans, {0, 0}, width, height);
  return spans;
}

struct Element {
  std::size_t size;
  bool isFloat;
};

// The bytes before and from an operand's pointer on that hold its spans.
std::pair<double, double> extent(const Spans& spans, int step, Element element);

enum class Access { kRead, kWrite, kScratch };  // scratch: written, but means nothing afterwards

class Operand {
 public:
  // Rows. `isFinite`: floats that add up to no infinity.
  Operand(Draw& in, Access access, Element element, const Spans& spans, int step, bool isFinite);
  // An array, an object or work memory: no step.
  Operand(Draw& in, Access access, Element element, double count, bool isFinite, std::size_t alignment = 1);
  // Memory of others.
  Operand(Access access, void* start, std::size_t bytes);

  std::uint8_t* start() const { return block_.start.get() + lead_; }
  std::size_t size() const { return size_ - lead_; }
  int step() const { return step_; }
  Access access() const { return access_; }
  Element element() const { return element_; }

  void put(std::size_t index, double value) const;  // as an element
  template <class T>
  T get(std::size_t index = 0) const {
    T value;
    std::memcpy(&value, start() + index * sizeof value, sizeof value);
    return value;
  }

  Operand seenAs(Access access) const;
  void alias(const Operand& other);  // the same bytes behind the same pointer, for calls in place

  void remember();  // and freezes what is only read
  // Only bytes that the call may write have changed; none if it failed.
  bool isIntact(bool failed) const;
  void appendResult(std::vector<std::uint8_t>& bytes) const;

 private:
  void allocate(Draw& in, bool isFinite, std::size_t alignment);
  template <class F>
  void forEachRow(F f) const;
  std::vector<std::uint8_t> rows() const;
  std::vector<std::uint8_t> contents() const;

  Access access_;
  Element element_;
  Block block_;
  std::size_t lead_ = 0, size_ = 0;
  int step_ = 0;
  bool isFar_ = false;
  Spans spans_;
  std::vector<std::uint8_t> before_;
};

}  // namespace zvp::calls
