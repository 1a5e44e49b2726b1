#include <zvpcv/filter.h>

#include "cases.h"
#include "plain_filter.h"

namespace bench {
namespace {

using plain::Float;
using plain::Low;
using plain::Scaled;

constexpr int kDivisor = 16;

// Sums of 16: the integer results keep the range of their source.
template <class Tap, std::size_t k>
constexpr std::array<Tap, k> tapsOf() {
  if constexpr (k == 3) return {4, 8, 4};
  if constexpr (k == 5) return {1, 4, 6, 4, 1};
  if constexpr (k == 9) return {1, 1, 2, 2, 4, 2, 2, 1, 1};
}

// 16-bit sources hold what a filter of 8-bit pixels makes.
template <class T>
Image<T> sourceOf(int width, int height) {
  const auto image = randomImage<T>(width, height, 1);
  if constexpr (std::is_same_v<T, std::int16_t>)
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) image.row(y)[x] = std::int16_t(image.row(y)[x] >> 7);
  return image;
}

using BufferSize = Status (*)(RoiSize, int, int*);

Image<std::uint8_t> workBuffer(BufferSize query, RoiSize size, int taps) {
  int bytes = 0;
  query(size, taps, &bytes);
  return {bytes, 1};
}

template <class T>
Image<T*> rowPointers(const Image<std::remove_const_t<T>>& image) {
  Image<T*> pointers(image.height, 1);
  for (int y = 0; y < image.height; ++y) pointers.data()[y] = image.row(y);
  return pointers;
}

template <class Rule, int channels, std::size_t k, class Function>
Work filterRow(Function function, BufferSize query, RoiSize size) {
  using S = typename Rule::Src;
  using D = typename Rule::Dst;
  constexpr auto kTaps = tapsOf<typename Rule::Tap, k>();
  constexpr int kCount = int{k}, kAnchor = kCount / 2;
  const int width = size.width * channels;
  const auto src = sourceOf<S>(width, size.height);
  const Image<D> dst(width, size.height), expected(width, size.height);
  const auto rows = rowPointers<D>(dst);
  const auto buffer = workBuffer(query, size, kCount);
  return {.library =
              [=] {
                constexpr std::conditional_t<channels == 1, S, const S*> kUnused{};
                const auto call = [&](auto... divisor) {
                  function(src.data(), src.step, rows.data(), size, kTaps.data(), kCount, kAnchor, BorderReplicate,
                           kUnused, divisor..., buffer.data());
                };
                if constexpr (std::is_same_v<Rule, Float>) {
                  call();
                } else {
                  call(kDivisor);
                }
                static_cast<void>(dst);  // owns the rows
              },
          .plain = [=] { plain::filterRows<Rule, channels>(src, expected, kTaps, Rule(kDivisor)); },
          .bytes = src.bytes() + expected.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

template <class Rule, int channels, std::size_t k, class Function>
Work filterColumn(Function function, BufferSize query, RoiSize size) {
  using S = typename Rule::Src;
  using D = typename Rule::Dst;
  constexpr auto kTaps = tapsOf<typename Rule::Tap, k>();
  constexpr int kCount = int{k};
  const int width = size.width * channels;
  const auto src = sourceOf<S>(width, size.height + kCount - 1);
  const Image<D> dst(width, size.height), expected(width, size.height);
  const auto rows = rowPointers<const S>(src);
  const auto buffer = workBuffer(query, size, kCount);
  return {.library =
              [=] {
                const auto call = [&](auto... divisor) {
                  function(rows.data(), dst.data(), dst.step, size, kTaps.data(), kCount, divisor..., buffer.data());
                };
                if constexpr (std::is_same_v<Rule, Float>) {
                  call();
                } else {
                  call(kDivisor);
                }
              },
          .plain = [=] { plain::filterColumns(src, expected, kTaps, Rule(kDivisor)); },
          .bytes = src.bytes() + expected.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

// The members come with a query of the same name.
#define ZVP_FILTER_CASE(make, family, suffix, channels, taps, ...)                                \
  Case {                                                                                          \
    "zvpiFilter" #family "_" #suffix ", " #taps " taps", [](RoiSize size) {                       \
      return make<__VA_ARGS__, channels, taps>(zvpiFilter##family##_##suffix,                     \
                                               zvpiFilter##family##GetBufferSize_##suffix, size); \
    }                                                                                             \
  }
#define ZVP_ROW(suffix, channels, taps, ...) \
  ZVP_FILTER_CASE(filterRow, RowBorderPipeline, suffix, channels, taps, __VA_ARGS__)
#define ZVP_COLUMN(suffix, channels, taps, ...) \
  ZVP_FILTER_CASE(filterColumn, ColumnPipeline, suffix, channels, taps, __VA_ARGS__)

using From8u = Scaled<std::uint8_t, std::int16_t>;
using From16s = Scaled<std::int16_t, std::int16_t>;
using To8u = Scaled<std::int16_t, std::uint8_t>;
using To8s = Scaled<std::int16_t, std::int8_t>;

}  // namespace

std::vector<Case> filterCases() {
  return {
      ZVP_ROW(8u16s_C1R, 1, 3, From8u),   ZVP_ROW(8u16s_C1R, 1, 5, From8u),   ZVP_ROW(8u16s_C1R, 1, 9, From8u),
      ZVP_ROW(8u16s_C3R, 3, 3, From8u),   ZVP_ROW(8u16s_C3R, 3, 5, From8u),   ZVP_ROW(8u16s_C3R, 3, 9, From8u),
      ZVP_ROW(16s_C1R, 1, 5, From16s),    ZVP_ROW(16s_C3R, 3, 5, From16s),    ZVP_ROW(Low_16s_C1R, 1, 5, Low),
      ZVP_ROW(Low_16s_C3R, 3, 5, Low),    ZVP_ROW(32f_C1R, 1, 3, Float),      ZVP_ROW(32f_C1R, 1, 5, Float),
      ZVP_ROW(32f_C1R, 1, 9, Float),      ZVP_ROW(32f_C3R, 3, 3, Float),      ZVP_ROW(32f_C3R, 3, 5, Float),
      ZVP_ROW(32f_C3R, 3, 9, Float),      ZVP_COLUMN(16s8u_C1R, 1, 3, To8u),  ZVP_COLUMN(16s8u_C1R, 1, 5, To8u),
      ZVP_COLUMN(16s8u_C1R, 1, 9, To8u),  ZVP_COLUMN(16s8u_C3R, 3, 3, To8u),  ZVP_COLUMN(16s8u_C3R, 3, 5, To8u),
      ZVP_COLUMN(16s8u_C3R, 3, 9, To8u),  ZVP_COLUMN(16s8s_C1R, 1, 5, To8s),  ZVP_COLUMN(16s8s_C3R, 3, 5, To8s),
      ZVP_COLUMN(16s_C1R, 1, 5, From16s), ZVP_COLUMN(16s_C3R, 3, 5, From16s), ZVP_COLUMN(Low_16s_C1R, 1, 5, Low),
      ZVP_COLUMN(Low_16s_C3R, 3, 5, Low), ZVP_COLUMN(32f_C1R, 1, 3, Float),   ZVP_COLUMN(32f_C1R, 1, 5, Float),
      ZVP_COLUMN(32f_C1R, 1, 9, Float),   ZVP_COLUMN(32f_C3R, 3, 3, Float),   ZVP_COLUMN(32f_C3R, 3, 5, Float),
      ZVP_COLUMN(32f_C3R, 3, 9, Float),
  };
}

}  // namespace bench
