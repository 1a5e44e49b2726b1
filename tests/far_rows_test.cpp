// Rows more than 2 and 4 GiB apart, in memory of which only the rows exist, against the same calls on rows side by side:
// one member of every family.
#include <tuple>

#include "support/haar.h"
#include "support/morphology.h"
#include "support/pyramid.h"
#include "zvpcv/zvpcv.h"

namespace zvp::test {
namespace {

constexpr int kGap = 0x50000000;  // 1.25 GiB
constexpr RoiSize kRoi{9, 10}, kTable{kRoi.width + 2, kRoi.height + 2};

// The images of a call, filled with small numbers, and what they and other results are afterwards.
class Operands {
 public:
  explicit Operands(int gap) : gap_(gap) {}

  template <class T>
  const Image<T>& image(RoiSize size = kRoi) {
    const auto image = std::make_shared<Image<T>>(size.width, size.height, gap_);
    image->fill([&] { return engine_() % 8; });
    images_.push_back([image](std::vector<double>& numbers) {
      for (int y = 0; y < image->height(); ++y)
        for (int x = 0; x < image->width(); ++x) numbers.push_back(image->get(y, x));
    });
    return *image;
  }
  void add(std::initializer_list<double> numbers) { numbers_.insert(numbers_.end(), numbers); }
  int gap() const { return gap_; }
  uint8_t* work() { return work_.data(); }

  std::vector<double> numbers() const {
    std::vector<double> all = numbers_;
    for (const auto& append : images_) append(all);
    return all;
  }

