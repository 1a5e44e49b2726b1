#include "morph/filter.h"

#include <limits>

#include "morph/engine.h"
#include "simd/walk.h"

namespace zvp {
namespace {

// a - b, saturated.
struct Subtract {
  template <class V>
  ZVP_INLINE V operator()(V a, V b) const {
    using T = simd::Element<V>;
    if constexpr (std::is_floating_point_v<T>) {
      return a - b;
    } else if constexpr (std::is_unsigned_v<T>) {
      return V(simd::max(a, b) - b);
    } else {
      // The sign of a where the difference wraps: a and b differ in it, and so do a and the difference.
      using U = Pack<std::make_unsigned_t<T>, simd::laneCount<V>>;
      constexpr int kSign = 8 * sizeof(T) - 1;
      const V difference = V(U(a) - U(b));
      const V wraps = V(((a ^ b) & (a ^ difference)) >> kSign);
      const V end = V((a >> kSign) ^ std::numeric_limits<T>::max());
      return V((difference & ~wraps) | (end & wraps));
    }
  }
};

// Source rows of bits, unpacked into the work buffer.
struct BitSource {
  BitRows<const uint8_t> image;
  Span columns = {};
  uint8_t* unpacked = nullptr;

  static constexpr int kMostColumns = 512;
  static constexpr int kWhole = 8;  // bits are unpacked in whole bytes

  int64_t workBytes(int64_t width, const StructuringElement& element) const {
    return width + element.size.width + kWhole;
  }
  void begin(Strip strip, const Region& region, const StructuringElement& element, uint8_t* work) {
    unpacked = work;
    columns.first = region.columns.clamp(strip.x0 - element.anchor.x);
    columns.end = region.columns.clamp(strip.x1 - 1 + element.rightExtent()) + 1;
  }
  const uint8_t* row(int64_t y) {
    const uint8_t* from = image.row(y);
    const int64_t n = columns.end - columns.first;
    for (int64_t i = 0; i < n; i += kWhole) {
      const int64_t count = std::min<int64_t>(kWhole, n - i);
      const uint64_t bytes = spreadBits(fetchBits(from, image.bit + columns.first + i, count));
      memcpy(unpacked + i, &bytes, sizeof bytes);
    }
    return unpacked - columns.first;
  }
};

// Output rows of bits, packed when a row is complete.
struct BitSink {
  BitRows<uint8_t> image;
  static constexpr int kRows = 8;
  Strip strip = {};
  uint8_t bytes[kRows][BitSource::kMostColumns + BitSource::kWhole] = {};

