// Rows of an image in a ring: each is made when it is first needed, in the place of one that no longer is.
#pragma once

#include <stdint.h>

#include <algorithm>
#include <type_traits>

namespace zvp::pyramid {

// `Count` is the type of their number: a constant where there is one, since a row is found by a division.
template <class T, class Count = int64_t>
class RowRing {
 public:
  // `count` rows, `stride` elements apart.
  RowRing(T* rows, int64_t stride, Count count = {}) : rows_(rows), stride_(stride), count_(count) {}

  // Of 31 bits: the division is the shorter one.
  T* row(int64_t y) const { return rows_ + static_cast<uint32_t>(y) % static_cast<uint32_t>(count_) * stride_; }

  // Makes the rows from first to last that have not been made; neither may lie above that of the last call. make(y, row)
  // fills row y.
  template <class Make>
  void provide(int64_t first, int64_t last, Make make) {
    made_ = std::max(made_, first);
    for (; made_ <= last; ++made_) make(made_, row(made_));
  }

 private:
  T* rows_;
  int64_t stride_;
  [[no_unique_address]] Count count_;
  int64_t made_ = 0;
};

template <class T, int64_t count>
using FixedRing = RowRing<T, std::integral_constant<int64_t, count>>;

}  // namespace zvp::pyramid