 private:
  int gap_;
  std::mt19937 engine_;
  std::vector<std::function<void(std::vector<double>&)>> images_;
  std::vector<double> numbers_;
  std::vector<uint8_t> work_ = std::vector<uint8_t>(100000);
};

// f with these arguments: an image stands for its address and its step.
template <class F, class... A>
void call(F f, A&&... arguments) {
  const auto expanded = [](auto& a) {
    if constexpr (requires { a.step(); }) {
      return std::tuple(a.data(), a.step());
    } else {
      return std::tuple(a);
    }
  };
  EXPECT_EQ(std::apply(f, std::tuple_cat(expanded(arguments)...)), StatusOk);
}

template <class T>
std::vector<T*> rowsOf(const Image<std::remove_const_t<T>>& image) {
  std::vector<T*> rows;
  for (int y = 0; y < image.height(); ++y) rows.push_back(image.address(y));
  return rows;
}

template <class Extent, class Member>
void filter(Operands& o, Extent extent, const Member& member) {
  const MorphWork work(member, extent, drawn({".x.", "xxx", ".x."}));
  for (const auto& operation : member.operations)
    EXPECT_EQ(work.run(operation, o.image<uint8_t>(), o.image<uint8_t>(), kRoi, BorderReplicate), StatusOk);
}

void detect(Operands& o) {
  constexpr int kWindow = 4;
  const RoiSize positions{kRoi.width - kWindow, kRoi.height - kWindow};
  const auto &sums = o.image<float>(kTable), &norm = o.image<float>();
  const auto& squares = o.image<double>(kTable);
  const auto stage = build(randomStage<float>(7, 30, kWindow));
  int positive = -1;
  call(zvpiSqrIntegral_8u32f64f_C1R, o.image<uint8_t>(), sums, squares, kRoi, 0.0f, 0.0);
  call(zvpiRectStdDev_32f_C1R, sums, squares, norm, positions, Rect{1, 1, 2, 3});
  call(zvpiApplyHaarClassifier_32f_C1R, sums, norm, o.image<uint8_t>(), positions, &positive, 0.0f, stage.get());
  o.add({double(positive)});
}

void pipelines(Operands& o) {
  const float taps[] = {0.1f, 0.7f, -0.3f, 0.2f, 0.3f};
  const Image<float>& between = o.image<float>();
  call(zvpiFilterRowBorderPipeline_32f_C1R, o.image<float>(), rowsOf<float>(between).data(), kRoi, taps, 5, 2,
       BorderReflect, 0.0f, o.work());
  const Image<float>& dst = o.image<float>();
  call(zvpiFilterColumnPipeline_32f_C1R, rowsOf<const float>(between).data(), dst.data(), dst.step(),
       RoiSize{kRoi.width, kRoi.height - 4}, taps, 5, o.work());
}

void layers(Operands& o) {
  const int16_t kernel[] = {1, 3, 5, 3, 1};
  RoiSize next;
  ASSERT_EQ(zvpiGetPyramidDownROI(kRoi, &next, 1.7f), StatusOk);
  PyramidLayerState* state = nullptr;
  call(zvpiPyramidLayerDownInitAlloc_8u_C1R, &state, kRoi, 1.7f, kernel, 5, 2);
  call(zvpiPyramidLayerDown_8u_C1R, o.image<uint8_t>(), kRoi, o.image<uint8_t>(next), next, state);
  call(zvpiPyramidLayerDownFree_8u_C1R, state);
  call(zvpiPyramidLayerUpInitAlloc_8u_C1R, &state, kRoi, 1.7f, kernel, 5, 2);
  call(zvpiPyramidLayerUp_8u_C1R, o.image<uint8_t>(next), next, o.image<uint8_t>(), kRoi, state);
  call(zvpiPyramidLayerUpFree_8u_C1R, state);
}

void flow(Operands& o) {
  const auto bowl = [](int, int y, int x) { return (x - 3) * (x - 4) + (y - 6) * (y - 5) + x * y / 2; };
  const ImagePyramid<uint8_t> a(kRoi, 1, 2.0f, bowl, o.gap()), b(kRoi, 1, 2.0f, bowl, o.gap());
  const float from[] = {4.25f, 6.5f};
  float to[] = {4.5f, 6.25f}, error = -1;
  int8_t status = -1;
  OpticalFlowState* state = nullptr;
  call(zvpiOpticalFlowPyrLKInitAlloc_8u_C1R, &state, kRoi, 5, 0);
  call(zvpiOpticalFlowPyrLK_8u_C1R, a.record(), b.record(), from, to, &status, &error, 1, 5, 1, 3, 0.0f, state);
  call(zvpiOpticalFlowPyrLKFree_8u_C1R, state);
  o.add({to[0], to[1], error, double(status)});
}

const std::pair<const char*, void (*)(Operands&)> kCalls[] = {
    {"absolute difference",
     [](Operands& o) { call(zvpiAbsDiff_8u_C1R, o.image<uint8_t>(), o.image<uint8_t>(), o.image<uint8_t>(), kRoi); }},
    {"accumulation",
     [](Operands& o) {
       call(zvpiAddWeighted_8u32f_C1IMR, o.image<uint8_t>(), o.image<uint8_t>(), o.image<float>(), kRoi, 0.25f);
     }},
    {"tilted integral",
     [](Operands& o) { call(zvpiTiltedIntegral_8u32s_C1R, o.image<uint8_t>(), o.image<int32_t>(kTable), kRoi, 5); }},
    {"integral, deviation, classifier", detect},
    {"pipelines", pipelines},
    {"Scharr",
     [](Operands& o) {
       call(zvpiFilterScharrVertBorder_32f_C1R, o.image<float>(), o.image<float>(), kRoi, BorderReplicate, 0.0f,
            o.work());
     }},
    {"peaks",
     [](Operands& o) {
       Point peaks[99] = {};
       int count = 0;
       call(zvpiFindPeaks3x3_32f_C1R, o.image<float>(), kRoi, 2.0f, peaks, 99, &count, 0, 1, o.work());
       for (const Point p : peaks) o.add({double(p.x), double(p.y), double(count)});
     }},
    {"erosion, dilation",
     [](Operands& o) {
       filter(o, kRoi.width,
              morphMember("8u_C1R", zvpiMorphologyBorderGetSize_8u_C1R, zvpiMorphologyBorderInit_8u_C1R,
                          {zvpiErodeBorder_8u_C1R, zvpiDilateBorder_8u_C1R}));
     }},
    {"composites",
     [](Operands& o) {
       filter(o, kRoi,
              morphMember("8u_C1R", zvpiMorphAdvGetSize_8u_C1R, zvpiMorphAdvInit_8u_C1R,
                          {zvpiMorphOpenBorder_8u_C1R, zvpiMorphTophatBorder_8u_C1R, zvpiMorphGradientBorder_8u_C1R}));
     }},
    {"chamfer distance",
     [](Operands& o) {
       const float metrics[] = {1.0f, 1.4f, 2.2f};
       call(zvpiDistanceTransform_5x5_8u32f_C1R, o.image<uint8_t>(), o.image<float>(), kRoi, metrics);
     }},
    {"exact distance",
     [](Operands& o) {
       call(zvpiTrueDistanceTransform_8u32f_C1R, o.image<uint8_t>(), o.image<float>(), kRoi, o.work());
     }},
    {"flood fill",
     [](Operands& o) {
       ConnectedComponent region{};
       call(zvpiFloodFill_Grad8Con_8u_C1IR, o.image<uint8_t>(), kRoi, Point{3, 3}, 99, 2, 2, &region, o.work());
       o.add({region.area, double(region.rect.width), double(region.rect.height)});
     }},
    {"speckles", [](Operands& o) { call(zvpiMarkSpeckles_8u_C1IR, o.image<uint8_t>(), kRoi, 99, 4, 1, 1, o.work()); }},
    {"octaves",
     [](Operands& o) {
       call(zvpiPyrDown_Gauss5x5_8u_C1R, o.image<uint8_t>(), o.image<uint8_t>({5, 5}), kRoi, o.work());
       call(zvpiPyrUp_Gauss5x5_8u_C1R, o.image<uint8_t>(), o.image<uint8_t>({18, 20}), kRoi, o.work());
     }},
    {"layers", layers},
    {"samples",
     [](Operands& o) {
       Point min{}, max{};
       call(zvpiCopySubpix_8u_C1R, o.image<uint8_t>(), o.image<uint8_t>(), RoiSize{8, 9}, 0.25f, 0.75f);
       call(zvpiCopySubpixIntersect_8u_C1R, o.image<uint8_t>(), kRoi, o.image<uint8_t>(), RoiSize{9, 5},
            Point32f{7.25f, 8.5f}, &min, &max);
       o.add({double(min.x), double(min.y), double(max.x), double(max.y)});
     }},
    {"optical flow", flow},
};

TEST(FarRows, GiveWhatRowsSideBySideGive) {
  if (sizeof(void*) == 4) GTEST_SKIP() << "no rows lie so far apart in 32 bits";
  for (const auto& [name, callOn] : kCalls) {
    SCOPED_TRACE(name);
    Operands beside(0), apart(kGap);
    callOn(beside), callOn(apart);
    EXPECT_EQ(apart.numbers(), beside.numbers());
  }
}

}  // namespace
}  // namespace zvp::test
