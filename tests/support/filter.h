// Plain models of the filters' arithmetic, and the kernels and divisors that find faults in it.
#pragma once

#include <math.h>

#include <limits>
#include <vector>

#include "support/image.h"

namespace zvp::test {

inline constexpr int kKernelSizes[] = {1, 2, 3, 4, 5, 6, 7, 9, 14, 31};
inline constexpr int kDivisors[] = {1, -1, 2, 16, 3, -7, 256, 1000, INT32_MIN};

// Taps of the wanted size of sum: weak ones keep sums of bytes in 16 bits, strong ones (two taps and more) add up to
// 65535 or more in absolute value.
enum class Strength { kWeak, kMedium, kStrong };
inline constexpr Strength kStrengths[] = {Strength::kWeak, Strength::kMedium, Strength::kStrong};

// How a member computes.
enum class Kind { kInteger, kLow, kFloat };

inline std::vector<int16_t> randomTaps(unsigned seed, int size, Strength strength) {
  std::mt19937 engine(seed);
  const int reach = strength == Strength::kWeak ? 100 / size + 1 : strength == Strength::kMedium ? 65000 / size / 2 : 0;
  std::vector<int16_t> taps;
  for (int i = 0; i < size; ++i) {
    const int value = static_cast<int>(engine() % (2 * static_cast<unsigned>(reach) + 1)) - reach;
    const int sign = engine() % 2 == 0 ? 1 : -1;
    taps.push_back(static_cast<int16_t>(reach > 0 ? value : sign * (32767 - static_cast<int>(engine() % 500))));
  }
  if (strength == Strength::kStrong) taps[0] = taps[static_cast<size_t>(size) - 1] = INT16_MIN;
  return taps;
}

inline std::vector<float> randomFloatTaps(unsigned seed, int size) {
  std::mt19937 engine(seed);
  std::vector<float> taps;
  for (int i = 0; i < size; ++i) taps.push_back(static_cast<float>(static_cast<int32_t>(engine())) / 1e9f);
  return taps;
}

template <class Tap>
std::vector<Tap> tapsFor(unsigned seed, int size, Strength strength) {
  if constexpr (std::is_same_v<Tap, float>) {
    return randomFloatTaps(seed, size);
  } else {
    return randomTaps(seed, size, strength);
  }
}

// The checks that the buffer-size queries of both pipelines make.
inline void expectQueryChecks(Status (*bufferSize)(RoiSize, int, int*)) {
  int size = 77;
  EXPECT_EQ(bufferSize({0, 0}, 0, nullptr), ErrNullPtr);
  EXPECT_EQ(bufferSize({0, 1}, 1, &size), ErrSize);
  EXPECT_EQ(bufferSize({1, 0}, 1, &size), ErrSize);
  EXPECT_EQ(bufferSize({1, 1}, 0, &size), ErrSize);
  EXPECT_EQ(size, 77);
}

// pixel(i) is what tap i meets.
template <class Pixel>
float plainFloat(const std::vector<float>& taps, Pixel pixel) {
  float sum = taps[0] * static_cast<float>(pixel(0));
  for (size_t i = 1; i < taps.size(); ++i) {
    const float product = taps[i] * static_cast<float>(pixel(static_cast<int>(i)));
    sum = sum + product;
  }
  return sum;
}

template <class Out, class Pixel>
Out plainInteger(const std::vector<int16_t>& taps, int divisor, bool truncated, Pixel pixel) {
  const float reciprocal = 1.0f / static_cast<float>(divisor);
  int64_t absolute = 0, exact = 0;
  std::vector<float> scaledTaps;
  for (size_t i = 0; i < taps.size(); ++i) {
    absolute += abs(taps[i]);
    exact += int64_t{taps[i]} * pixel(static_cast<int>(i));
    scaledTaps.push_back(static_cast<float>(taps[i]) * reciprocal);
  }
  const double scaled =
      absolute < 65535 ? static_cast<float>(exact) * reciprocal : double{plainFloat(scaledTaps, pixel)};
  const double whole = truncated ? trunc(scaled) : nearbyint(scaled);
  constexpr double kLowest = std::numeric_limits<Out>::min(), kHighest = std::numeric_limits<Out>::max();
  return static_cast<Out>(fmin(fmax(whole, kLowest), kHighest));
}

template <class Pixel>
int16_t plainLow(const std::vector<int16_t>& taps, int divisor, bool unsaturated, Pixel pixel) {
  const auto factor = static_cast<int64_t>(trunc(16384.0 / divisor));
  int64_t sum = 0;
  for (size_t i = 0; i < taps.size(); ++i) sum += int64_t{taps[i]} * pixel(static_cast<int>(i));
  if (unsaturated) return static_cast<int16_t>((static_cast<int32_t>(sum) * factor) >> 14);
  const auto wrapped = static_cast<int16_t>(sum);
  if (divisor == 1) return wrapped;
  const int64_t scaled = (wrapped * factor) >> 14;
  return static_cast<int16_t>(scaled > INT16_MAX ? INT16_MAX : scaled);
}

// Finite values, so that no sum is a NaN; among them both zeros.
template <class T>
class FiniteValues {
 public:
  explicit FiniteValues(unsigned seed) : values_(seed) {}

  T operator()() {
    if constexpr (std::is_same_v<T, float>) {
      const T value = values_();
      return isfinite(value) && fabsf(value) < 1e30f ? value : 0.25f;
    } else {
      return values_();
    }
  }

 private:
  Values<T> values_;
};

}  // namespace zvp::test
