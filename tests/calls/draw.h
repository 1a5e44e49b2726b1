// Where the numbers of a call come from.
#pragma once

#include <zvpcv/types.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <random>
#include <utility>

namespace zvp::calls {

constexpr double kMostBytes = 1 << 20;            // of an image
constexpr double kMostScratch = 16 * kMostBytes;  // of work memory

class Draw {
 public:
  static constexpr int kSomePadding = -1;  // else so many bytes behind every row
  static constexpr int kFarPadding = 0x50000000;

  virtual ~Draw() = default;

  virtual std::int64_t integer(std::int64_t low, std::int64_t high) = 0;

  // A wild draw gives what a call must refuse, too, and any bits as pixels.
  bool isWild() const { return isWild_; }

  bool oneIn(int n) { return integer(1, n) == n; }
  bool wildly(int n) { return isWild_ && oneIn(n); }
  template <class T>
  T pick(std::initializer_list<T> values) {
    return values.begin()[integer(0, std::int64_t(values.size()) - 1)];
  }

  // low..high; wildly an edge of int.
  int number(int low, int high) {
    if (wildly(32)) return pick({INT_MIN, INT_MIN + 1, -1, 0, 1 << 24, 1 << 30, INT_MAX - 1, INT_MAX});
    return static_cast<int>(integer(low, high));
  }

  // Mostly near 0 .. 100, sometimes any bits.
  float real() {
    const auto bits = static_cast<std::uint32_t>(integer(0, UINT32_MAX));
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return oneIn(4) ? value : static_cast<float>(static_cast<std::int32_t>(bits) % 20000) / 128;
  }

  // Of a region.
  RoiSize size() { return given_.width > 0 && !isWild_ ? given_ : otherSize(80, 12); }
  RoiSize give(RoiSize size) { return std::exchange(given_, size); }  // to all regions from now on
  RoiSize otherSize(int mostWidth, int mostHeight) {
    const int width = number(1, mostWidth);
    return {width, number(1, mostHeight)};
  }

  Rect rect() {
    const int x = number(0, 9), y = number(0, 9), width = number(1, 12);
    return {x, y, width, number(1, 12)};
  }

  // Rows lie so far apart that there is no memory between them.
  bool isFar() const { return padding_ == kFarPadding; }

  // For rows that are no shorter than `least` bytes.
  int step(int least, int element) {
    const int slack = INT_MAX - least;
    if (padding_ >= 0) return least + (slack < padding_ ? slack : padding_);
    switch (isWild_ ? integer(0, 40) : 40) {
      case 0:
        return least - 1;
      case 1:
        return least + (slack < 1 ? slack : 1);
      case 2:
        return -least;
      case 3:
        return number(-1, 1);
      default:
        const int padding = element * static_cast<int>(integer(0, 5));
        return least + (slack < padding ? slack : padding);
    }
  }

 protected:
  explicit Draw(bool isWild, RoiSize given = {}, int padding = kSomePadding)
      : isWild_(isWild), given_(given), padding_(padding) {}

 private:
  bool isWild_;
  RoiSize given_;  // of all regions, if not empty
  int padding_;
};

// Valid arguments only, the same ones for the same seed everywhere.
class Seeded : public Draw {
 public:
  explicit Seeded(unsigned seed, RoiSize size = {}, int padding = kSomePadding)
      : Draw(false, size, padding), engine_(seed) {}

  std::int64_t integer(std::int64_t low, std::int64_t high) override {
    return low + static_cast<std::int64_t>(engine_() % static_cast<std::uint64_t>(high - low + 1));
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace zvp::calls
