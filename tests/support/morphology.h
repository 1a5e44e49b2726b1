// Masks, the members of the morphology families as one table, specifications and buffers of exactly the reported size
// against inaccessible pages, and the plain model of erosion and dilation.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

#include "support/image.h"
#include "zvpcv/morphology.h"

namespace zvp::test {

struct Mask {
  int width, height;
  std::vector<uint8_t> members;

  RoiSize size() const { return {width, height}; }
  bool has(int x, int y) const { return members[static_cast<size_t>(y * width + x)] != 0; }
  bool isEmpty() const { return std::count(members.begin(), members.end(), 0) == width * height; }
  Mask rotated() const { return {width, height, {members.rbegin(), members.rend()}}; }
  Point centre() const { return {(width - 1) / 2, (height - 1) / 2}; }
};

// Rows of a mask as text: anything but a dot is a member.
inline Mask drawn(const std::vector<std::string>& rows) {
  Mask mask{static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), {}};
  for (const std::string& row : rows)
    for (const char c : row) mask.members.push_back(c == '.' ? 0 : static_cast<uint8_t>(c));
  return mask;
}

inline Mask full(int width, int height) { return {width, height, std::vector<uint8_t>(size_t(width * height), 1)}; }

inline Mask scattered(int width, int height, unsigned seed) {
  Mask mask = full(width, height);
  std::mt19937 engine(seed);
  for (uint8_t& member : mask.members) member = engine() % 5 < 2 ? 7 : 0;
  return mask;
}

inline Mask ellipse(int width, int height) {
  Mask mask = full(width, height);
  for (int i = 0; i < width * height; ++i) {
    const double x = (2.0 * (i % width) + 1 - width) / width, y = (2.0 * (i / width) + 1 - height) / height;
    mask.members[static_cast<size_t>(i)] = x * x + y * y <= 1.0 ? 255 : 0;
  }
  return mask;
}

inline std::vector<Mask> manyMasks() {
  std::vector<Mask> masks = {full(1, 1),  full(2, 1),    full(1, 2),      full(3, 3),   full(4, 4), full(5, 5),
                             full(7, 2),  full(2, 7),    full(31, 1),     full(1, 31),  full(9, 8), full(15, 15),
                             full(70, 2), ellipse(5, 5), ellipse(15, 15), ellipse(6, 9)};
  masks.push_back(drawn({"..", ".."}));
  masks.push_back(drawn({"."}));
  masks.push_back(drawn({"x..", "...", "..."}));
  masks.push_back(drawn({"x.."}));
  masks.push_back(drawn({".xx.x.x..x"}));
  masks.push_back(drawn({"x", ".", "x", "x", "."}));
  masks.push_back(drawn({"....", "....", "..xx", "..xx"}));      // below and right of the anchor
  masks.push_back(drawn({"xx...", "xx...", ".....", "....."}));  // above and left of it
  masks.push_back(drawn({".x.", "xxx", ".x."}));
  masks.push_back(drawn({"xxx", "...", ".x."}));
  masks.push_back(drawn({"x.x.x", ".x.x.", "x.x.x", ".x.x."}));
  for (unsigned seed = 0; seed < 8; ++seed)
    masks.push_back(scattered(1 + static_cast<int>(seed * 5 % 8), 1 + static_cast<int>(seed * 3 % 9), seed));
  masks.push_back(scattered(40, 3, 9));
  masks.push_back(scattered(17, 33, 10));
  return masks;
}

// All borders that are accepted: replication with every set of sides in memory, and everything in memory.
inline std::vector<BorderType> acceptedBorders() {
  std::vector<BorderType> borders = {BorderInMemory, BorderInMemory | BorderLeftInMemory, 0x7f000000 | BorderReplicate};
  for (int flags = 0; flags < 16; ++flags) borders.push_back(BorderReplicate | flags << 4);
  return borders;
}

// The coordinate that is read for x, on an axis with that extent.
inline int resolve(int x, int extent, bool beforeInMemory, bool afterInMemory) {
  if (x < 0) return beforeInMemory ? x : 0;
  return x < extent || afterInMemory ? x : extent - 1;
}

