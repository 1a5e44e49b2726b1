// Masks, the members of the morphology families as tables, prepared masks and buffers of exactly the reported size
// against inaccessible pages, and the plain model of erosion and dilation.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

#include "support/border.h"
#include "support/image.h"
#include "zvpcv/morphology.h"

namespace zvp::test {

struct Mask {
  int width, height;
  std::vector<uint8_t> members;

  RoiSize size() const { return {width, height}; }
  bool has(int x, int y) const { return members[static_cast<size_t>(y * width + x)] != 0; }
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
  masks.push_back(drawn({"....", "....", "..xx", "..xx"}));               // below and right of the anchor
  masks.push_back(drawn({"xx...", "xx...", ".....", ".....", "....."}));  // above and left of it
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

// Pixels around a region that may be read where they are in memory; `reach` filters one after another.
struct Room {
  int left, top, right, bottom;

  Room(BorderType border, const Mask& mask, Point anchor, int reach) {
    const auto room = [&](BorderType flag, int pixels) { return isInMemory(border, flag) ? reach * pixels : 0; };
    left = room(BorderLeftInMemory, anchor.x);
    top = room(BorderTopInMemory, anchor.y);
    right = room(BorderRightInMemory, mask.width - anchor.x - 1);
    bottom = room(BorderBottomInMemory, mask.height - anchor.y - 1);
  }
};

// Erosion or dilation of a region, row by row; read(x, y) gives a pixel in memory.
template <class T, class Read>
std::vector<T> plainFilter(const Mask& mask, Point anchor, bool erode, RoiSize roi, BorderType border, Read read) {
  const auto pixel = [&](int x, int y) {
    return borderedPixel(x, y, roi, border, T{}, [&](int64_t column, int64_t row) -> T {
      return read(static_cast<int>(column), static_cast<int>(row));
    });
  };
  std::vector<Point> members;
  for (int j = 0; j < mask.height; ++j)
    for (int i = 0; i < mask.width; ++i)
      if (mask.has(i, j)) members.push_back({i - anchor.x, j - anchor.y});
  if (members.empty()) members = {{0, 0}};
  std::vector<T> result;
  for (int y = 0; y < roi.height; ++y) {
    for (int x = 0; x < roi.width; ++x) {
      T value = pixel(x + members[0].x, y + members[0].y);
      for (const Point m : members) {
        const T next = pixel(x + m.x, y + m.y);
        value = (erode ? value < next : value > next) ? value : next;
      }
      result.push_back(value);
    }
  }
  return result;
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
  Source(RoiSize roi, const Mask& mask, Point anchor, int channels, BorderType border, unsigned seed, int reach = 1)
      : Source(roi, Room(border, mask, anchor, reach), channels, seed) {}

  Data<T> data() const { return image_.data(room_.top, room_.left * channels_); }
  int step() const { return image_.step(); }
  RoiSize roi() const { return roi_; }
  int channels() const { return channels_; }
  T memory(int x, int y, int c) const { return image_.get(y + room_.top, (x + room_.left) * channels_ + c); }
  std::vector<uint8_t> bytes() const { return image_.bytes(); }

 private:
  Source(RoiSize roi, Room room, int channels, unsigned seed)
      : roi_(roi),
        room_(room),
        channels_(channels),
        image_((room.left + roi.width + room.right) * channels, room.top + roi.height + room.bottom,
               static_cast<int>(seed % 3 * sizeof(T)), somePlacement(static_cast<int>(seed))) {
    std::mt19937 engine(seed);
    image_.fill([&] { return morphValue<T>(engine); });
  }

  RoiSize roi_;
  Room room_;
  int channels_;
  Image<T> image_;
};

// run(dst) filters src to dst, which may be src itself; plain(read) gives the results of one channel.
template <class T, class Run, class Plain>
void expectResults(const Source<T>& src, unsigned seed, Run run, Plain plain) {
  const int channels = src.channels(), width = src.roi().width;
  std::vector<std::vector<T>> want;
  for (int c = 0; c < channels; ++c) want.push_back(plain([&, c](int x, int y) { return src.memory(x, y, c); }));
  const Image<T> dst(width * channels, src.roi().height, static_cast<int>(seed % 2 * sizeof(T)),
                     somePlacement(static_cast<int>(seed)));
  const auto before = src.bytes();
  ASSERT_EQ(run(dst), StatusOk);
  ASSERT_TRUE(matches(dst, [&](int y, int i) {
    return want[static_cast<size_t>(i % channels)][static_cast<size_t>(y * width + i / channels)];
  }));
  ASSERT_EQ(src.bytes(), before);
  ASSERT_EQ(run(src), StatusOk);
  ASSERT_TRUE(matches(dst, [&](int y, int i) { return src.memory(i / channels, y, i % channels); })) << "in place";
}

inline int channelsOf(const std::string& name) { return name[name.find('C') + 1] - '0'; }

// Extent: what the objects of a family are made for, a width or a size.
template <class T, class Spec, class Extent>
struct MorphMember {
  std::string name;
  Status (*getSize)(Extent, RoiSize, int*, int*);
  Status (*init)(Extent, const uint8_t*, RoiSize, Spec*, uint8_t*);
  std::vector<std::function<Status(const T*, int, T*, int, RoiSize, BorderType, const Spec*, uint8_t*)>> operations;
};

// The border value means nothing to these families.
template <class T, class Value, class Spec, class Extent>
auto morphMember(
    const char* name, Status (*getSize)(Extent, RoiSize, int*, int*),
    Status (*init)(Extent, const uint8_t*, RoiSize, Spec*, uint8_t*),
    std::initializer_list<Status (*)(const T*, int, T*, int, RoiSize, BorderType, Value, const Spec*, uint8_t*)>
        operations) {
  Value value{};
  if constexpr (!std::is_pointer_v<Value>) value = 77;
  MorphMember<T, Spec, Extent> member{name, getSize, init, {}};
  for (const auto f : operations)
    member.operations.push_back(
        [=](const T* src, int srcStep, T* dst, int dstStep, RoiSize roi, BorderType border, const Spec* spec,
            uint8_t* buffer) { return f(src, srcStep, dst, dstStep, roi, border, value, spec, buffer); });
  return member;
}

// A prepared mask and a work buffer; the buffer that Init saw is gone.
template <class Spec>
class MorphWork {
 public:
  template <class T, class Extent>
  MorphWork(const MorphMember<T, Spec, Extent>& member, std::type_identity_t<Extent> extent, const Mask& mask,
            Placement placement = {}) {
    EXPECT_EQ(member.getSize(extent, mask.size(), &specSize, &bufferSize), StatusOk);
    spec_ = std::make_unique<GuardedBlock>(static_cast<size_t>(specSize), placement);
    buffer_ = std::make_unique<GuardedBlock>(static_cast<size_t>(bufferSize), placement);
    const GuardedBlock first(static_cast<size_t>(bufferSize), {});
    EXPECT_EQ(member.init(extent, mask.members.data(), mask.size(), spec(), first.start()), StatusOk);
    firstBytes = {first.start(), first.start() + bufferSize};
  }

