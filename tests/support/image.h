// Images that stand against inaccessible pages: a read or write past the end faults, a write between rows is noticed.
#pragma once

#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <random>
#include <tuple>
#include <vector>

#include "zvpcv/types.h"

namespace zvp::test {

// Which side of the block touches the inaccessible page, and by how many bytes it keeps away from it.
struct Placement {
  bool atEnd = true;
  int shift = 0;
};
inline const std::vector<Placement> kPlacements = {{true, 0}, {false, 0}, {true, 1}, {false, 3}};
inline Placement somePlacement(int k) { return kPlacements[static_cast<size_t>(k) % kPlacements.size()]; }

// Accessible pages between two inaccessible ones; the block of interest lies at one end of them. What is accessible
// around it is to stay as it was.
class GuardedBlock {
 public:
  static constexpr uint8_t kCanary = 0xa5;  // what surrounds the block
  static constexpr uint8_t kPoison = 0xff;  // what it holds at first: NaNs and negative numbers

  GuardedBlock(size_t bytes, Placement placement, uint8_t contents = kPoison) : size_(bytes) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    inner_ = (bytes + static_cast<size_t>(placement.shift) + page - 1) / page * page;
    total_ = inner_ + 2 * page;
    map_ = static_cast<uint8_t*>(mmap(nullptr, total_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
    if (map_ == MAP_FAILED || mprotect(first(), inner_, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
    const auto shift = static_cast<size_t>(placement.shift);
    start_ = first() + (placement.atEnd ? inner_ - bytes - shift : shift);
    if (isSparse()) return;
    memset(first(), kCanary, inner_);
    memset(start_, contents, bytes);
  }
  GuardedBlock(const GuardedBlock&) = delete;
  GuardedBlock& operator=(const GuardedBlock&) = delete;
  ~GuardedBlock() {
    EXPECT_TRUE(surroundingsAreIntact()) << "bytes around a block of " << size_ << " were written";
    munmap(map_, total_);
  }

  uint8_t* start() const { return start_; }
  const GuardedBlock& block() const { return *this; }

  // Such a block takes memory only where it is written, and is zero elsewhere.
  bool isSparse() const { return size_ > size_t{1} << 30; }

  // All accessible bytes, those around the block included.
  std::vector<uint8_t> bytes() const { return {first(), first() + inner_}; }

  bool isCanary(const uint8_t* from, const uint8_t* end) const {
    return isSparse() || from >= end || (*from == kCanary && memcmp(from, from + 1, size_t(end - from) - 1) == 0);
  }
  bool surroundingsAreIntact() const { return isCanary(first(), start_) && isCanary(start_ + size_, first() + inner_); }

  // More or fewer users. The memory can be written unless all its users are readers.
  void use(int readers, int writers) const {
    const bool frozen = readers_ > 0 && writers_ == 0;
    readers_ += readers, writers_ += writers;
    const bool freeze = readers_ > 0 && writers_ == 0;
    if (freeze != frozen && mprotect(first(), inner_, freeze ? PROT_READ : PROT_READ | PROT_WRITE) != 0)
      throw std::bad_alloc();
  }

 private:
  uint8_t* first() const { return map_ + (total_ - inner_) / 2; }

  uint8_t *map_, *start_;
  size_t size_, inner_, total_;
  mutable int readers_ = 0, writers_ = 0;
};

// Blocks and images that can only be read as long as this lives.
class Frozen {
 public:
  template <class... Operand>
  explicit Frozen(const Operand&... operands) : blocks_{&operands.block()...} {
    for (const GuardedBlock* block : blocks_) block->use(1, 0);
  }
  Frozen(const Frozen&) = delete;
  Frozen& operator=(const Frozen&) = delete;
  ~Frozen() {
    for (const GuardedBlock* block : blocks_) block->use(-1, 0);
  }

 private:
  std::vector<const GuardedBlock*> blocks_;
};

// The address of an operand as the argument of a call. While the call runs, a block that it takes as const can only be
// read, unless it takes the same block as its destination, too.
template <class T>
class Data {
 public:
  Data(const GuardedBlock& block, T* address) : block_(block), address_(address) {}
  Data(const Data& other) : Data(other.block_, other.address_) {}
  Data& operator=(const Data&) = delete;
  ~Data() { block_.use(-readers_, -writers_); }

  operator const T*() const {
    block_.use(1, 0);
    ++readers_;
    return address_;
  }
  operator T*() const {
    block_.use(0, 1);
    ++writers_;
    return address_;
  }
  operator const void*() const { return address_; }

 private:
  const GuardedBlock& block_;
  T* address_;
  mutable int readers_ = 0, writers_ = 0;
};

template <class T>
class Image {
 public:
  // `extra` bytes are added to the step of a tight row.
  Image(int elements, int height, int extra = 0, Placement placement = {})
      : width_(elements),
        height_(height),
        step_(elements * int{sizeof(T)} + extra),
        block_(static_cast<size_t>(step_) * static_cast<size_t>(height - 1) + static_cast<size_t>(elements) * sizeof(T),
               placement, GuardedBlock::kCanary) {}
  ~Image() { EXPECT_TRUE(onlyRowsWritten()); }

  Data<T> data(int y = 0, int x = 0) const { return {block_, address(y, x)}; }
  T* address(int y = 0, int x = 0) const { return reinterpret_cast<T*>(bytesAt(y, x)); }
  int step() const { return step_; }
  int width() const { return width_; }
  int height() const { return height_; }
  const GuardedBlock& block() const { return block_; }

  T get(int y, int x) const {
    T value;
    memcpy(&value, bytesAt(y, x), sizeof value);
    return value;
  }
  void set(int y, int x, T value) const { memcpy(bytesAt(y, x), &value, sizeof value); }

  template <class F>
  void draw(F pixel) const {
    for (int y = 0; y < height_; ++y)
      for (int x = 0; x < width_; ++x) set(y, x, static_cast<T>(pixel(y, x)));
  }
  template <class F>
  void fill(F next) const {
    draw([&next](int, int) { return next(); });
  }

  std::vector<uint8_t> bytes() const { return block_.bytes(); }

  // Whether nothing but the rows' own elements differs from a fresh image.
  bool onlyRowsWritten() const {
    for (int y = 0; y + 1 < height_; ++y)
      if (!block_.isCanary(bytesAt(y, width_), bytesAt(y + 1, 0))) return false;
    return block_.surroundingsAreIntact();
  }

 private:
  uint8_t* bytesAt(int y, int x) const {
    return block_.start() + ptrdiff_t{y} * step_ + ptrdiff_t{x} * ptrdiff_t{sizeof(T)};
  }

  int width_, height_, step_;
  GuardedBlock block_;
};

// call(data and step of each image, roi)
template <class F, class... T>
Status callOnImages(F call, RoiSize roi, const Image<T>&... images) {
  return std::apply(call, std::tuple_cat(std::tuple(images.data(), images.step())..., std::tuple(roi)));
}

// Equal bit patterns; with anyNan also two NaNs of any payload.
template <class T>
bool sameBits(T a, T b, bool anyNan = false) {
  if constexpr (std::is_floating_point_v<T>)
    if (anyNan && std::isnan(a) && std::isnan(b)) return true;
  return memcmp(&a, &b, sizeof a) == 0;
}

template <class T, class Expected>
::testing::AssertionResult matches(const Image<T>& image, Expected expected, bool anyNan = false) {
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const T want = expected(y, x), got = image.get(y, x);
      if (!sameBits(got, want, anyNan))
        return ::testing::AssertionFailure() << "at row " << y << ", column " << x << " of " << image.width() << "x"
                                             << image.height() << ": " << +got << " instead of " << +want;
    }
  }
  if (!image.onlyRowsWritten()) return ::testing::AssertionFailure() << "bytes around or between the rows were written";
  return ::testing::AssertionSuccess();
}

// Values of T that find faults: all bits random, or one of the type's extremes; floats with infinities, signed zeros,
// subnormal numbers and one NaN.
template <class T>
class Values {
 public:
  explicit Values(unsigned seed) : engine_(seed) {}

  T operator()() {
    const uint64_t bits = engine_();
    if constexpr (std::is_floating_point_v<T>) {
      using Limits = std::numeric_limits<T>;
      constexpr T kInf = Limits::infinity(), kNan = Limits::quiet_NaN(), kSubnormal = Limits::min() / 3;
      constexpr T kSpecial[] = {kInf, -kInf, 0, -T(0), kNan, Limits::max(), Limits::denorm_min(), -kSubnormal};
      if (bits % 16 == 0) return kSpecial[bits / 16 % std::size(kSpecial)];
      return static_cast<T>(static_cast<int32_t>(bits >> 32)) / static_cast<T>(1 << (bits % 31));
    } else {
      constexpr T kSpecial[] = {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), T(1)};
      if (bits % 4 == 0) return kSpecial[bits / 4 % std::size(kSpecial)];
      return static_cast<T>(bits >> 32);
    }
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace zvp::test