inline Point resolve(int x, int y, RoiSize roi, BorderType border) {
  const bool all = (border & 15) == BorderInMemory;
  return {resolve(x, roi.width, all || border & BorderLeftInMemory, all || border & BorderRightInMemory),
          resolve(y, roi.height, all || border & BorderTopInMemory, all || border & BorderBottomInMemory)};
}

// Extremum at one output pixel; read(x, y) gives a source pixel.
template <class T, class Read>
T plainExtremum(const Mask& mask, Point anchor, bool erode, int x, int y, Read read) {
  bool first = true;
  T value{};
  for (int j = 0; j < mask.height; ++j) {
    for (int i = 0; i < mask.width; ++i) {
      if (!mask.has(i, j)) continue;
      const T next = read(x + i - anchor.x, y + j - anchor.y);
      value = first ? next : erode ? (value < next ? value : next) : (value > next ? value : next);
      first = false;
    }
  }
  return first ? read(x, y) : value;
}

// Numbers that find faults: plateaus, extremes; floats are finite, with zeros of both signs.
template <class T>
T morphValue(std::mt19937& engine) {
  const unsigned bits = engine();
  if constexpr (std::is_floating_point_v<T>) {
    constexpr T kMax = std::numeric_limits<T>::max();
    const T special[] = {T(0), -T(0), kMax, -kMax};
    return bits % 3 == 0 ? special[bits / 3 % 4] : static_cast<T>(static_cast<int>(bits % 2001) - 1000) / 8;
  } else {
    constexpr T kMin = std::numeric_limits<T>::min(), kMax = std::numeric_limits<T>::max();
    return bits % 16 == 0 ? kMin : bits % 16 == 1 ? kMax : static_cast<T>(bits >> 8);
  }
}

// A region inside a larger image, with as much room around it as the border needs and not a byte more.
template <class T>
class Source {
 public:
  Source(RoiSize roi, const Mask& mask, Point anchor, int channels, BorderType border, int extra, Placement placement,
         unsigned seed, int reach = 1)
      : roi_(roi), channels_(channels), border_(border) {
    const bool all = (border & 15) == BorderInMemory;
    const auto room = [&](BorderType flag, int pixels) { return all || (border & flag) != 0 ? reach * pixels : 0; };
    left_ = room(BorderLeftInMemory, anchor.x);
    top_ = room(BorderTopInMemory, anchor.y);
    const int right = room(BorderRightInMemory, mask.width - anchor.x - 1);
    const int bottom = room(BorderBottomInMemory, mask.height - anchor.y - 1);
    image_ = std::make_unique<Image<T>>((left_ + roi.width + right) * channels, top_ + roi.height + bottom, extra,
                                        placement);
    std::mt19937 engine(seed);
    image_->fill([&] { return morphValue<T>(engine); });
  }

  T* data() const {
    return reinterpret_cast<T*>(reinterpret_cast<uint8_t*>(image_->data()) + ptrdiff_t{top_} * step() +
                                ptrdiff_t{left_} * channels_ * ptrdiff_t{sizeof(T)});
  }
  int step() const { return image_->step(); }
  const Image<T>& image() const { return *image_; }

  // A pixel in memory, and the pixel that the border rule gives.
  T memory(int x, int y, int c) const { return image_->get(y + top_, (x + left_) * channels_ + c); }
  T pixel(int x, int y, int c) const {
    const Point p = resolve(x, y, roi_, border_);
    return memory(p.x, p.y, c);
  }

 private:
  RoiSize roi_;
  int channels_;
  BorderType border_;
  int left_, top_;
  std::unique_ptr<Image<T>> image_;
};

template <class T>
struct MorphMember {
  using Filter = std::function<Status(const T*, int, T*, int, RoiSize, BorderType, const MorphBorderSpec*, uint8_t*)>;