  Spec* spec() const { return reinterpret_cast<Spec*>(spec_->start()); }
  uint8_t* buffer() const { return buffer_->start(); }
  std::vector<uint8_t> specBytes() const { return spec_->bytes(); }
  std::vector<uint8_t> bufferBytes() const { return buffer_->bytes(); }

  template <class Filter, class Src, class Dst>
  Status run(const Filter& filter, const Src& src, const Dst& dst, RoiSize roi, BorderType border) const {
    const Frozen frozen(*spec_);
    return filter(src.data(), src.step(), dst.data(), dst.step(), roi, border, spec(), buffer());
  }

  // Words of the prepared mask, or of the inner one that stands `offset` bytes behind its start.
  int32_t word(int i, int offset = 0) const {
    int32_t value;
    memcpy(&value, spec_->start() + offset + 4 * i, sizeof value);
    return value;
  }
  void setWord(int i, int32_t value) const { memcpy(spec_->start() + 4 * i, &value, sizeof value); }

  // What a word refers to: an address on 32-bit builds, else an offset.
  const uint8_t* target(int i, int offset = 0) const {
    const auto value = static_cast<uint32_t>(word(i, offset));
    return sizeof(void*) == 4 ? reinterpret_cast<const uint8_t*>(uintptr_t{value}) : spec_->start() + offset + value;
  }

