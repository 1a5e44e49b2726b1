// One structured fuzz target for the whole interface. The first byte picks a function, the rest its arguments, valid
// and invalid. A new family: a function that draws its arguments and calls, and one line per exported function in
// kTargets.
#include <zvpcv/zvpcv.h>

#include "operands.h"

namespace fuzz {
namespace {

// --- Arithmetic ------------------------------------------------------------------------------------------------------

template <int channels, class T>
void absDiff(Bytes& in, Status (*f)(const T*, int, const T*, int, T*, int, RoiSize)) {
  const RoiSize size = someSize(in);
  const double width = double(size.width) * channels;
  const auto a = readsImage<T>(in, width, size.height), b = readsImage<T>(in, width, size.height);
  auto dst = writesImage<T>(in, width, size.height);
  if (oneIn(8, in)) {
    dst.alias(a);
    checkCall(f(dst, dst.step, b, b.step, dst, dst.step, size), b, dst);
  } else {
    checkCall(f(a, a.step, b, b.step, dst, dst.step, size), a, b, dst);
  }
}

template <class T, class Value>
void absDiffC(Bytes& in, Status (*f)(const T*, int, T*, int, RoiSize, Value)) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<T>(in, size.width, size.height);
  const auto dst = writesImage<T>(in, size.width, size.height);
  const auto value = static_cast<Value>(in.ConsumeIntegral<int>());
  checkCall(f(src, src.step, dst, dst.step, size, value), src, dst);
}

// --- Integral images -------------------------------------------------------------------------------------------------

template <class S>
Operand tableOf(Bytes& in, RoiSize size, int margin) {
  if (size.width < 1 || size.height < 1) return writesImage<S>(in, 0, 0);
  return writesImage<S>(in, double(size.width) + margin, double(size.height) + margin);
}

template <int margin, class T, class S, class... Start>
void oneTable(Bytes& in, Status (*f)(const T*, int, S*, int, RoiSize, Start...)) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<T>(in, size.width, size.height);
  const auto sums = tableOf<S>(in, size, margin);
  checkCall(f(src, src.step, sums, sums.step, size, static_cast<Start>(in.ConsumeIntegral<int>())...), src, sums);
}

template <int margin, class S, class Q>
void twoTables(Bytes& in, Status (*f)(const std::uint8_t*, int, S*, int, Q*, int, RoiSize, S, Q)) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<std::uint8_t>(in, size.width, size.height);
  const auto sums = tableOf<S>(in, size, margin);
  const auto squares = tableOf<Q>(in, size, margin);
  const auto start = static_cast<S>(in.ConsumeIntegral<int>());
  const auto startSqr = static_cast<Q>(in.ConsumeIntegral<int>());
  checkCall(f(src, src.step, sums, sums.step, squares, squares.step, size, start, startSqr), src, sums, squares);
}

enum class Shape { kUpright, kTilted };

// The corners of a rectangle as positions relative to the one it is placed at; only for valid rectangles.
std::vector<Corner> corners(Rect r, Shape shape) {
  const double x = r.x, y = r.y, w = r.width, h = r.height;
  if (shape == Shape::kUpright) return {{x, y}, {x + w, y}, {x, y + h}, {x + w, y + h}};
  return {{x + h, y}, {x, y + h}, {x + w + h, y + w}, {x + w, y + w + h}};
}

Rect someRect(Bytes& in) {
  const int x = number(in, 0, 9), y = number(in, 0, 9), width = number(in, 1, 12);
  return {x, y, width, number(in, 1, 12)};
}