  const char* name;
  int channels;
  Status (*getSize)(int, RoiSize, int*, int*);
  Status (*init)(int, const uint8_t*, RoiSize, MorphBorderSpec*, uint8_t*);
  Filter erode, dilate;
};

// A specification and a work buffer.
class MorphWork {
 public:
  template <class T>
  MorphWork(const MorphMember<T>& member, int roiWidth, const Mask& mask, Placement placement) {
    int specSize = 0, bufferSize = 0;
    EXPECT_EQ(member.getSize(roiWidth, mask.size(), &specSize, &bufferSize), StatusOk);
    if (sizeof(T) == 2) placement.shift *= 4;  // the specification stands at a multiple of 4
    spec_ = std::make_unique<GuardedBlock>(static_cast<size_t>(specSize), placement);
    buffer_ = std::make_unique<GuardedBlock>(static_cast<size_t>(bufferSize), placement);
    EXPECT_EQ(member.init(roiWidth, mask.members.data(), mask.size(), spec(), buffer()), StatusOk);
  }

  MorphBorderSpec* spec() const { return reinterpret_cast<MorphBorderSpec*>(spec_->start()); }
  uint8_t* buffer() const { return buffer_->start(); }
  size_t specSize() const { return spec_->size(); }
  std::vector<uint8_t> specBytes() const { return spec_->bytes(); }
  std::vector<uint8_t> bufferBytes() const { return buffer_->bytes(); }

  int32_t word(int i) const {
    int32_t value;
    memcpy(&value, spec_->start() + 4 * i, sizeof value);
    return value;
  }
  void setWord(int i, int32_t value) const { memcpy(spec_->start() + 4 * i, &value, sizeof value); }

  // What a word refers to: an address on 32-bit builds, else an offset.
  const uint8_t* target(int i) const {
    const auto value = static_cast<uint32_t>(word(i));
    return sizeof(void*) == 4 ? reinterpret_cast<const uint8_t*>(uintptr_t{value}) : spec_->start() + value;
  }

 private:
  std::unique_ptr<GuardedBlock> spec_, buffer_;
};

#define ZVP_MORPH_MEMBER(T, CHANNELS, NAME, VALUE)                                                                \
  MorphMember<T> {                                                                                                \
#NAME, CHANNELS, zvpiMorphologyBorderGetSize_##NAME, zvpiMorphologyBorderInit_##NAME,                           \
        [](const T* src, int srcStep, T* dst, int dstStep, RoiSize roi, BorderType border,                          \
           const MorphBorderSpec* spec, uint8_t* buffer) {                                                          \
          return zvpiErodeBorder_##NAME(src, srcStep, dst, dstStep, roi, border, VALUE, spec, buffer);              \
        },                                                                                                          \
        [](const T* src, int srcStep, T* dst, int dstStep, RoiSize roi, BorderType border,                          \
           const MorphBorderSpec* spec, uint8_t* buffer) {                                                          \
          return zvpiDilateBorder_##NAME(src, srcStep, dst, dstStep, roi, border, VALUE, spec, buffer);             \
        } \
  }

// Calls f with every member of one element per channel.
template <class F>
void forEachMorphMember(F f) {
  static const uint8_t bytes[] = {1, 2, 3, 4};
  f(ZVP_MORPH_MEMBER(uint8_t, 1, 8u_C1R, 77));
  f(ZVP_MORPH_MEMBER(uint8_t, 3, 8u_C3R, nullptr));
  f(ZVP_MORPH_MEMBER(uint8_t, 4, 8u_C4R, bytes));
  f(ZVP_MORPH_MEMBER(uint16_t, 1, 16u_C1R, 0));
  f(ZVP_MORPH_MEMBER(int16_t, 1, 16s_C1R, -32768));
  f(ZVP_MORPH_MEMBER(float, 1, 32f_C1R, -1e30f));
  f(ZVP_MORPH_MEMBER(float, 3, 32f_C3R, nullptr));
  f(ZVP_MORPH_MEMBER(float, 4, 32f_C4R, nullptr));
}

}  // namespace zvp::test