  int specSize = 0, bufferSize = 0;
  std::vector<uint8_t> firstBytes;  // the buffer that Init saw

 private:
  std::unique_ptr<GuardedBlock> spec_, buffer_;
};

// Images of bits: any number of them in front of the region's first.
struct BitImage {
  int step, bits;
  GuardedBlock block;

  BitImage(int rowBits, int height, int extra, Placement placement)
      : step((rowBits + 7) / 8 + extra),
        bits(rowBits),
        block(static_cast<size_t>(step * (height - 1) + (rowBits + 7) / 8), placement, GuardedBlock::kCanary) {}

  uint8_t* row(int y) const { return block.start() + ptrdiff_t{y} * step; }
  int get(int bit, int y) const { return row(y)[bit >> 3] >> (7 - (bit & 7)) & 1; }
};

struct BitCase {
  Mask mask;
  RoiSize roi;
  BorderType border;
  int srcOffset, dstOffset;
  unsigned seed;
};

// operation(...) on bits; plain(read) gives the results, one value per pixel.
template <class Operation, class Spec, class Plain>
void expectBits(const BitCase& c, int reach, Operation operation, const MorphWork<Spec>& work, Plain plain) {
  const Room room(c.border, c.mask, c.mask.centre(), reach);
  const Placement placement = somePlacement(static_cast<int>(c.seed));
  const int left = room.left + c.srcOffset, height = room.top + c.roi.height + room.bottom;
  const BitImage src(left + c.roi.width + room.right, height, static_cast<int>(c.seed % 2), placement);
  const BitImage dst(c.dstOffset + c.roi.width, c.roi.height, 0, placement);
  std::mt19937 engine(c.seed);
  for (int y = 0; y < height; ++y)
    for (int i = 0; i < (src.bits + 7) / 8; ++i)
      src.row(y)[i] = static_cast<uint8_t>(c.seed % 2 == 0 ? engine() | engine() : engine() & engine());
  const Frozen frozen(src.block);
  ASSERT_EQ(operation(src.row(room.top), src.step, left, dst.row(0), dst.step, c.dstOffset, c.roi, c.border, 1,
                      work.spec(), work.buffer()),
            StatusOk);
  const auto want = plain([&](int x, int y) { return src.get(left + x, room.top + y); });
  for (int y = 0; y < c.roi.height; ++y) {
    for (int bit = 0; bit < (dst.bits + 7) / 8 * 8; ++bit) {
      const int x = bit - c.dstOffset, untouched = GuardedBlock::kCanary >> (7 - (bit & 7)) & 1;
      const bool inside = x >= 0 && x < c.roi.width;
      ASSERT_EQ(dst.get(bit, y), inside ? want[static_cast<size_t>(y * c.roi.width + x)] : untouched)
          << "mask " << c.mask.width << "x" << c.mask.height << " roi " << c.roi.width << "x" << c.roi.height
          << " border " << c.border << " offsets " << c.srcOffset << " " << c.dstOffset << " pixel " << x << ", " << y;
    }
  }
}

// Calls f with every member of one element per channel.
template <class F>
void forEachMorphMember(F f) {
#define ZVP_MEMBER(NAME)                                                                    \
  f(morphMember(#NAME, zvpiMorphologyBorderGetSize_##NAME, zvpiMorphologyBorderInit_##NAME, \
                {zvpiErodeBorder_##NAME, zvpiDilateBorder_##NAME}))
  ZVP_MEMBER(8u_C1R);
  ZVP_MEMBER(8u_C3R);
  ZVP_MEMBER(8u_C4R);
  ZVP_MEMBER(16u_C1R);
  ZVP_MEMBER(16s_C1R);
  ZVP_MEMBER(32f_C1R);
  ZVP_MEMBER(32f_C3R);
  ZVP_MEMBER(32f_C4R);
#undef ZVP_MEMBER
}

}  // namespace zvp::test
