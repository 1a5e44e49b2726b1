// Images of one bit per pixel, the most significant bit of a byte leftmost.
#pragma once

#include <stdint.h>

#include <algorithm>

#include "core/rows.h"

namespace zvp {

// Bit `bit` of a row is the region's first pixel; it may lie before or behind the first byte.
template <class Byte>
struct BitRows {
  Byte* data;
  int step;
  int64_t bit;

  Byte* row(int64_t y) const { return Rows<Byte>{data, step}.row(y); }
  BitRows at(int64_t x, int64_t y) const { return {row(y), step, bit + x}; }
};

// Up to eight bits of a row, from the high end of the result; nothing but the bytes that hold them is read.
inline uint8_t fetchBits(const uint8_t* row, int64_t bit, int64_t count) {
  const uint8_t* p = row + (bit >> 3);
  const int shift = static_cast<int>(bit & 7);
  const int next = shift + count > 8 ? p[1] : 0;
  return static_cast<uint8_t>((p[0] << shift) | (next >> (8 - shift)));
}

// Byte k of the result is bit k from the high end.
inline uint64_t spreadBits(uint8_t bits) {
  constexpr uint64_t kOnes = 0x0101010101010101, kDiagonal = 0x0102040810204080, kLow = 0x7f7f7f7f7f7f7f7f;
  return (((bits * kOnes & kDiagonal) + kLow) >> 7) & kOnes;
}

inline uint8_t gatherBits(uint64_t bytes) { return static_cast<uint8_t>(bytes * 0x8040201008040201 >> 56); }

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

// dst = f(src, dst), bit by bit.
template <class F>
void combineBits(BitRows<const uint8_t> src, BitRows<uint8_t> dst, RoiSize roi, F f) {
  for (int y = 0; y < roi.height; ++y) {
    const uint8_t* from = src.row(y);
    uint8_t* to = dst.row(y);
    putBits(to, dst.bit, roi.width, [&](int64_t i, int count) {
      return f(fetchBits(from, src.bit + i, count), fetchBits(to, dst.bit + i, count));
    });
  }
}

}  // namespace zvp
