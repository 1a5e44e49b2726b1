#include <zvpcv/filter.h>

#include "cases.h"
#include "plain_filter.h"
#include "plain_scharr.h"
#include "plain_window.h"

namespace bench::ZVP_LOOPS {
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

template <class T, class Pointer>
void pointAtRows(const Image<T>& image, const Image<Pointer>& rows) {
  for (int y = 0; y < image.height; ++y) rows.data()[y] = image.row(y);
}

// Rules of integers take a divisor.
template <class Rule, class Call>
void callWithDivisor(Call call) {
  if constexpr (std::is_same_v<Rule, Float>) {
    call();
  } else {
    call(kDivisor);
  }
}

template <class Rule, int channels, std::size_t k, class Function>
Work filterRow(Function function, BufferSize query, RoiSize size) {
  using S = typename Rule::Src;
  using D = typename Rule::Dst;
  constexpr auto kTaps = tapsOf<typename Rule::Tap, k>();
  constexpr int kCount = int{k}, kAnchor = kCount / 2;
  const int width = size.width * channels;
  const auto src = sourceOf<S>(width, size.height);
  const Image<D*> rows(size.height, 1);
  const auto buffer = workBuffer(query, size, kCount);
  return fills<D>(
      width, size.height, src.bytes(),
      [=](const auto& dst) {
        constexpr std::conditional_t<channels == 1, S, const S*> kUnused{};
        if (rows.data()[0] == nullptr) pointAtRows(dst, rows);
        callWithDivisor<Rule>([&](auto... divisor) {
          function(src.data(), src.step, rows.data(), size, kTaps.data(), kCount, kAnchor, BorderReplicate, kUnused,
                   divisor..., buffer.data());
        });
      },
      [=](const auto& dst) { plain::filterRows<Rule, channels>(src, dst, kTaps, Rule(kDivisor)); });
}

template <class Rule, int channels, std::size_t k, class Function>
Work filterColumn(Function function, BufferSize query, RoiSize size) {
  using S = typename Rule::Src;
  constexpr auto kTaps = tapsOf<typename Rule::Tap, k>();
  constexpr int kCount = int{k};
  const int width = size.width * channels;
  const auto src = sourceOf<S>(width, size.height + kCount - 1);
  const Image<const S*> rows(src.height, 1);
  pointAtRows(src, rows);
  const auto buffer = workBuffer(query, size, kCount);
  return fills<typename Rule::Dst>(
      width, size.height, src.bytes(),
      [=](const auto& dst) {
        callWithDivisor<Rule>([&](auto... divisor) {
          function(rows.data(), dst.data(), dst.step, size, kTaps.data(), kCount, divisor..., buffer.data());
        });
      },
      [=](const auto& dst) { plain::filterColumns(src, dst, kTaps, Rule(kDivisor)); });
}

template <plain::Axis axis>
Work scharr(decltype(zvpiFilterScharrHorizBorder_32f_C1R)* function, RoiSize size) {
  const auto src = randomImage<float>(size.width, size.height, 1);
  int bytes = 0;
  zvpiFilterScharrHorizBorderGetBufferSize_32f_C1R(size, &bytes);
  const Image<std::uint8_t> buffer(bytes, 1);
  return fills<float>(
      size.width, size.height, src.bytes(),
      [=](const auto& dst) {
        function(src.data(), src.step, dst.data(), dst.step, size, BorderReplicate, 0, buffer.data());
      },
      [=](const auto& dst) { plain::scharr<axis>(src, dst, 1); });
}

template <std::size_t taps>
Work sobel(decltype(zvpiFilterSobelHorizBorder_8u16s_C1R)* function, RoiSize size, const std::array<int, taps>& smooth,
           const std::array<int, taps>& derive) {
  constexpr int kMaskSize = 11 * int{taps};
  const auto src = randomImage<std::uint8_t>(size.width, size.height, 1);
  int bytes = 0;
  zvpiFilterSobelHorizBorderGetBufferSize_8u16s_C1R(size, kMaskSize, &bytes);
  const Image<std::uint8_t> buffer(bytes, 1);
  return fills<std::int16_t>(
      size.width, size.height, src.bytes(),
      [=](const auto& dst) {
        function(src.data(), src.step, dst.data(), dst.step, size, kMaskSize, BorderReplicate, 0, buffer.data());
      },
      [=](const auto& dst) { plain::separable<taps>(src, dst, smooth, derive); });
}
Work sobel3x3(decltype(zvpiFilterSobelHorizBorder_8u16s_C1R)* function, RoiSize size) {
  return sobel<3>(function, size, {1, 2, 1}, {-1, 0, 1});
}
Work sobel5x5(decltype(zvpiFilterSobelHorizBorder_8u16s_C1R)* function, RoiSize size) {
  return sobel<5>(function, size, {1, 4, 6, 4, 1}, {-1, -2, 0, 2, 1});
}

// The members come with a query of the same name.
#define ZVP_FILTER_CASE(make, family, suffix, channels, taps, rule)                                                \
  Case {                                                                                                           \
    "zvpiFilter" #family "_" #suffix ", " #taps " taps", [](RoiSize size) {                                        \
      return make<rule, channels, taps>(zvpiFilter##family##_##suffix, zvpiFilter##family##GetBufferSize_##suffix, \
                                        size);                                                                     \
    }                                                                                                              \
  }
