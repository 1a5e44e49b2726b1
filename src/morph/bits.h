// Rows of bits, the most significant bit of a byte leftmost.
#pragma once

#include <stdint.h>

#include <algorithm>

namespace zvp::morph {

// Bits are computed eight at a time, each as a byte.
inline constexpr int kBitsAtOnce = 8;

// Up to eight bits of a row, from the high end of the result; nothing but the bytes that hold them is read.
inline uint8_t fetchBits(const uint8_t* row, int64_t bit, int64_t count) {
  const uint8_t* p = row + (bit >> 3);
  const int shift = static_cast<int>(bit & 7);
  const int next = shift + count > 8 ? p[1] : 0;
  return static_cast<uint8_t>((p[0] << shift) | (next >> (8 - shift)));
}

inline constexpr uint64_t kLowBits = 0x0101010101010101;  // of eight bytes

// Byte k of the result is bit k from the high end.
inline uint64_t spreadBits(uint8_t bits) {
  constexpr uint64_t kDiagonal = 0x0102040810204080, kLow = 0x7f7f7f7f7f7f7f7f;
  return (((bits * kLowBits & kDiagonal) + kLow) >> 7) & kLowBits;
}

// The inverse, whatever the other bits are: a product brings each bit to its place in the highest byte.
inline uint8_t gatherBits(uint64_t bytes) {
  return static_cast<uint8_t>((bytes & kLowBits) * 0x8040201008040201 >> 56);
}

// Writes n bits of a row, eight at a time at most; bits(i, count) gives those from i on, at the high end of a byte.
template <class F>
void putBits(uint8_t* row, int64_t bit, int64_t n, F bits) {
  for (int64_t i = 0; i < n;) {
    const int shift = static_cast<int>(bit & 7);
    const int count = static_cast<int>(std::min<int64_t>(8 - shift, n - i));
    uint8_t* p = row + (bit >> 3);
    const int mask = (0xff00 >> count & 0xff) >> shift;
    *p = static_cast<uint8_t>((*p & ~mask) | (bits(i, count) >> shift & mask));
    i += count;
    bit += count;
  }
}

}  // namespace zvp::morph
