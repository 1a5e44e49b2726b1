// Each operation of the vector vocabulary against the same operation on single elements, at every width of this build.
#include "simd/simd.h"

#include <algorithm>
#include <cmath>

#include "simd/fixed_point.h"
#include "simd/gather.h"
#include "simd/interleave.h"
#include "simd/transpose.h"
#include "support/image.h"

namespace zvp::simd {
namespace {

using test::sameBits;
using test::Values;

template <class T, int N>
struct Elements {
  T v[N];

  explicit Elements(unsigned seed) {
    Values<T> values(seed);
    for (T& e : v) e = values();
  }
  explicit Elements(Pack<T, N> pack) { store(v, pack); }
  Pack<T, N> pack() const { return load<Pack<T, N>>(v); }
};

template <int N>
using Width = std::integral_constant<int, N>;
template <class T, int N>
struct Of {};

template <int... N, class F>
void forWidths(F f) {
  (f(Width<N>{}), ...);
}
template <class... P, class F>
void forPacks(F f) {
  (f(P{}), ...);
}

template <class T, int N, class S, class F>
void expectConversion(F plain) {
  for (unsigned seed = 0; seed < 200; ++seed) {
    const Elements<S, N> from(seed);
    const Elements<T, N> to(convert<T>(from.pack()));
    for (int i = 0; i < N; ++i) ASSERT_TRUE(sameBits(to.v[i], plain(from.v[i]), true)) << from.v[i];
  }
}

TEST(Simd, Conversions) {
  forWidths<1, 4, lanes<double>>([]<int N>(Width<N>) {
    expectConversion<float, N, int32_t>([](int32_t v) { return static_cast<float>(v); });
    expectConversion<double, N, int32_t>([](int32_t v) { return static_cast<double>(v); });
    expectConversion<double, N, float>([](float v) { return static_cast<double>(v); });
    expectConversion<float, N, double>([](double v) { return static_cast<float>(v); });
    expectConversion<int64_t, N, int32_t>([](int32_t v) { return int64_t{v}; });
    const double halves[8] = {0.5, 1.5, 2.5, -0.5, -1.5, 2147483647.0, -2147483648.0, 3.49};
    const int32_t even[8] = {0, 2, 2, 0, -2, INT32_MAX, INT32_MIN, 3};
    const Elements<int32_t, N> rounded(convert<int32_t>(load<Pack<double, N>>(halves)));
    for (int i = 0; i < N; ++i) EXPECT_EQ(rounded.v[i], even[i]);
  });
  forWidths<4, lanes<float>>([]<int N>(Width<N>) {
    Elements<float, N> quarters(0);
    for (int i = 0; i < N; ++i) quarters.v[i] = 0.25f * static_cast<float>(7 * i - 20);
    const Elements<int32_t, N> rounded(nearest(quarters.pack()));
    for (int i = 0; i < N; ++i) EXPECT_EQ(rounded.v[i], std::nearbyint(quarters.v[i]));
  });
}

TEST(Simd, LoadsThatWiden) {
  forWidths<1, 4, lanes<float>>([]<int N>(Width<N>) {
    for (int set = 0; set < N; ++set) {
      uint8_t bytes[N] = {};
      bytes[set] = static_cast<uint8_t>(1 << set % 8);
      const Elements<int32_t, N> mask(loadNonZero<N>(bytes));
      for (int i = 0; i < N; ++i) ASSERT_EQ(mask.v[i], i == set ? -1 : 0);
    }
    forPacks<Of<uint8_t, N>, Of<int8_t, N>, Of<uint16_t, N>, Of<int16_t, N>>([]<class S, int n>(Of<S, n>) {
      for (unsigned seed = 0; seed < 50; ++seed) {
        const Elements<S, n> from(seed);
        const Elements<int32_t, n> integers(loadAs<int32_t, n>(from.v));
        const Elements<float, n> floats(loadAs<float, n>(from.v));
        for (int i = 0; i < n; ++i) {
          ASSERT_EQ(integers.v[i], from.v[i]);
          ASSERT_EQ(floats.v[i], from.v[i]);
        }
      }
    });
  });
}

TEST(Simd, MaskBits) {
  forPacks<Of<uint8_t, 16>, Of<uint8_t, lanes<uint8_t>>, Of<int16_t, 8>, Of<int16_t, lanes<int16_t>>, Of<int32_t, 4>,
           Of<int32_t, lanes<int32_t>>, Of<float, 4>, Of<float, lanes<float>>, Of<float, 1>>(
      []<class T, int N>(Of<T, N>) {
        for (unsigned seed = 0; seed < 50; ++seed) {
          const Elements<T, N> a(seed), b(seed + 1);
          const uint64_t bits = maskBits(a.pack() < b.pack());
          for (int i = 0; i < 64; ++i)
            ASSERT_EQ(bits >> i & 1, i < N && a.v[i] < b.v[i]) << sizeof(T) << " bytes, bit " << i;
        }
      });
}

// Of two NaNs the left one is kept, also where a compiler would rather swap them; it becomes quiet.
TEST(Simd, OrderedOperations) {
  forWidths<1, 4, lanes<float>>([]<int N>(Width<N>) {
    using Words = Pack<uint32_t, N>;
    const auto packOf = [](uint32_t bits) {
      return std::bit_cast<Pack<float, N>>(Words(broadcast<uint32_t, N>(bits)));
    };
    struct {
      uint32_t a, b, sum, product;
    } const cases[] = {
        {0x7fc00001, 0xffc00002, 0x7fc00001, 0x7fc00001}, {0xffc00002, 0x7fc00001, 0xffc00002, 0xffc00002},
        {0x7f800003, 0x40000000, 0x7fc00003, 0x7fc00003}, {0x40000000, 0xff800003, 0xffc00003, 0xffc00003},
        {0x7f800000, 0xff800000, 0xffc00000, 0xff800000}, {0x40000000, 0x40400000, 0x40a00000, 0x40c00000}};
    for (const auto& c : cases) {
      uint32_t sums[N], products[N];
      store(sums, std::bit_cast<Words>(addOrdered(packOf(c.a), packOf(c.b))));
      store(products, std::bit_cast<Words>(mulOrdered(packOf(c.a), packOf(c.b))));
      for (int i = 0; i < N; ++i) {
        ASSERT_EQ(sums[i], c.sum) << c.a << " + " << c.b;
        ASSERT_EQ(products[i], c.product) << c.a << " * " << c.b;
      }
    }
  });
}

TEST(Simd, IntegerOperations) {
  forWidths<1, 4, lanes<int32_t>>([]<int N>(Width<N>) {
    for (unsigned seed = 0; seed < 200; ++seed) {
      const Elements<uint8_t, N> bytes(seed);
      const Elements<int32_t, N> widened(loadAs<int32_t, N>(bytes.v)), byteSums(prefixSumOfBytes<N>(bytes.v));
      const Elements<int32_t, N> v(seed);
      const Elements<int32_t, N> sums(prefixSum(v.pack())), last(broadcastLast(v.pack()));
      uint32_t sum = 0;
      int byteSum = 0;
      for (int i = 0; i < N; ++i) {
        sum += static_cast<uint32_t>(v.v[i]);
        byteSum += bytes.v[i];
        ASSERT_EQ(widened.v[i], bytes.v[i]);
        ASSERT_EQ(byteSums.v[i], byteSum);
        ASSERT_EQ(sums.v[i], static_cast<int32_t>(sum));
        ASSERT_EQ(last.v[i], v.v[N - 1]);
      }
    }
  });
}

template <int n, class T, int N>
void expectSlide() {
  const Elements<T, N> v(1), other(2);
  const Elements<T, N> up(slideUp<n>(v.pack(), other.pack()));
  for (int i = 0; i < N; ++i) ASSERT_TRUE(sameBits(up.v[i], i < n ? other.v[N - n + i] : v.v[i - n])) << n;
  if constexpr (!std::is_same_v<T, float>) {
    const Elements<T, N> down(slideDown<n>(v.pack(), other.pack()));
    for (int i = 0; i < N; ++i) ASSERT_TRUE(sameBits(down.v[i], i + n < N ? v.v[i + n] : other.v[i + n - N])) << n;
  }
  if constexpr (2 * n < N && !std::is_same_v<T, float>) expectSlide<2 * n, T, N>();
}

TEST(Simd, Slides) {
  expectSlide<1, uint8_t, 16>();
  expectSlide<1, uint8_t, lanes<uint8_t>>();
  expectSlide<1, uint16_t, 8>();
  expectSlide<1, uint16_t, lanes<uint16_t>>();
  expectSlide<1, float, lanes<float>>();
}

TEST(Simd, SaturatedSums) {
  forPacks<Of<uint8_t, 1>, Of<uint8_t, 16>, Of<uint8_t, lanes<uint8_t>>, Of<uint16_t, 8>,
           Of<uint16_t, lanes<uint16_t>>>([]<class T, int N>(Of<T, N>) {
    for (unsigned seed = 0; seed < 50; ++seed) {
      const Elements<T, N> a(seed), b(seed + 1000), sums(addSaturated(a.pack(), b.pack()));
      for (int i = 0; i < N; ++i) ASSERT_EQ(sums.v[i], std::min<int>(a.v[i] + b.v[i], std::numeric_limits<T>::max()));
    }
  });
}

TEST(Simd, ProductsOfNeighbours) {
  forWidths<16, lanes<uint8_t>>([]<int N>(Width<N>) {
    const Elements<uint8_t, N> bytes(1);
    Elements<int8_t, N> factors(2);
    for (int8_t& f : factors.v) f /= 2;  // so that no sum of two exceeds 16 bits
    const Elements<int16_t, N / 2> a(3), b(4);
    const Elements<int16_t, N / 2> sums(
        Pack<int16_t, N / 2>(mulAddBytes(bytes.pack(), Pack<uint8_t, N>(factors.pack()))));
    const Elements<int32_t, N / 4> wideSums(Pack<int32_t, N / 4>(mulAddWords(a.pack(), b.pack())));
    for (int i = 0; i < N; i += 2)
      ASSERT_EQ(sums.v[i / 2], bytes.v[i] * factors.v[i] + bytes.v[i + 1] * factors.v[i + 1]);
    for (int i = 0; i < N / 2; i += 2) ASSERT_EQ(wideSums.v[i / 2], a.v[i] * b.v[i] + a.v[i + 1] * b.v[i + 1]);
  });
}

TEST(Simd, PartsOfPacksTouchNothingElse) {
  constexpr int N = lanes<float>;
  for (int first = 0; first <= N; ++first)
    for (int end = first; end <= N; ++end) {
      const Elements<float, N> other(3);
      const test::GuardedBlock block(static_cast<size_t>(end - first) * 4, {end < N, 0});
      auto* p =
          reinterpret_cast<float*>(reinterpret_cast<uintptr_t>(block.start()) - static_cast<uintptr_t>(first) * 4);
      storeBetween(p, first, end, other.pack());
      const Elements<float, N> read(loadBetween(p, first, end, Pack<float, N>{}));
      for (int i = 0; i < N; ++i) ASSERT_TRUE(sameBits(read.v[i], i >= first && i < end ? other.v[i] : 0.0f));
    }
}

TEST(Simd, Transposition) {
  constexpr int N = lanes<float>;
  Pack<float, N> rows[N];
  for (int r = 0; r < N; ++r)
    for (int i = 0; i < N; ++i) rows[r][i] = static_cast<float>(100 * r + i);
  transpose(rows);
  for (int r = 0; r < N; ++r)
    for (int i = 0; i < N; ++i) ASSERT_EQ(rows[r][i], 100.0f * static_cast<float>(i) + static_cast<float>(r));
}

TEST(Simd, SignedProducts) {
  forWidths<1, 4, lanes<double>>([]<int N>(Width<N>) {
    for (unsigned seed = 0; seed < 200; ++seed) {
      const Elements<int64_t, N> a(seed), b(seed + 1000);
      const Elements<int64_t, N> products(mulSigned32(a.pack(), b.pack()));
      for (int i = 0; i < N; ++i)
        ASSERT_EQ(products.v[i], int64_t{static_cast<int32_t>(a.v[i])} * static_cast<int32_t>(b.v[i]));
    }
  });
}

TEST(Simd, FloatOperations) {
  forPacks<Of<float, 1>, Of<float, 4>, Of<float, 8>, Of<double, 1>, Of<double, 4>, Of<double, lanes<double>>>(
      []<class T, int N>(Of<T, N>) {
        for (unsigned seed = 0; seed < 200; ++seed) {
          const Elements<T, N> v(seed);
          const Elements<T, N> roots(squareRoot(v.pack())), constant(broadcast<T, N>(v.v[0]));
          for (int i = 0; i < N; ++i) {
            ASSERT_TRUE(sameBits(roots.v[i], std::sqrt(v.v[i]), true));
            ASSERT_TRUE(sameBits(constant.v[i], v.v[0]));
          }
          if constexpr (std::is_same_v<T, float>) {
            const Elements<T, N> magnitudes(absolute(v.pack()));
            for (int i = 0; i < N; ++i) ASSERT_TRUE(sameBits(magnitudes.v[i], std::copysign(v.v[i], 1.0f)));
          }
        }
      });
}

template <int N, int channels>
void expectPhasesAt() {
  float from[6 * N];  // more than any pack of these reads
  Values<float> values(N);
  for (float& v : from) v = values();
  const Phases<N> phases = loadPhases<N, channels>(from);
  const Elements<float, N> even(phases.even), odd(phases.odd);
  const Strided<N> strided = loadStrided<N, channels>(from);
  float back[2 * N];
  storePhases<N, channels>(back, phases);
  for (int i = 0; i < N / channels * channels; ++i) {
    const int at = i / channels * 2 * channels + i % channels;
    EXPECT_TRUE(sameBits(even.v[i], from[at]));
    EXPECT_TRUE(sameBits(odd.v[i], from[at + channels]));
    EXPECT_TRUE(sameBits(back[at], from[at]));
    EXPECT_TRUE(sameBits(back[at + channels], from[at + channels]));
    for (int k = 0; k < 5; ++k)
      EXPECT_TRUE(sameBits(Elements<float, N>(strided.pack[k]).v[i], from[at + k * channels])) << k;
  }
}

template <int N>
void expectChannelPairsAt() {
  const Elements<uint8_t, N> from(N);
  const Elements<uint8_t, N> paired(pairChannels(from.pack())), back(unpairChannels(paired.pack()));
  for (int i = 0; i < N / 16 * 12; ++i) {
    EXPECT_EQ(paired.v[i], from.v[i / 6 * 6 + i % 6 / 2 + i % 2 * 3]);
    EXPECT_EQ(back.v[i], from.v[i]);
  }
}

TEST(Simd, Interleaving) {
  expectPhasesAt<1, 1>();
  expectPhasesAt<4, 1>();
  expectPhasesAt<8, 1>();
  expectPhasesAt<lanes<float>, 1>();
  expectPhasesAt<4, 3>();
  expectPhasesAt<8, 3>();
  expectPhasesAt<lanes<float>, 3>();
  expectChannelPairsAt<16>();
  expectChannelPairsAt<lanes<uint8_t>>();
}

TEST(Simd, Sampling) {
  forPacks<Of<uint8_t, 1>, Of<uint8_t, 4>, Of<uint16_t, 4>, Of<uint8_t, lanes<float>>, Of<uint16_t, lanes<float>>>(
      []<class T, int N>(Of<T, N>) {
        const Elements<float, 64> from(N);
        int32_t indices[N];
        float between[N];
        for (int i = 0; i < N; ++i) {
          indices[i] = i * 37 % 64;
          between[i] = static_cast<float>(i * 5001 - 20000) / 2;  // among them ties, and values beyond either end
        }
        const Elements<float, N> samples(gather<N>(from.v, indices));
        const Elements<T, N> nearest(nearestSaturated<T>(load<Pack<float, N>>(between)));
        for (int i = 0; i < N; ++i) {
          EXPECT_TRUE(sameBits(samples.v[i], from.v[indices[i]]));
          EXPECT_EQ(nearest.v[i], std::nearbyint(std::clamp(between[i], 0.0f, float{std::numeric_limits<T>::max()})));
        }
      });
}

TEST(Simd, BytesAsWords) {
  forPacks<Of<uint8_t, 8>, Of<int8_t, 8>, Of<uint8_t, lanes<int16_t>>, Of<int8_t, lanes<int16_t>>>(
      []<class Byte, int N>(Of<Byte, N>) {
        const Elements<Byte, N> bytes(N);
        const Elements<int16_t, N> words(loadWords<N>(bytes.v));
        for (int i = 0; i < N; ++i) EXPECT_EQ(words.v[i], bytes.v[i]);
      });
}

// Element i of the words that two packs stand for: of each group of eight, low has the first half.
template <int N>
int32_t at(const Halves<N>& v, int i) {
  const auto half = i % 8 < 4 ? v.low : v.high;  // GCC 12's sanitizers mistake a subscript of the choice itself
  return half[i / 8 * 4 + i % 4];
}

TEST(Simd, FixedPoint) {
  forWidths<8, lanes<int16_t>>([]<int N>(Width<N>) {
    const Elements<int16_t, N> a(1), b(2);
    constexpr int kFirst = -300, kSecond = 7, kShift = 3;
    const auto factors = broadcast<int32_t, N / 2>(static_cast<int32_t>((kFirst & 0xffff) | kSecond << 16));
    const Halves<N> sums = pairProducts<N>(a.pack(), b.pack(), factors), wide = widen<N>(a.pack());
    const Halves<N> fullProducts = products<N>(a.pack(), b.pack());
    const Elements<int16_t, N> words(narrow<N>(sums)), shifted(shiftRight(a.pack(), kShift));
    const Elements<uint8_t, N> bytes(narrow<uint8_t, N>(a.pack()));
    const Elements<int8_t, N> signedBytes(narrow<int8_t, N>(a.pack()));
    for (int i = 0; i < N; ++i) {
      const int sum = a.v[i] * kFirst + b.v[i] * kSecond;
      EXPECT_EQ(at<N>(sums, i), sum);
      EXPECT_EQ(at<N>(wide, i), a.v[i]);
      EXPECT_EQ(at<N>(fullProducts, i), a.v[i] * b.v[i]);
      EXPECT_EQ(words.v[i], std::clamp<int>(sum, INT16_MIN, INT16_MAX));
      EXPECT_EQ(shifted.v[i], a.v[i] >> kShift);
      EXPECT_EQ(bytes.v[i], std::clamp<int>(a.v[i], 0, UINT8_MAX));
      EXPECT_EQ(signedBytes.v[i], std::clamp<int>(a.v[i], INT8_MIN, INT8_MAX));
    }
  });
}

}  // namespace
}  // namespace zvp::simd