template <Shape shape, class S, class Q, class T, class... ScaleFactor>
void stdDev(Bytes& in, Status (*f)(const S*, int, const Q*, int, T*, int, RoiSize, Rect, ScaleFactor...)) {
  const RoiSize size = someSize(in);
  const Rect r = someRect(in);
  Spans spans;
  if (r.x >= 0 && r.y >= 0 && r.width > 0 && r.height > 0)
    for (const Corner corner : corners(r, shape)) addRegion(spans, corner, size.width, size.height);
  double row = double(size.width) + r.x + r.width;
  if (shape == Shape::kTilted) row += double(r.y) + r.height - 1;
  const auto sums = reads<S>(in, spans, row);
  const auto squares = reads<Q>(in, spans, row);
  const auto dst = writesImage<T>(in, size.width, size.height);
  checkCall(f(sums, sums.step, squares, squares.step, dst, dst.step, size, r,
              static_cast<ScaleFactor>(number(in, -70, 70))...),
            sums, squares, dst);
}

// --- Classifiers -----------------------------------------------------------------------------------------------------

// n values on the heap, exactly.
template <class T>
std::unique_ptr<T[]> exactArray(const std::vector<T>& values) {
  std::unique_ptr<T[]> copy(new T[values.size()]);
  std::copy(values.begin(), values.end(), copy.get());
  return copy;
}

template <class V>
V someValue(Bytes& in) {
  const auto bits = in.ConsumeIntegral<std::uint32_t>();
  V value;
  std::memcpy(&value, &bits, sizeof value);
  return oneIn(4, in) ? value : static_cast<V>(static_cast<std::int8_t>(bits));
}

template <class V>
struct Family {
  Status (*build)(HaarClassifier**, const Rect*, const V*, const V*, const V*, const V*, const int*, int);
  Status (*tilt)(const std::uint8_t*, int, HaarClassifier*);
  Status (*extent)(HaarClassifier*, RoiSize*);
  Status (*release)(HaarClassifier*);
};

// A stage from arbitrary arrays, and where its corners are.
template <class V>
class Stage {
 public:
  Stage(Bytes& in, const Family<V>& family, bool builtTilted) : family_(family) {
    const int length = oneIn(32, in) ? -1 : in.ConsumeIntegralInRange(0, 6);
    for (int k = 0; k < length; ++k) {
      // A count that would ask for more rectangles than there are exceeds what an object may hold.
      counts_.push_back(oneIn(64, in) ? in.PickValueInArray({0, -1, 1 << 30, INT32_MAX})
                                      : in.ConsumeIntegralInRange(1, 4));
      thresholds_.push_back(someValue<V>(in));
    }
    for (const int count : counts_) {
      for (int i = 0; i < count && count <= 4; ++i) {
        rects_.push_back(someRect(in));
        weights_.push_back(someValue<V>(in));
      }
    }
    build(in, length);
    if (object_ == nullptr) return;
    tilted_.assign(counts_.size(), builtTilted);
    if (oneIn(2, in)) tilt(in, builtTilted);
    placeCorners(builtTilted || aboutTop_);
  }
  ~Stage() { require(family_.release(object_) == StatusOk, "objects can be released"); }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  HaarClassifier* object() const { return object_; }
  const std::vector<Corner>& uprightCorners() const { return upright_; }
  const std::vector<Corner>& tiltedCorners() const { return turned_; }
  std::vector<std::uint8_t> bytes() const {
    const auto* p = reinterpret_cast<const std::uint8_t*>(object_);
    return {p, p + 48 + 24 * counts_.size() + 36 * rects_.size()};
  }

 private:
  void build(Bytes& in, int length) {
    const auto rects = exactArray(rects_);
    const auto weights = exactArray(weights_), thresholds = exactArray(thresholds_), values = exactArray(thresholds_);
    const auto counts = exactArray(counts_);
    const int null = in.ConsumeIntegralInRange(0, 200);
    HaarClassifier *const untouched = reinterpret_cast<HaarClassifier*>(this), *state = untouched;
    const Status status = family_.build(null == 1 ? nullptr : &state, null == 2 ? nullptr : rects.get(),
                                        null == 3 ? nullptr : weights.get(), null == 4 ? nullptr : thresholds.get(),
                                        null == 5 ? nullptr : values.get(), null == 6 ? nullptr : values.get(),
                                        null == 7 ? nullptr : counts.get(), length);
    require((status < 0) == (state == untouched), "a failing InitAlloc leaves the pointer");
    if (status == StatusOk) object_ = state;
  }