  void begin(Strip s) { strip = s; }
  uint8_t* row(int64_t y) { return bytes[y % kRows]; }
  void commit(int64_t y) {
    const uint8_t* from = row(y);
    putBits(image.row(y), image.bit + strip.x0, strip.x1 - strip.x0, [from](int64_t i, int) {
      uint64_t eight;
      memcpy(&eight, from + i, sizeof eight);
      return gatherBits(eight);
    });
  }
  void finish() {}
};

// The place for result rows in a work buffer.
uint8_t* alignedRows(uint8_t* buffer) {
  constexpr int kLine = 64;
  return Carver(buffer).take<uint8_t>(0, kLine);
}

template <class Op, class T, class Sink>
void runEngine(Rows<const T> src, bool inPlace, const Sink& sink, const MaskPlan& plan, const Region& region,
               const StructuringElement& element, int channels, uint8_t* work) {
  Engine<T, Op, PlainSource<T>, Sink> engine({src}, sink, region, element, channels, work);
  plan.suitsRings() ? engine.runRings(plan, inPlace) : engine.runDirect(INT32_MAX);
}

template <class Op, class T>
void runBuffered(Rows<const T> src, const RowWriter<T>& writer, RoiSize roi, BorderType border, const MaskPlan& plan,
                 const StructuringElement& element, int channels, uint8_t* work, uint8_t* rows) {
  const bool inPlace = src.data == writer.dst.data;
  const int delay = inPlace && !plan.suitsRings() ? element.anchor.y : 0;
  const int slots = std::max(delay + 1, std::min(element.size.height, kMostOutputs));
  const BufferedSink<T> sink{writer, channels, roi.width, roi.height, delay, slots, alignedRows(rows)};
  runEngine<Op>(src, inPlace, sink, plan, Region(roi, border, element), element, channels, work);
}

bool copies(const StructuringElement& element, const MaskPlan& plan) {
  return element.mode == kEmptyMask || plan.isEmpty();
}

}  // namespace

template <class T>
void RowWriter<T>::operator()(int64_t y, int64_t first, const T* row, int n) const {
  T* out = dst.row(y) + first;
  if (kind == kCopy) {
    if (out != row) memcpy(out, row, static_cast<size_t>(n) * sizeof(T));
  } else if (kind == kRowMinusOther) {
    simd::transformRow(n, Subtract{}, out, row, other.row(y) + first);
  } else {
    simd::transformRow(n, Subtract{}, out, other.row(y) + first, row);
  }
}

template <class Op, class T>
void filterRegion(Rows<const T> src, Rows<T> dst, RoiSize roi, BorderType border, const StructuringElement& element,
                  int channels, uint8_t* work) {
  const MaskPlan plan(element);
  const bool inPlace = src.data == dst.data;
  // A filter that needs no ring has the work buffer for its result rows.
  if (!element.hasKnownMode() || copies(element, plan) || (inPlace && !plan.suitsRings()))
    return filterThrough<Op>(src, RowWriter<T>{dst}, roi, border, element, channels, work, work);
  runEngine<Op>(src, inPlace, PlainSink<T>{dst, channels}, plan, Region(roi, border, element), element, channels, work);
}

template <class Op, class T>
void filterThrough(Rows<const T> src, const RowWriter<T>& writer, RoiSize roi, BorderType border,
                   const StructuringElement& element, int channels, uint8_t* work, uint8_t* rows) {
  if (!element.hasKnownMode()) return;
  const MaskPlan plan(element);
  if (copies(element, plan)) {
    for (int y = 0; y < roi.height; ++y) writer(y, 0, src.row(y), roi.width * channels);
  } else {
    runBuffered<Op>(src, writer, roi, border, plan, element, channels, work, rows);
  }
}

template <class Op>
void filterBits(BitRows<const uint8_t> src, BitRows<uint8_t> dst, RoiSize roi, BorderType border,
                const StructuringElement& element, uint8_t* work) {
  if (!element.hasKnownMode()) return;
  const MaskPlan plan(element);
  if (copies(element, plan)) return combineBits(src, dst, roi, [](uint8_t s, uint8_t) { return s; });
  const Region region(roi, border, element);
  Engine<uint8_t, Op, BitSource, BitSink> engine({src}, {dst}, region, element, 1, work);
  plan.suitsRings() ? engine.runRings(plan, false) : engine.runDirect(element.maxRoiWidth);
}

#define ZVP_FILTERS(OP, T)                                                                                       \
  template void filterRegion<OP, T>(Rows<const T>, Rows<T>, RoiSize, BorderType, const StructuringElement&, int, \
                                    uint8_t*);                                                                   \
  template void filterThrough<OP, T>(Rows<const T>, const RowWriter<T>&, RoiSize, BorderType,                    \
                                     const StructuringElement&, int, uint8_t*, uint8_t*);
#define ZVP_EXTREMUM(OP)                                                                      \
  ZVP_FILTERS(OP, uint8_t)                                                                    \
  ZVP_FILTERS(OP, uint16_t)                                                                   \
  ZVP_FILTERS(OP, int16_t)                                                                    \
  ZVP_FILTERS(OP, float)                                                                      \
  template void filterBits<OP>(BitRows<const uint8_t>, BitRows<uint8_t>, RoiSize, BorderType, \
                               const StructuringElement&, uint8_t*);

ZVP_EXTREMUM(Minimum)
ZVP_EXTREMUM(Maximum)

}  // namespace zvp
