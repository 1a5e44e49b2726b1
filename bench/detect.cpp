#include <zvpcv/detect.h>
#include <zvpcv/integral.h>

#include "cases.h"
#include "plain_detect.h"

namespace bench::ZVP_LOOPS {
namespace {

using plain::FloatArithmetic, plain::ScaledArithmetic, plain::Stage, plain::Stump;

constexpr int kStumps = 60, kWindow = 20;

// --- A seeded stage --------------------------------------------------------------------------------------------------

using Generator = std::mt19937;

int between(Generator& g, int low, int high) { return std::uniform_int_distribution<int>(low, high)(g); }

Rect randomRect(Generator& g, bool tilted) {
  if (!tilted) {
    const int x = between(g, 0, kWindow - 4), y = between(g, 0, kWindow - 4);
    return {x, y, between(g, 1, kWindow - x), between(g, 1, kWindow - y)};
  }
  const int width = between(g, 1, 8), height = between(g, 1, 8);  // about the topmost corner, inside the window
  return {between(g, height, kWindow - width), between(g, 0, kWindow - width - height), width, height};
}

// Stumps of two rectangles first, then those of three: the order in which an object sums them. Values either side of 0.
template <class V>
Stage<V> randomStage(bool mixed) {
  Generator g(5);
  Stage<V> stage;
  for (int k = 0; k < kStumps; ++k) {
    Stump<V> stump{mixed && k % 2 != 0, {}, {}, V(between(g, -9, 9)), V(between(g, -99, 0)), V(between(g, 0, 99))};
    for (int i = k < kStumps / 2 ? 2 : 3; i > 0; --i) {
      stump.rects.push_back(randomRect(g, stump.tilted));
      stump.weights.push_back(V(between(g, 1, 3) * (i == 1 ? -1 : 1)));
    }
    stage.push_back(stump);
  }
  return stage;
}

// --- Objects ---------------------------------------------------------------------------------------------------------

// The functions of one number type.
template <class V>
struct Functions {
  using InitAlloc = Status(HaarClassifier**, const Rect*, const V*, const V*, const V*, const V*, const int*, int);
  InitAlloc *initAlloc, *initAllocTilted;
  Status (*tilt)(const std::uint8_t*, int, HaarClassifier*);
  Status (*extent)(HaarClassifier*, RoiSize*);
  Status (*free)(HaarClassifier*);
};

template <class V>
const Functions<V> functions;
template <>
const Functions<float> functions<float> = {zvpiHaarClassifierInitAlloc_32f, zvpiTiltedHaarClassifierInitAlloc_32f,
                                           zvpiTiltHaarFeatures_32f, zvpiGetHaarClassifierSize_32f,
                                           zvpiHaarClassifierFree_32f};
template <>
const Functions<std::int32_t> functions<std::int32_t> = {
    zvpiHaarClassifierInitAlloc_32s, zvpiTiltedHaarClassifierInitAlloc_32s, zvpiTiltHaarFeatures_32s,
    zvpiGetHaarClassifierSize_32s, zvpiHaarClassifierFree_32s};

// A stage as the arrays that the functions take.
template <class V>
struct Arrays {
  explicit Arrays(const Stage<V>& stage) {
    for (const auto& stump : stage) {
      rects.insert(rects.end(), stump.rects.begin(), stump.rects.end());
      weights.insert(weights.end(), stump.weights.begin(), stump.weights.end());
      counts.push_back(int(stump.rects.size()));
      thresholds.push_back(stump.threshold);
      val1.push_back(stump.val1);
      val2.push_back(stump.val2);
      tilted.push_back(stump.tilted);
    }
  }

  HaarClassifier* build(typename Functions<V>::InitAlloc* initAlloc) const {
    HaarClassifier* object = nullptr;
    initAlloc(&object, rects.data(), weights.data(), thresholds.data(), val1.data(), val2.data(), counts.data(),
              int(counts.size()));
    return object;
  }