  void tilt(Bytes& in, bool builtTilted) {
    std::vector<std::uint8_t> choice(counts_.size());
    for (auto& c : choice) c = in.ConsumeBool();
    const bool aboutTop = in.ConsumeBool();
    const auto before = bytes();
    if (family_.tilt(exactArray(choice).get(), aboutTop, object_) < 0) {
      require(before == bytes(), "a failing tilt leaves the object");
    } else if (!builtTilted) {
      tilted_ = choice;
      aboutTop_ = aboutTop;
    }
  }

  // Corners wrap modulo 2^32.
  void placeCorners(bool aboutTop) {
    const auto at = [](std::int64_t column, std::int64_t row) {
      return Corner{double(static_cast<std::int32_t>(column)), double(static_cast<std::int32_t>(row))};
    };
    const Rect* r = rects_.data();
    for (std::size_t k = 0; k < counts_.size(); ++k) {
      auto& out = tilted_[k] ? turned_ : upright_;
      for (int i = 0; i < counts_[k]; ++i, ++r) {
        const std::int64_t x = r->x, y = r->y, w = r->width, h = r->height;
        if (!tilted_[k]) {
          out.insert(out.end(), {at(x + w, y + h), at(x, y + h), at(x + w, y), at(x, y)});
        } else if (aboutTop) {
          out.insert(out.end(), {at(x + w - h, y + h + w), at(x - h, y + h), at(x + w, y + w), at(x, y)});
        } else {
          out.insert(out.end(), {at(x, y + h), at(x - h, y), at(x + w, y + h - w), at(x + w - h, y - w)});
        }
      }
    }
  }

  const Family<V>& family_;
  HaarClassifier* object_ = nullptr;
  std::vector<int> counts_;
  std::vector<Rect> rects_;
  std::vector<V> weights_, thresholds_;
  std::vector<std::uint8_t> tilted_;
  bool aboutTop_ = false;
  std::vector<Corner> upright_, turned_;
};

// Clears most of a mask and returns, for every row, the range of positions between selected ones.
Spans selectPositions(Bytes& in, const Operand& mask, RoiSize size) {
  Spans selected;
  auto* bytes = mask.start();
  const int sparseness = in.ConsumeIntegralInRange(1, 40);
  for (int y = 0; y < size.height; ++y) {
    int first = size.width, end = 0;
    for (int x = 0; x < size.width; ++x) {
      auto& b = bytes[std::ptrdiff_t{y} * mask.step + x];
      if (b % sparseness != 0) b = 0;
      if (b != 0) first = std::min(first, x), end = x + 1;
    }
    if (end > 0) selected.push_back({double(y), double(first), double(end)});
  }
  return selected;
}

Spans entriesOf(const Spans& positions, const std::vector<Corner>& corners, int offset) {
  Spans spans;
  for (const Span& p : positions)
    for (const Corner& c : corners)
      spans.push_back({p.row + c.y + offset, p.first + c.x + offset, p.end + c.x + offset});
  return spans;
}

// The arguments that the two forms of Apply share; call(mask, norm, size, &positive, threshold, spans of the
// positions).
template <class V, class N, class Call>
void withPositions(Bytes& in, const Stage<V>& stage, Call call) {
  const RoiSize size = someSize(in);
  auto mask = writesImage<std::uint8_t>(in, size.width, size.height);
  const auto norm = readsImage<N>(in, size.width, size.height);
  const bool fits = size.width > 0 && size.height > 0 && mask.step >= size.width;
  const Spans positions = fits ? selectPositions(in, mask, size) : Spans{};
  mask.remember();
  int positive = -7;
  const auto objectBefore = stage.bytes();
  const Status status = call(mask, norm, size, oneIn(64, in) ? nullptr : &positive, someValue<V>(in), positions);
  checkCall(status, mask, norm);
  require(status == StatusOk || positive == -7, "a failing call counts nothing");
  require(objectBefore == stage.bytes(), "evaluation leaves the object");
}

