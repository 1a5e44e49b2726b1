// Haar classifiers: a stage is built from arbitrary arrays, perhaps tilted, measured and evaluated once.
#include <zvpcv/detect.h>

#include "families.h"
#include "operands.h"

namespace fuzz {
namespace {

template <class V>
V someValue(Bytes& in) {
  const auto bits = in.ConsumeIntegral<std::uint32_t>();
  V value;
  std::memcpy(&value, &bits, sizeof value);
  return oneIn(4, in) ? value : static_cast<V>(static_cast<std::int8_t>(bits));
}

template <class V>
struct Family {
  using Build = Status (*)(HaarClassifier**, const Rect*, const V*, const V*, const V*, const V*, const int*, int);

  Build build[2];  // upright, tilted
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
    build(in, length, builtTilted);
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
  void build(Bytes& in, int length, bool tilted) {
    const auto rects = exactArray(rects_);
    const auto weights = exactArray(weights_), thresholds = exactArray(thresholds_), values = exactArray(thresholds_);
    const auto counts = exactArray(counts_);
    const int null = in.ConsumeIntegralInRange(0, 200);
    HaarClassifier *const untouched = reinterpret_cast<HaarClassifier*>(this), *state = untouched;
    const Status status = family_.build[tilted](
        null == 1 ? nullptr : &state, null == 2 ? nullptr : rects.get(), null == 3 ? nullptr : weights.get(),
        null == 4 ? nullptr : thresholds.get(), null == 5 ? nullptr : values.get(), null == 6 ? nullptr : values.get(),
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
void evaluate(Bytes& in, const Stage<V>& stage,
              Status (*f)(const S*, int, const N*, int, std::uint8_t*, int, RoiSize, int*, V, HaarClassifier*,
                          ScaleFactor...)) {
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
void evaluate(Bytes& in, const Stage<V>& stage,
              Status (*f)(const S*, int, const S*, int, const N*, int, std::uint8_t*, int, RoiSize, int*, V,
                          HaarClassifier*, ScaleFactor...)) {
  withPositions<V, N>(in, stage, [&](auto& mask, auto& norm, RoiSize size, int* positive, V threshold, auto& spans) {
    const auto src = reads<S>(in, entriesOf(spans, stage.uprightCorners(), 0), size.width);
    const auto tilt = reads<S>(in, entriesOf(spans, stage.tiltedCorners(), 1), size.width);
    const Status status = f(src, src.step, tilt, tilt.step, norm, norm.step, mask, mask.step, size, positive, threshold,
                            oneIn(64, in) ? nullptr : stage.object(), static_cast<ScaleFactor>(number(in, -70, 70))...);
    checkCall(status, src, tilt);
    return status;
  });
}

#define ZVP_FAMILY(type)                                                                                         \
  {                                                                                                              \
    {zvpiHaarClassifierInitAlloc_##type, zvpiTiltedHaarClassifierInitAlloc_##type}, zvpiTiltHaarFeatures_##type, \
        zvpiGetHaarClassifierSize_##type, zvpiHaarClassifierFree_##type                                          \
  }
constexpr Family<float> kFamily32f = ZVP_FAMILY(32f);
constexpr Family<std::int32_t> kFamily32s = ZVP_FAMILY(32s);

// Builds a stage, perhaps tilts it, measures it and evaluates it once.
template <class V>
void classify(Bytes& in, const Family<V>& family, auto* apply) {
  const Stage<V> stage(in, family, oneIn(3, in));
  if (stage.object() == nullptr) return;
  RoiSize extent;
  require(family.extent(stage.object(), &extent) == StatusOk, "an object has a size");
  evaluate(in, stage, apply);
}
void classify32f(Bytes& in, auto* apply) { classify(in, kFamily32f, apply); }
void classify32s(Bytes& in, auto* apply) { classify(in, kFamily32s, apply); }

constexpr Target kTargets[] = {
    ZVP_TARGET(classify32f, zvpiApplyHaarClassifier_32f_C1R),
    ZVP_TARGET(classify32f, zvpiApplyHaarClassifier_32s32f_C1R),
    ZVP_TARGET(classify32s, zvpiApplyHaarClassifier_32s_C1RSfs),
    ZVP_TARGET(classify32f, zvpiApplyMixedHaarClassifier_32f_C1R),
    ZVP_TARGET(classify32f, zvpiApplyMixedHaarClassifier_32s32f_C1R),
    ZVP_TARGET(classify32s, zvpiApplyMixedHaarClassifier_32s_C1RSfs),
};

}  // namespace

Targets detectTargets() { return kTargets; }

}  // namespace fuzz
