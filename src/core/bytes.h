// Sizes on their way to 31 bits.
#pragma once

#include <stdint.h>

namespace zvp {

// A count of bytes, or of anything that bytes are counted from, which sticks at 2^31 instead of wrapping, however many
// factors a formula has; a negative one is 0.
class Bytes {
 public:
  constexpr Bytes(int64_t n) : n_(n < 0 ? 0 : n > kTooMany ? kTooMany : n) {}

  // Whether 31 bits hold it.
  constexpr bool fit() const { return n_ < kTooMany; }
  constexpr int32_t value() const { return static_cast<int32_t>(fit() ? n_ : INT32_MAX); }

  friend constexpr Bytes operator+(Bytes a, Bytes b) { return a.n_ + b.n_; }
  friend constexpr Bytes operator*(Bytes a, Bytes b) { return a.n_ * b.n_; }
  friend constexpr bool operator<(Bytes a, Bytes b) { return a.n_ < b.n_; }
  friend constexpr Bytes roundUp(Bytes n, int64_t multiple) { return (n.n_ + multiple - 1) / multiple * multiple; }

 private:
  static constexpr int64_t kTooMany = int64_t{1} << 31;

  int64_t n_;
};

constexpr int64_t roundUp(int64_t n, int64_t multiple) { return (n + multiple - 1) / multiple * multiple; }

}  // namespace zvp