template <class S, class N, class V, class... ScaleFactor>
using Apply = Status(const S*, int, const N*, int, std::uint8_t*, int, RoiSize, int*, V, HaarClassifier*,
                     ScaleFactor...);
template <class S, class N, class V, class... ScaleFactor>
using ApplyMixed = Status(const S*, int, const S*, int, const N*, int, std::uint8_t*, int, RoiSize, int*, V,
                          HaarClassifier*, ScaleFactor...);

template <class S, class N, class V, class... ScaleFactor>
void evaluate(Bytes& in, const Stage<V>& stage, Apply<S, N, V, ScaleFactor...>* f) {
  withPositions<V, N>(in, stage, [&](auto& mask, auto& norm, RoiSize size, int* positive, V threshold, auto& spans) {
    std::vector<Corner> all = stage.uprightCorners();
    all.insert(all.end(), stage.tiltedCorners().begin(), stage.tiltedCorners().end());
    const auto src = reads<S>(in, entriesOf(spans, all, 0), size.width);
    const Status status = f(src, src.step, norm, norm.step, mask, mask.step, size, positive, threshold,
                            oneIn(64, in) ? nullptr : stage.object(), static_cast<ScaleFactor>(number(in, -70, 70))...);
    checkCall(status, src);
    return status;
  });
}

template <class S, class N, class V, class... ScaleFactor>
void evaluate(Bytes& in, const Stage<V>& stage, ApplyMixed<S, N, V, ScaleFactor...>* f) {
  withPositions<V, N>(in, stage, [&](auto& mask, auto& norm, RoiSize size, int* positive, V threshold, auto& spans) {
    const auto src = reads<S>(in, entriesOf(spans, stage.uprightCorners(), 0), size.width);
    const auto tilt = reads<S>(in, entriesOf(spans, stage.tiltedCorners(), 1), size.width);
    const Status status = f(src, src.step, tilt, tilt.step, norm, norm.step, mask, mask.step, size, positive, threshold,
                            oneIn(64, in) ? nullptr : stage.object(), static_cast<ScaleFactor>(number(in, -70, 70))...);
    checkCall(status, src, tilt);
    return status;
  });
}

const Family<float> kFamily32f = {zvpiHaarClassifierInitAlloc_32f, zvpiTiltHaarFeatures_32f,
                                  zvpiGetHaarClassifierSize_32f, zvpiHaarClassifierFree_32f};
const Family<float> kTilted32f = {zvpiTiltedHaarClassifierInitAlloc_32f, zvpiTiltHaarFeatures_32f,
                                  zvpiGetHaarClassifierSize_32f, zvpiHaarClassifierFree_32f};
const Family<std::int32_t> kFamily32s = {zvpiHaarClassifierInitAlloc_32s, zvpiTiltHaarFeatures_32s,
                                         zvpiGetHaarClassifierSize_32s, zvpiHaarClassifierFree_32s};
const Family<std::int32_t> kTilted32s = {zvpiTiltedHaarClassifierInitAlloc_32s, zvpiTiltHaarFeatures_32s,
                                         zvpiGetHaarClassifierSize_32s, zvpiHaarClassifierFree_32s};

// Builds a stage, perhaps tilts it, measures it and evaluates it once.
template <class V, class F>
void classify(Bytes& in, F* apply, const Family<V>& upright, const Family<V>& tilted) {
  const bool builtTilted = oneIn(3, in);
  const Family<V>& family = builtTilted ? tilted : upright;
  const Stage<V> stage(in, family, builtTilted);
  if (stage.object() == nullptr) return;
  RoiSize extent;
  require(family.extent(stage.object(), &extent) == StatusOk, "an object has a size");
  evaluate(in, stage, apply);
}
template <class F>
void classify32f(Bytes& in, F* apply) {
  classify(in, apply, kFamily32f, kTilted32f);
}
template <class F>
void classify32s(Bytes& in, F* apply) {
  classify(in, apply, kFamily32s, kTilted32s);
}