  std::vector<Rect> rects;
  std::vector<V> weights, thresholds, val1, val2;
  std::vector<int> counts;
  std::vector<std::uint8_t> tilted;
};

template <class V>
std::shared_ptr<HaarClassifier> buildStage(const Stage<V>& stage) {
  const Arrays<V> arrays(stage);
  HaarClassifier* object = arrays.build(functions<V>.initAlloc);
  functions<V>.tilt(arrays.tilted.data(), 1, object);
  return {object, functions<V>.free};
}

// --- Operands --------------------------------------------------------------------------------------------------------

Image<float> integralOf(const Image<std::uint8_t>& src, const Image<float>& table, bool tilted) {
  (tilted ? zvpiTiltedIntegral_8u32f_C1R : zvpiIntegral_8u32f_C1R)(src.data(), src.step, table.data(), table.step,
                                                                   {src.width, src.height}, 0);
  return table;
}
Image<std::int32_t> integralOf(const Image<std::uint8_t>& src, const Image<std::int32_t>& table, bool tilted) {
  (tilted ? zvpiTiltedIntegral_8u32s_C1R : zvpiIntegral_8u32s_C1R)(src.data(), src.step, table.data(), table.step,
                                                                   {src.width, src.height}, 0);
  return table;
}

// Every position, or about one in a hundred.
enum class Selection { kDense, kSparse };

Image<std::uint8_t> maskOf(RoiSize size, Selection selection) {
  Generator g(6);
  Image<std::uint8_t> mask(size.width, size.height);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) mask.row(y)[x] = selection == Selection::kDense || between(g, 1, 100) == 1;
  return mask;
}

// All that one evaluation reads and writes. Measured with a threshold that rejects nothing, so that every call finds
// the same mask; compared with one that rejects about half.
template <class A, class Entry, class V>
struct Evaluation {
  Evaluation(RoiSize positions, bool mixed, Selection selected)
      : size(positions),
        selection(selected),
        stage(randomStage<V>(mixed)),
        object(buildStage(stage)),
        frame(randomImage<std::uint8_t>(size.width + kWindow, size.height + kWindow, 1)),
        upright(integralOf(frame, Image<Entry>(frame.width + 2, frame.height + 2), false)),
        tilted(integralOf(frame, Image<Entry>(frame.width + 2, frame.height + 2), true)),
        norm(size.width, size.height),
        mask(maskOf(size, selection)),
        bytes(upright.bytes() * (mixed ? 2 : 1) + norm.bytes() + 2 * mask.bytes()) {
    Generator g(7);
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x) norm.row(y)[x] = typename A::Norm(between(g, 1, 90));
  }

  RoiSize size;
  Selection selection;
  Stage<V> stage;
  std::shared_ptr<HaarClassifier> object;
  Image<std::uint8_t> frame;
  Image<Entry> upright, tilted;
  Image<typename A::Norm> norm;
  Image<std::uint8_t> mask;
  std::size_t bytes;
};

// call(evaluation, mask, threshold) runs the library and returns how many positions remain.
template <class A, class Entry, class V, class Call>
Work evaluate(const Evaluation<A, Entry, V>& e, Call call) {
  constexpr V kRejectsNothing = -1000000, kRejectsHalf = 0;
  const auto plainLoop = [e](const Image<std::uint8_t>& mask, V threshold) {
    return plain::applyStage<A>(e.upright, e.tilted, e.norm, mask, threshold, e.stage);
  };
  return {.library = [=] { call(e, e.mask, kRejectsNothing); },
          .plain = [=] { plainLoop(e.mask, kRejectsNothing); },
          .bytes = e.bytes,
          .agree =
              [=] {
                const auto mask = maskOf(e.size, e.selection), expected = maskOf(e.size, e.selection);
                return call(e, mask, kRejectsHalf) == plainLoop(expected, kRejectsHalf) && same(mask, expected);
              }};
}

// --- Cases -----------------------------------------------------------------------------------------------------------

template <class A, Selection selection = Selection::kDense, class Entry, class V, class... ScaleFactor>
Work apply(Status (*function)(const Entry*, int, const typename A::Norm*, int, std::uint8_t*, int, RoiSize, int*, V,
                              HaarClassifier*, ScaleFactor...),
           RoiSize size) {
  return evaluate(Evaluation<A, Entry, V>(size, false, selection), [=](const auto& e, const auto& mask, V threshold) {
    int positive = 0;
    function(e.upright.data(), e.upright.step, e.norm.data(), e.norm.step, mask.data(), mask.step, e.size, &positive,
             threshold, e.object.get(), ScaleFactor{A::scaleFactor}...);
    return positive;
  });
}

