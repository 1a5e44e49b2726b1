// The members of both pipelines in one shape, plain models of their arithmetic, and the kernels and divisors that find
// faults in it.
#pragma once

#include <math.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "support/image.h"
#include "zvpcv/filter.h"

namespace zvp::test {

inline constexpr int kKernelSizes[] = {1, 2, 3, 4, 5, 6, 7, 9, 14, 31};
inline constexpr int kDivisors[] = {1, -1, 2, 4,  8, 16,  32,   64,    128,   256,     512,      -2,
                                    3, 5,  6, -7, 9, 100, 1000, 16384, 16385, 1 << 30, INT32_MIN};

// Taps of the wanted size of sum: weak ones keep sums of bytes in 16 bits, strong ones (two taps and more) add up to
// 65535 or more in absolute value.
enum class Strength { kWeak, kMedium, kStrong };
inline constexpr Strength kStrengths[] = {Strength::kWeak, Strength::kMedium, Strength::kStrong};

// Arguments: all those of a call.
template <class T_, class Out_, class Tap_, class Arguments_>
struct FilterMember {
  using T = T_;
  using Out = Out_;
  using Tap = Tap_;
  using Arguments = Arguments_;

  std::string name;
  Status (*bufferSize)(RoiSize, int, int*);
  std::function<Status(const Arguments&)> filter;

  static constexpr bool kIsFloat = std::is_same_v<Tap, float>;
  bool isLow() const { return name.starts_with("Low"); }
  int channels() const { return name.ends_with("C3R") ? 3 : 1; }

  // Work memory of exactly the reported size.
  GuardedBlock work(RoiSize roi, int kernelSize, Placement placement) const {
    int size = 0;
    EXPECT_EQ(bufferSize(roi, kernelSize, &size), StatusOk);
    return GuardedBlock(static_cast<size_t>(size), placement);
  }
};

template <class Tap>
std::vector<Tap> tapsFor(unsigned seed, int size, Strength strength) {
  std::mt19937 engine(seed);
  const int reach = strength == Strength::kWeak ? 100 / size + 1 : strength == Strength::kMedium ? 65000 / size / 2 : 0;
  std::vector<Tap> taps;
  for (int i = 0; i < size; ++i) {
    if constexpr (std::is_same_v<Tap, float>) {
      taps.push_back(static_cast<float>(static_cast<int32_t>(engine())) / 1e9f);
    } else {
      const int value = static_cast<int>(engine() % (2 * static_cast<unsigned>(reach) + 1)) - reach;
      const int sign = engine() % 2 == 0 ? 1 : -1;
      taps.push_back(static_cast<int16_t>(reach > 0 ? value : sign * (32767 - static_cast<int>(engine() % 500))));
    }
  }
  if (!std::is_same_v<Tap, float> && strength == Strength::kStrong) taps.front() = taps.back() = INT16_MIN;
  return taps;
}

// What the queries of work memory report.
template <class Member, class Expected>
void expectBufferSizes(const Member& member, Expected expected) {
  SCOPED_TRACE(member.name);
  int size = -1;
  for (const int width : {1, 3, 4, 5, 8, 9, 10, 1000, 1001, 10000})
    for (const int k : {1, 2, 3, 31, 100000}) {
      EXPECT_EQ(member.bufferSize({width, 7}, k, &size), StatusOk);
      EXPECT_EQ(size, expected(width, k)) << width << " " << k;
    }
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

// An output of any member. Where it is an end output, integers are truncated, those of the Low members not saturated.
template <class Out, class Tap, class Pixel>
Out plainOutput(const std::vector<Tap>& taps, int divisor, bool isLow, bool isEnd, Pixel pixel) {
  if constexpr (std::is_same_v<Tap, float>) {
    return plainFloat(taps, pixel);
  } else {
    return isLow ? static_cast<Out>(plainLow(taps, divisor, isEnd, pixel))
                 : plainInteger<Out>(taps, divisor, isEnd, pixel);
  }
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
