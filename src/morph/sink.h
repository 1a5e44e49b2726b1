// Where result rows go.
#pragma once

#include "core/runs.h"
#include "morph/bits.h"
#include "morph/kernels.h"
#include "simd/simd.h"

namespace zvp::morph {

// What becomes of results: the destination's pixels, or their difference with another image's pixels is; saturated, for
// bits a AND NOT b. The destination may be the other image.
struct Output {
  enum Kind { kResult, kResultMinusOther, kOtherMinusResult };

  Image<uint8_t> dst;
  Kind kind = kResult;
  Image<const uint8_t> other = {};
};

// Rows are computed where they belong; or in `slots` rows of work memory, from which they are written `delay` rows
// late: not before no later output row reads the source there.
struct Sink {
  Output output;
  Flavour flavour;
  const Kernels& kernels;
  int slots = 0;  // 0, or more than the delay, and enough for the rows that are computed at once
  int delay = 0;
  int64_t stride = 0;
  uint8_t* rows = nullptr;
  Strip strip = {};

  uint8_t* row(int y) const {
    if (slots == 0) return output.dst.row(y) + strip.x0 * flavour.pixelBytes();
    return rows + static_cast<uint32_t>(y) % static_cast<uint32_t>(slots) * stride;
  }

  // Rows y .. y + count - 1 are complete.
  void commit(int y, int count) const {
    if (slots == 0) return;
    for (int end = y + count; y < end; ++y)
      if (y >= delay) write(y - delay);
  }

  // So are all `height` rows.
  void finish(int height) const {
    if (slots == 0) return;
    for (int y = std::max(height - delay, 0); y < height; ++y) write(y);
  }

 private:
  void write(int y) const {
    if (flavour.bits) return writeBits(y);
    const int n = static_cast<int>(strip.width() * flavour.channels);
    const int64_t first = strip.x0 * flavour.pixelBytes();
    const uint8_t* result = row(y);
    uint8_t* out = output.dst.row(y) + first;
    if (output.kind == Output::kResult) {
      copyRun(result, out, n * flavour.elementBytes);
      return;
    }
    const uint8_t* other = output.other.row(y) + first;
    const bool fromOther = output.kind == Output::kOtherMinusResult;
    kernels.subtract(fromOther ? other : result, fromOther ? result : other, out, n);
  }

  void writeBits(int y) const {
    const uint8_t *results = row(y), *others = output.other.row(y);
    const int64_t otherBit = output.other.bit + strip.x0;
    const Output::Kind kind = output.kind;
    putBits(output.dst.row(y), output.dst.bit + strip.x0, strip.width(), [=](int64_t i, int count) {
      const int result = gatherBits(simd::load<uint64_t>(results + i));
      if (kind == Output::kResult) return result;
      const int other = fetchBits(others, otherBit + i, count);
      return kind == Output::kResultMinusOther ? result & ~other : other & ~result;
    });
  }
};

}  // namespace zvp::morph
