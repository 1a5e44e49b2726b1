// Speckle marking with runs instead of pixels. Each row is cut into runs of pixels that belong together, 64 pixels a
// time as the bits of a word; runs that touch across rows are united (union-find: B. Galler, M. Fischer, 1964); then
// the runs of small regions are overwritten.
#include <string.h>

#include <bit>
#include <utility>

#include "core/checks.h"
#include "core/rows.h"
#include "simd/walk.h"
#include "zvpcv/segment.h"

namespace zvp {
namespace {

using simd::load, simd::maskBits, simd::Pack, simd::store;

constexpr int64_t kBytesPerPixel = 13;
constexpr int kWordBits = 64;

// --- Which pixels connect --------------------------------------------------------------------------------------------

template <class T>
struct Rule {
  T marker, tolerance;

  // Neither is the marker, and the difference is within the tolerance.
  template <class V>
  ZVP_INLINE auto connects(V a, V b) const {
    return (a != marker) & (b != marker) & areClose(a, b);
  }

  // Nothing in a run needs telling apart: connected pixels, or markers.
  template <class V>
  ZVP_INLINE auto belongTogether(V a, V b) const {
    return connects(a, b) | ((a == marker) & (b == marker));
  }

 private:
  template <class V>
  ZVP_INLINE auto areClose(V a, V b) const {
    if constexpr (std::is_same_v<T, float>) {
      return simd::absolute(V(a - b)) <= tolerance;
    } else {
      using Unsigned = std::make_unsigned_t<T>;  // a difference of signed numbers takes one more bit
      using U = Pack<Unsigned, simd::laneCount<V>>;
      const U difference = U(U(simd::max(a, b)) - U(simd::min(a, b)));
      const auto close = difference <= static_cast<Unsigned>(tolerance);
      if constexpr (std::is_signed_v<T>) {
        return close & (V(V{} + tolerance) >= T{0});
      } else {
        return close;
      }
    }
  }
};

// Bit i: relation(a[i], b[i]), for i < n <= 64.
template <class T, class Relation>
ZVP_INLINE uint64_t relationBits(const T* a, const T* b, int n, Relation relation) {
  uint64_t bits = 0;
  simd::forEachPack<simd::lanes<T>, sizeof(T)>(
      0, n, [&]<int N>(int i) __attribute__((always_inline)) {
        using V = Pack<T, N>;
        bits |= maskBits(relation(load<V>(a + i), load<V>(b + i))) << i;
      });
  return bits;
}

// The same for at most a word.
template <class T, class Relation>
ZVP_INLINE uint64_t wordOfBits(const T* a, const T* b, int64_t n, Relation relation) {
  return relationBits(a, b, n < kWordBits ? static_cast<int>(n) : kWordBits, relation);
}

// One bit a pixel of a row, the word of the pixels from x on. No byte beyond the row's bits is touched.
uint64_t loadWord(const uint8_t* bits, int64_t x, int width) {
  if (width - x >= kWordBits) return load<uint64_t>(bits + x / 8);
  uint64_t word = 0;
  memcpy(&word, bits + x / 8, static_cast<size_t>(width - x + 7) / 8);
  return word;
}

void storeWord(uint8_t* bits, int64_t x, int width, uint64_t word) {
  memcpy(bits + x / 8, &word, width - x >= kWordBits ? sizeof word : static_cast<size_t>(width - x + 7) / 8);
}

// --- Runs and the regions they make ----------------------------------------------------------------------------------

// Eight bytes a run, in a block of any alignment, in scan order: the first column; and the index of an earlier run of
// the same region, or of a region's first run -size.
class Runs {
 public:
  explicit Runs(uint8_t* block) : block_(block) {}

  int start(int64_t i) const { return load<int32_t>(at(i)); }
  void setStart(int64_t i, int x) { store(at(i), int32_t{x}); }
  void setSize(int64_t i, int size) { setLink(i, -size); }
  int64_t size(int64_t first) const { return -int64_t{link(first)}; }

