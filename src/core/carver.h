// Takes aligned parts out of a block, one behind the other; or measures the block that parts would need.
//
// A function that takes the parts of an object, given a Carver, serves both: with Carver::measuring() it tells the size,
// with the block it gives the places, so that the two never disagree.
#pragma once

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#include "core/bytes.h"

namespace zvp {

class Carver {
 public:
  explicit Carver(void* block) : next_(reinterpret_cast<uintptr_t>(block)), end_(UINTPTR_MAX) {}

  // Debug builds show that the parts fit a block of a size that a formula gives.
  Carver(void* block, Bytes size) : Carver(block) { end_ = next_ + static_cast<uint32_t>(size.value()); }

  static Carver measuring() { return Carver(nullptr); }

  // Measuring, what comes back is no address.
  template <class T>
  T* take(Bytes count, size_t alignment) {
    next_ += (0 - next_) % alignment;
    const uintptr_t part = next_;
    const Bytes bytes = count * int64_t{sizeof(T)};
    next_ += static_cast<size_t>(bytes.value());
    taken_ = roundUp(taken_, static_cast<int64_t>(alignment)) + bytes;
    if (largestAlignment_ < alignment) largestAlignment_ = alignment;
    assert(next_ <= end_);
    return reinterpret_cast<T*>(part);
  }

  // Behind the last part.
  uint8_t* end() const { return reinterpret_cast<uint8_t*>(next_); }

  // What holds the parts wherever it starts.
  Bytes size() const { return taken_ + Bytes(static_cast<int64_t>(largestAlignment_) - 1); }

 private:
  uintptr_t next_, end_;
  Bytes taken_ = 0;
  size_t largestAlignment_ = 1;
};

// The first address in a caller's work memory that suits what it is used for.
template <class T>
T* alignedTo(size_t alignment, void* block) {
  return Carver(block).take<T>(0, alignment);
}

}  // namespace zvp