// --- The whole interface ---------------------------------------------------------------------------------------------

#define ZVP_TARGET(family, function) [](Bytes& in) { family(in, function); }

void (*const kTargets[])(Bytes&) = {
    ZVP_TARGET(absDiff<1>, zvpiAbsDiff_8u_C1R),
    ZVP_TARGET(absDiff<3>, zvpiAbsDiff_8u_C3R),
    ZVP_TARGET(absDiff<1>, zvpiAbsDiff_16u_C1R),
    ZVP_TARGET(absDiff<1>, zvpiAbsDiff_32f_C1R),
    ZVP_TARGET(absDiffC, zvpiAbsDiffC_8u_C1R),
    ZVP_TARGET(absDiffC, zvpiAbsDiffC_16u_C1R),
    ZVP_TARGET(absDiffC, zvpiAbsDiffC_32f_C1R),
    ZVP_TARGET(oneTable<1>, zvpiIntegral_8u32s_C1R),
    ZVP_TARGET(oneTable<1>, zvpiIntegral_8u32f_C1R),
    ZVP_TARGET(oneTable<1>, zvpiIntegral_32f_C1R),
    ZVP_TARGET(twoTables<1>, zvpiSqrIntegral_8u32s_C1R),
    ZVP_TARGET(twoTables<1>, zvpiSqrIntegral_8u32s64f_C1R),
    ZVP_TARGET(twoTables<1>, zvpiSqrIntegral_8u32f64f_C1R),
    ZVP_TARGET(oneTable<2>, zvpiTiltedIntegral_8u32s_C1R),
    ZVP_TARGET(oneTable<2>, zvpiTiltedIntegral_8u32f_C1R),
    ZVP_TARGET(twoTables<2>, zvpiTiltedSqrIntegral_8u32s_C1R),
    ZVP_TARGET(twoTables<2>, zvpiTiltedSqrIntegral_8u32s64f_C1R),
    ZVP_TARGET(twoTables<2>, zvpiTiltedSqrIntegral_8u32f64f_C1R),
    ZVP_TARGET(stdDev<Shape::kUpright>, zvpiRectStdDev_32f_C1R),
    ZVP_TARGET(stdDev<Shape::kUpright>, zvpiRectStdDev_32s32f_C1R),
    ZVP_TARGET(stdDev<Shape::kUpright>, zvpiRectStdDev_32s_C1RSfs),
    ZVP_TARGET(stdDev<Shape::kTilted>, zvpiTiltedRectStdDev_32f_C1R),
    ZVP_TARGET(stdDev<Shape::kTilted>, zvpiTiltedRectStdDev_32s32f_C1R),
    ZVP_TARGET(stdDev<Shape::kTilted>, zvpiTiltedRectStdDev_32s_C1RSfs),
    ZVP_TARGET(classify32f, zvpiApplyHaarClassifier_32f_C1R),
    ZVP_TARGET(classify32f, zvpiApplyHaarClassifier_32s32f_C1R),
    ZVP_TARGET(classify32s, zvpiApplyHaarClassifier_32s_C1RSfs),
    ZVP_TARGET(classify32f, zvpiApplyMixedHaarClassifier_32f_C1R),
    ZVP_TARGET(classify32f, zvpiApplyMixedHaarClassifier_32s32f_C1R),
    ZVP_TARGET(classify32s, zvpiApplyMixedHaarClassifier_32s_C1RSfs),
};

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Bytes in(data, size);
  const std::size_t last = std::size(fuzz::kTargets) - 1;
  fuzz::kTargets[in.ConsumeIntegralInRange<std::size_t>(0, last)](in);
  return 0;
}