  // Puts two runs and all that are united with them into one region.
  void unite(int a, int b) {
    a = firstOf(a);
    b = firstOf(b);
    if (a == b) return;
    const int first = a < b ? a : b, other = a < b ? b : a;
    setLink(first, link(first) + link(other));
    setLink(other, first);
  }

  // The first run of a region, where this was asked for all runs before i.
  int flatten(int i) {
    const int32_t to = link(i);
    if (to < 0) return i;
    const int32_t further = link(to);
    if (further < 0) return to;
    setLink(i, further);
    return further;
  }

 private:
  uint8_t* at(int64_t i) const { return block_ + 8 * i; }
  int32_t link(int64_t i) const { return load<int32_t>(at(i) + 4); }
  void setLink(int64_t i, int32_t value) { store(at(i) + 4, value); }

  // Halves the path on the way.
  int firstOf(int i) {
    for (int32_t to = link(i); to >= 0; to = link(i)) {
      const int32_t further = link(to);
      if (further < 0) return to;
      setLink(i, further);
      i = further;
    }
    return i;
  }

  uint8_t* block_;
};

// Cuts a row into runs, the first of index `run`, and returns the index behind the last. Each bit of `together` tells
// whether a pixel belongs to the same run as the one before.
template <class T>
int cutRow(const T* row, int width, Rule<T> rule, Runs runs, int run, uint8_t* together) {
  const auto relation = [rule](auto a, auto b) __attribute__((always_inline)) { return rule.belongTogether(a, b); };
  int start = 0;
  runs.setStart(run, 0);
  for (int64_t x = 0; x < width; x += kWordBits) {
    const uint64_t word = x == 0 ? wordOfBits(row + 1, row, width - 1, relation) << 1
                                 : wordOfBits(row + x, row + x - 1, width - x, relation);
    storeWord(together, x, width, word);
    uint64_t starts = ~word;
    if (x == 0) starts &= ~uint64_t{1};
    if (width - x < kWordBits) starts &= (uint64_t{1} << (width - x)) - 1;
    for (; starts != 0; starts &= starts - 1) {
      const int next = static_cast<int>(x) + std::countr_zero(starts);
      runs.setSize(run, next - start);
      runs.setStart(++run, next);
      start = next;
    }
  }
  runs.setSize(run, width - start);
  return run + 1;
}

// A row above or below another: its runs from index `run` on, and which of its pixels belong together.
struct CutRow {
  int run;
  const uint8_t* together;
};

// Unites the runs of two rows that connect anywhere. Where both runs go on, one connection is enough.
template <class T>
void uniteRows(const T* above, const T* row, int width, Rule<T> rule, Runs runs, CutRow upper, CutRow lower) {
  const auto relation = [rule](auto a, auto b) __attribute__((always_inline)) { return rule.connects(a, b); };
  uint64_t carry = 0;
  for (int64_t x = 0; x < width; x += kWordBits) {
    const uint64_t up = loadWord(upper.together, x, width), low = loadWord(lower.together, x, width);
    const uint64_t connected = wordOfBits(above + x, row + x, width - x, relation);
    uint64_t fresh = connected & ~((connected << 1 | carry) & up & low);
    for (; fresh != 0; fresh &= fresh - 1) {
      const uint64_t upToHere = fresh ^ (fresh - 1);
      runs.unite(upper.run + std::popcount(~up & upToHere) - 1, lower.run + std::popcount(~low & upToHere) - 1);
    }
    upper.run += std::popcount(~up);
    lower.run += std::popcount(~low);
    carry = connected >> (kWordBits - 1);
  }
}

template <class T>
void markRow(T* row, int width, T marker, int maxSize, Runs runs, int run, int end) {
  for (; run < end; ++run) {
    const int first = runs.flatten(run);
    if (runs.size(first) > maxSize) continue;
    const int start = runs.start(run), next = run + 1 < end ? runs.start(run + 1) : width;
    if (load<T>(row + start) == marker) continue;  // also a -0, which stays
    for (int x = start; x < next; ++x) store(row + x, marker);
  }
}

// --- The interface ---------------------------------------------------------------------------------------------------

Status bufferSize(RoiSize roi, DataType type, int channels, int* size) {
  const bool typeIsKnown = type == DataType8u || type == DataType16u || type == DataType16s || type == DataType32f;
  if (Status s = firstFailure(nonNull(size), nonEmpty(roi), check(typeIsKnown, ErrDataType),
                              check(channels == 1, ErrNumChannels)))
    return s;
  const int64_t pixels = int64_t{roi.width} * roi.height;
  if (pixels > INT32_MAX / kBytesPerPixel) return ErrSize;
  store(size, static_cast<int>(pixels * kBytesPerPixel));
  return StatusOk;
}

template <class T>
Status markSpeckles(Rows<T> image, RoiSize roi, T marker, int maxSize, T tolerance, int norm, uint8_t* buffer) {
  if (Status s = firstFailure(nonNull(image), nonNull(buffer), nonEmpty(roi), check(norm == 1, ErrNorm))) return s;
  if (maxSize < 1) return StatusOk;
  const Rule<T> rule{marker, tolerance};
  const Runs runs(buffer);
  const auto bitBytes = static_cast<size_t>((int64_t{roi.width} + 7) / 8);
  uint8_t* bits = buffer + 8 * static_cast<size_t>(roi.width) * static_cast<size_t>(roi.height);
  uint8_t* bitsAbove = bits + bitBytes;

  int count = cutRow(image.row(0), roi.width, rule, runs, 0, bits);
  for (int y = 1, above = 0; y < roi.height; ++y) {
    std::swap(bits, bitsAbove);
    const int begin = count;
    count = cutRow(image.row(y), roi.width, rule, runs, begin, bits);
    uniteRows<T>(image.row(y - 1), image.row(y), roi.width, rule, runs, {above, bitsAbove}, {begin, bits});
    above = begin;
  }
  // A run at column 0 opens a row.
  for (int y = 0, run = 0; y < roi.height; ++y) {
    int end = run + 1;
    while (end < count && runs.start(end) != 0) ++end;
    markRow(image.row(y), roi.width, marker, maxSize, runs, run, end);
    run = end;
  }
  return StatusOk;
}

}  // namespace
}  // namespace zvp

