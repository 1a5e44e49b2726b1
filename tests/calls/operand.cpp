#include "calls/operand.h"

#include <cmath>

namespace zvp::calls {
namespace {

// A float of any kind, or one of moderate size.
double anyReal(std::uint64_t bits, bool isFinite) {
  constexpr double kInf = INFINITY;
  constexpr double kSpecial[] = {kInf, -kInf, 0.0, -0.0, NAN, 3.4028234663852886e38, 1e-42, -1e-40};
  if (!isFinite && bits % 16 == 0) return kSpecial[bits / 16 % std::size(kSpecial)];
  return static_cast<double>(static_cast<std::int32_t>(bits >> 32) >> (isFinite ? 12 : 0)) /
         static_cast<double>(1 << (bits % (isFinite ? 8 : 31)));
}

// Elements in one of four ways: all kinds, plateaus, few values, extremes.
class Contents {
 public:
  Contents(Draw& in, Element element, bool isFinite)
      : element_(element), isFinite_(isFinite), state_(static_cast<std::uint64_t>(in.integer(0, UINT16_MAX))) {
    way_ = static_cast<int>(state_ & 3);
  }

  void fill(std::uint8_t* p, std::size_t bytes) {
    const std::size_t n = element_.size;
    for (std::size_t i = 0; i + n <= bytes; i += n) {
      if (way_ != 1 || i / n % 16 == 0) next();
      std::memcpy(p + i, &value_, n);
    }
  }

 private:
  void next() {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    const std::uint64_t bits = state_ ^ state_ >> 29;
    if (way_ == 2) {
      set(static_cast<double>(bits >> 40 & 3));
    } else if (element_.isFloat) {
      set(anyReal(bits, isFinite_));
    } else if (way_ == 3) {
      const int top = static_cast<int>(8 * element_.size) - 1;  // 0, -1, the least and the greatest signed number
      value_ = (bits >> 40 & 1 ? ~std::uint64_t{0} : 0) ^ (bits >> 41 & 1 ? std::uint64_t{1} << top : 0);
    } else {
      value_ = bits >> 8;
    }
  }

  void set(double v) {
    const auto single = static_cast<float>(v);
    value_ = static_cast<std::uint64_t>(std::int64_t{static_cast<int>(way_ == 2 ? v : 0)});
    if (element_.isFloat && element_.size == sizeof single) std::memcpy(&value_, &single, sizeof single);
    if (element_.isFloat && element_.size == sizeof v) std::memcpy(&value_, &v, sizeof v);
  }

  Element element_;
  bool isFinite_;
  int way_;
  std::uint64_t state_, value_ = 0;
};

}  // namespace

std::pair<double, double> extent(const Spans& spans, int step, Element element) {
  double before = 0, after = 0;
  for (const Span& s : spans) {
    before = std::max(before, -s.row * step - s.first * double(element.size));
    after = std::max(after, s.row * step + s.end * double(element.size));
  }
  return {before, after};
}

Operand::Operand(Draw& in, Access access, Element element, const Spans& spans, int step, bool isFinite)
    : access_(access), element_(element), step_(step), isFar_(in.isFar()), spans_(spans) {
  const auto [before, after] = extent(spans, step, element);
  lead_ = static_cast<std::size_t>(before), size_ = static_cast<std::size_t>(before + after);
  allocate(in, isFinite, 1);
}

Operand::Operand(Draw& in, Access access, Element element, double count, bool isFinite, std::size_t alignment)
    : access_(access), element_(element) {
  const double bytes = count * double(element.size);
  size_ = static_cast<std::size_t>(bytes > 0 && bytes <= kMostScratch ? bytes : 0);
  allocate(in, isFinite, alignment);
}

Operand::Operand(Access access, void* start, std::size_t bytes) : access_(access), element_{1, false}, size_(bytes) {
  block_.start = {static_cast<std::uint8_t*>(start), [](std::uint8_t*) {}};
}

void Operand::put(std::size_t index, double value) const {
  std::uint8_t* at = start() + index * element_.size;
  const auto single = static_cast<float>(value);
  const auto integer = element_.isFloat ? 0 : static_cast<std::int64_t>(value);
  if (element_.isFloat && element_.size == sizeof single) std::memcpy(at, &single, sizeof single);
  if (element_.isFloat && element_.size == sizeof value) std::memcpy(at, &value, sizeof value);
  if (!element_.isFloat) std::memcpy(at, &integer, element_.size);
}

Operand Operand::seenAs(Access access) const {
  Operand same = *this;
  same.access_ = access;
  return same;
}

void Operand::alias(const Operand& other) {
  block_ = other.block_, lead_ = other.lead_, size_ = other.size_, step_ = other.step_;
}

void Operand::remember() {
  before_ = contents();
  if (access_ == Access::kRead && block_.freeze) block_.freeze();
}

// f(start, bytes) of each row, from its first element to its last one of any span; of arrays, all.
template <class F>
void Operand::forEachRow(F f) const {
  if (spans_.empty()) return f(lead_, size_ - lead_);
  Span all = spans_.front();
  double lastRow = all.row;
  for (const Span& s : spans_) {
    all = {std::min(all.row, s.row), std::min(all.first, s.first), std::max(all.end, s.end)};
    lastRow = std::max(lastRow, s.row);
  }
  const auto within = [&](double at) { return static_cast<std::size_t>(std::clamp(at, 0.0, double(size_))); };
  for (double row = all.row; row <= lastRow; ++row) {
    const double start = double(lead_) + row * step_, size = double(element_.size);
    f(within(start + all.first * size), within(start + all.end * size) - within(start + all.first * size));
  }
}

std::vector<std::uint8_t> Operand::rows() const {
  std::vector<std::uint8_t> bytes;
  forEachRow([&](std::size_t at, std::size_t n) {
    bytes.insert(bytes.end(), block_.start.get() + at, block_.start.get() + at + n);
  });
  return bytes;
}

// Everything, where memory holds it.
std::vector<std::uint8_t> Operand::contents() const {
  return isFar_ ? rows() : std::vector(block_.start.get(), block_.start.get() + size_);
}

bool Operand::isIntact(bool failed) const {
  std::vector<std::uint8_t> now = contents();
  if (failed || access_ == Access::kRead) return now == before_;
  if (isFar_) return true;
  forEachRow([&](std::size_t at, std::size_t n) {
    std::copy_n(before_.begin() + std::ptrdiff_t(at), n, now.begin() + std::ptrdiff_t(at));
  });
  return now == before_;
}

void Operand::appendResult(std::vector<std::uint8_t>& bytes) const {
  if (access_ != Access::kWrite) return;
  const std::vector<std::uint8_t> result = rows();
  bytes.insert(bytes.end(), result.begin(), result.end());
}

void Operand::allocate(Draw& in, bool isFinite, std::size_t alignment) {
  const bool atEnd = in.oneIn(2);
  const std::size_t shift = atEnd || in.oneIn(2) ? 0 : std::size_t(in.integer(1, 7)) / alignment * alignment;
  lead_ += shift;
  size_ += shift;
  block_ = exactBlock(size_, atEnd);
  const bool isBytes = in.isWild() || element_.size > sizeof(std::uint64_t);  // records, too
  const Element element = isBytes ? Element{1, false} : element_;
  Contents contents(in, element, isFinite);
  forEachRow([&](std::size_t at, std::size_t bytes) { contents.fill(block_.start.get() + at, bytes); });
}

}  // namespace zvp::calls
