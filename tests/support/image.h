// Images that stand against inaccessible pages: a read or write past the end faults, a write between rows is noticed.
#pragma once

#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <random>
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

// Accessible pages between two inaccessible ones; the block of interest lies at one end of them.
class GuardedBlock {
 public:
  GuardedBlock(size_t bytes, Placement placement) : size_(bytes) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    inner_ = (bytes + static_cast<size_t>(placement.shift) + page - 1) / page * page;
    total_ = inner_ + 2 * page;
    map_ = static_cast<uint8_t*>(mmap(nullptr, total_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    if (map_ == MAP_FAILED || mprotect(map_ + page, inner_, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
    const auto shift = static_cast<size_t>(placement.shift);
    start_ = map_ + page + (placement.atEnd ? inner_ - bytes - shift : shift);
    memset(map_ + page, kCanary, inner_);
  }
  GuardedBlock(const GuardedBlock&) = delete;
  GuardedBlock& operator=(const GuardedBlock&) = delete;
  ~GuardedBlock() { munmap(map_, total_); }

  uint8_t* start() const { return start_; }
  size_t size() const { return size_; }

  // All accessible bytes, those around the block included.
  std::vector<uint8_t> bytes() const {
    const uint8_t* first = map_ + (total_ - inner_) / 2;
    return {first, first + inner_};
  }

  static constexpr uint8_t kCanary = 0xa5;

 private:
  uint8_t *map_, *start_;
  size_t size_, inner_, total_;
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
               placement) {}

  T* data() const { return reinterpret_cast<T*>(block_.start()); }
  int step() const { return step_; }
  int width() const { return width_; }
  int height() const { return height_; }

  T get(int y, int x) const {
    T value;
    memcpy(&value, address(y, x), sizeof value);
    return value;
  }
  void set(int y, int x, T value) const { memcpy(address(y, x), &value, sizeof value); }

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
    for (int y = 0; y + 1 < height_; ++y) {
      const uint8_t* end = address(y, width_);
      for (const uint8_t* p = end; p < address(y + 1, 0); ++p)
        if (*p != GuardedBlock::kCanary) return false;
    }
    return true;
  }

 private:
  uint8_t* address(int y, int x) const {
    return block_.start() + ptrdiff_t{y} * step_ + ptrdiff_t{x} * ptrdiff_t{sizeof(T)};
  }

  int width_, height_, step_;
  GuardedBlock block_;
};

// Equal bit patterns; with anyNan also two NaNs of any payload.
template <class T>
bool sameBits(T a, T b, bool anyNan = false) {
  if constexpr (std::is_floating_point_v<T>)
    if (anyNan && a != a && b != b) return true;
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
  if (!image.onlyRowsWritten()) return ::testing::AssertionFailure() << "bytes between the rows were written";
  return ::testing::AssertionSuccess();
}

// Values of T that find faults: all bits random, or one of the type's extremes; floats with infinities, signed zeros
// and one NaN.
template <class T>
class Values {
 public:
  explicit Values(unsigned seed) : engine_(seed) {}

  T operator()() {
    const uint64_t bits = engine_();
    if constexpr (std::is_floating_point_v<T>) {
      constexpr T kInf = std::numeric_limits<T>::infinity(), kNan = std::numeric_limits<T>::quiet_NaN();
      constexpr T kSpecial[] = {kInf, -kInf, T(0), -T(0), kNan, std::numeric_limits<T>::max()};
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