using zvp::markSpeckles, zvp::Rows;

Status zvpiMarkSpecklesGetBufferSize(RoiSize roiSize, DataType dataType, int numChannels, int* pBufferSize) {
  return zvp::bufferSize(roiSize, dataType, numChannels, pBufferSize);
}

Status zvpiMarkSpeckles_8u_C1IR(uint8_t* pSrcDst, int srcDstStep, RoiSize roiSize, uint8_t speckleVal,
                                int maxSpeckleSize, uint8_t maxPixDiff, int norm, uint8_t* pBuffer) {
  return markSpeckles(Rows{pSrcDst, srcDstStep}, roiSize, speckleVal, maxSpeckleSize, maxPixDiff, norm, pBuffer);
}

Status zvpiMarkSpeckles_16u_C1IR(uint16_t* pSrcDst, int srcDstStep, RoiSize roiSize, uint16_t speckleVal,
                                 int maxSpeckleSize, uint16_t maxPixDiff, int norm, uint8_t* pBuffer) {
  return markSpeckles(Rows{pSrcDst, srcDstStep}, roiSize, speckleVal, maxSpeckleSize, maxPixDiff, norm, pBuffer);
}

Status zvpiMarkSpeckles_16s_C1IR(int16_t* pSrcDst, int srcDstStep, RoiSize roiSize, int16_t speckleVal,
                                 int maxSpeckleSize, int16_t maxPixDiff, int norm, uint8_t* pBuffer) {
  return markSpeckles(Rows{pSrcDst, srcDstStep}, roiSize, speckleVal, maxSpeckleSize, maxPixDiff, norm, pBuffer);
}

Status zvpiMarkSpeckles_32f_C1IR(float* pSrcDst, int srcDstStep, RoiSize roiSize, float speckleVal, int maxSpeckleSize,
                                 float maxPixDiff, int norm, uint8_t* pBuffer) {
  return markSpeckles(Rows{pSrcDst, srcDstStep}, roiSize, speckleVal, maxSpeckleSize, maxPixDiff, norm, pBuffer);
}