#define ZVP_ROW(suffix, channels, taps, rule) \
  ZVP_FILTER_CASE(filterRow, RowBorderPipeline, suffix, channels, taps, rule)
#define ZVP_COLUMN(suffix, channels, taps, rule) \
  ZVP_FILTER_CASE(filterColumn, ColumnPipeline, suffix, channels, taps, rule)
#define ZVP_ROWS(suffix, channels, rule) \
  ZVP_ROW(suffix, channels, 3, rule), ZVP_ROW(suffix, channels, 5, rule), ZVP_ROW(suffix, channels, 9, rule)
#define ZVP_COLUMNS(suffix, channels, rule) \
  ZVP_COLUMN(suffix, channels, 3, rule), ZVP_COLUMN(suffix, channels, 5, rule), ZVP_COLUMN(suffix, channels, 9, rule)

using From8u = Scaled<std::uint8_t, std::int16_t>;
using From16s = Scaled<std::int16_t, std::int16_t>;
using To8u = Scaled<std::int16_t, std::uint8_t>;
using To8s = Scaled<std::int16_t, std::int8_t>;

}  // namespace

std::vector<Case> filterCases() {
  return {
      ZVP_ROWS(8u16s_C1R, 1, From8u),
      ZVP_ROWS(8u16s_C3R, 3, From8u),
      ZVP_ROW(16s_C1R, 1, 5, From16s),
      ZVP_ROW(16s_C3R, 3, 5, From16s),
      ZVP_ROW(Low_16s_C1R, 1, 5, Low),
      ZVP_ROW(Low_16s_C3R, 3, 5, Low),
      ZVP_ROWS(32f_C1R, 1, Float),
      ZVP_ROWS(32f_C3R, 3, Float),
      ZVP_COLUMNS(16s8u_C1R, 1, To8u),
      ZVP_COLUMNS(16s8u_C3R, 3, To8u),
      ZVP_COLUMN(16s8s_C1R, 1, 5, To8s),
      ZVP_COLUMN(16s8s_C3R, 3, 5, To8s),
      ZVP_COLUMN(16s_C1R, 1, 5, From16s),
      ZVP_COLUMN(16s_C3R, 3, 5, From16s),
      ZVP_COLUMN(Low_16s_C1R, 1, 5, Low),
      ZVP_COLUMN(Low_16s_C3R, 3, 5, Low),
      ZVP_COLUMNS(32f_C1R, 1, Float),
      ZVP_COLUMNS(32f_C3R, 3, Float),
      ZVP_CASE(scharr<plain::kAlongX>, zvpiFilterScharrHorizBorder_32f_C1R),
      ZVP_CASE(scharr<plain::kAlongY>, zvpiFilterScharrVertBorder_32f_C1R),
      ZVP_CASE_OF(sobel3x3, zvpiFilterSobelHorizBorder_8u16s_C1R, ", 3x3"),
      ZVP_CASE_OF(sobel5x5, zvpiFilterSobelHorizBorder_8u16s_C1R, ", 5x5"),
  };
}

}  // namespace bench::ZVP_LOOPS
