// The rows that are filtered: read where they are, or bits unpacked to bytes in work memory.
#pragma once

#include "morph/bits.h"
#include "morph/region.h"
#include "simd/simd.h"

namespace zvp::morph {

// Columns of bits that are computed together, at most.
inline constexpr int kMostBits = 512;

class Source {
 public:
  Source(Image<const uint8_t> image, Flavour flavour) : image_(image), bits_(flavour.bits) {}

  static int64_t workBytes(Flavour flavour, Strip strip, const StructuringElement& element) {
    return flavour.bits ? strip.width() + element.size.width + kBitsAtOnce : 0;
  }

  void begin(Strip strip, const Region& region, const StructuringElement& element, uint8_t* work) {
    unpacked_ = work;
    columns_.first = region.columns.clamp(strip.x0 - element.anchor.x);
    columns_.end = region.columns.clamp(strip.x1 - 1 + element.rightExtent()) + 1;
  }

  // The pixel of column 0; those are there that the strip needs.
  const uint8_t* row(int64_t y) const { return bits_ ? unpack(image_.row(y)) : image_.row(y); }

 private:
  const uint8_t* unpack(const uint8_t* row) const {
    uint8_t* out = unpacked_;  // in a register, as what follows: stores of bytes could change members
    const int64_t n = columns_.end - columns_.first, bit = image_.bit + columns_.first;
    for (int64_t i = 0; i < n; i += kBitsAtOnce)
      simd::store(out + i, spreadBits(fetchBits(row, bit + i, std::min<int64_t>(kBitsAtOnce, n - i))));
    return out - columns_.first;
  }

  Image<const uint8_t> image_;
  bool bits_;
  Span columns_ = {};
  uint8_t* unpacked_ = nullptr;
};

}  // namespace zvp::morph