template <class A, class Entry, class V, class... ScaleFactor>
Work applyMixed(Status (*function)(const Entry*, int, const Entry*, int, const typename A::Norm*, int, std::uint8_t*,
                                   int, RoiSize, int*, V, HaarClassifier*, ScaleFactor...),
                RoiSize size) {
  const Evaluation<A, Entry, V> evaluation(size, true, Selection::kDense);
  return evaluate(evaluation, [=](const auto& e, const auto& mask, V threshold) {
    int positive = 0;
    function(e.upright.data(), e.upright.step, e.tilted.data(), e.tilted.step, e.norm.data(), e.norm.step, mask.data(),
             mask.step, e.size, &positive, threshold, e.object.get(), ScaleFactor{A::scaleFactor}...);
    return positive;
  });
}

template <class V>
Work initAllocAndFree(typename Functions<V>::InitAlloc* initAlloc) {
  return {.library = [=, arrays = Arrays<V>(randomStage<V>(false))] { functions<V>.free(arrays.build(initAlloc)); },
          .plain = {}};
}

template <class V>
Work initAllocTiltAndFree() {
  const auto run = [arrays = Arrays<V>(randomStage<V>(true))] {
    HaarClassifier* object = arrays.build(functions<V>.initAlloc);
    functions<V>.tilt(arrays.tilted.data(), 1, object);
    functions<V>.free(object);
  };
  return {.library = run, .plain = {}};
}

template <class V>
Work getSize() {
  const auto run = [object = buildStage(randomStage<V>(false))] {
    RoiSize extent;
    functions<V>.extent(object.get(), &extent);
  };
  return {.library = run, .plain = {}};
}

template <class V>
void addObjectCases(std::vector<Case>& cases, const std::string& suffix) {
  const auto add = [&](const std::string& name, Work (*make)()) {
    cases.push_back({name, [make](RoiSize) { return make(); }});
  };
  add("zvpiHaarClassifierInitAlloc" + suffix + ", with Free",
      [] { return initAllocAndFree<V>(functions<V>.initAlloc); });
  add("zvpiTiltedHaarClassifierInitAlloc" + suffix + ", with Free",
      [] { return initAllocAndFree<V>(functions<V>.initAllocTilted); });
  add("zvpiTiltHaarFeatures" + suffix + ", with InitAlloc and Free", initAllocTiltAndFree<V>);
  add("zvpiGetHaarClassifierSize" + suffix, getSize<V>);
}

}  // namespace

std::vector<Case> detectCases() {
  using FromFloats = FloatArithmetic<float>;
  using FromIntegers = FloatArithmetic<std::int32_t>;
  return {
      ZVP_CASE(apply<FromFloats>, zvpiApplyHaarClassifier_32f_C1R),
      ZVP_CASE_OF((apply<FromFloats, Selection::kSparse>), zvpiApplyHaarClassifier_32f_C1R, ", sparse"),
      ZVP_CASE(apply<FromIntegers>, zvpiApplyHaarClassifier_32s32f_C1R),
      ZVP_CASE(apply<ScaledArithmetic>, zvpiApplyHaarClassifier_32s_C1RSfs),
      ZVP_CASE(applyMixed<FromFloats>, zvpiApplyMixedHaarClassifier_32f_C1R),
      ZVP_CASE(applyMixed<FromIntegers>, zvpiApplyMixedHaarClassifier_32s32f_C1R),
      ZVP_CASE(applyMixed<ScaledArithmetic>, zvpiApplyMixedHaarClassifier_32s_C1RSfs),
  };
}

std::vector<Case> objectCases() {
  std::vector<Case> cases;
  addObjectCases<float>(cases, "_32f");
  addObjectCases<std::int32_t>(cases, "_32s");
  return cases;
}

}  // namespace bench::ZVP_LOOPS
