// All builds of the library, loaded side by side, give the same bits. One typical call of every family on images that
// hold extremes; the other tests compare each build with plain models.
#include <dlfcn.h>

#include <string>

#include "support/haar.h"
#include "support/image.h"
#include "support/variant.h"
#include "zvpcv/zvpcv.h"

namespace zvp::test {
namespace {

class Library {
 public:
  explicit Library(const std::string& path) : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    EXPECT_NE(handle_, nullptr) << dlerror();
  }

  template <class F>
  F* find(F*, const char* name) const {
    void* symbol = dlsym(handle_, name);
    EXPECT_NE(symbol, nullptr) << name;
    return reinterpret_cast<F*>(symbol);
  }

 private:
  void* handle_;
};

// The results of one library at one size, as bytes.
class Results {
 public:
  Results(const Library& library, int width, int height) : library_(library), roi_{width, height} {
    bytes_.fill(Values<uint8_t>(1));
    floats_.fill(Values<float>(2));
    others_.fill(Values<float>(3));
    unsigned seed = 4;
    smooth_.fill([&] { return static_cast<float>((seed = seed * 1664525 + 1013904223) >> 8) / 1e4f; });
    arithmetic();
    integrals();
    filters();
    morphology();
    distances();
    pyramids();
    samples();
  }

  const std::vector<uint8_t>& bits() const { return bits_; }

 private:
#define CALL(name) library_.find(&name, #name)

  template <class T>
  void add(const Image<T>& image) {
    const std::vector<uint8_t> more = image.bytes();
    bits_.insert(bits_.end(), more.begin(), more.end());
  }
  std::vector<uint8_t> memory(int bytes) const { return std::vector<uint8_t>(static_cast<size_t>(bytes)); }

  void arithmetic() {
    const Image<float> out(roi_.width, roi_.height);
    CALL(zvpiAbsDiff_32f_C1R)
    (floats_.data(), floats_.step(), others_.data(), others_.step(), out.data(), out.step(), roi_);
    add(out);
    CALL(zvpiAddWeighted_32f_C1IMR)
    (floats_.data(), floats_.step(), bytes_.data(), bytes_.step(), out.data(), out.step(), roi_, 0.3f);
    add(out);
  }

  void integrals() {
    constexpr int kWindow = 12;
    const RoiSize positions{roi_.width - kWindow, roi_.height - kWindow};
    const Image<float> sums(roi_.width + 2, roi_.height + 2), tilted(roi_.width + 2, roi_.height + 2);
    const Image<float> norm(roi_.width, roi_.height), table(roi_.width + 1, roi_.height + 1);
    const Image<double> squares(roi_.width + 2, roi_.height + 2), tiltedSquares(roi_.width + 2, roi_.height + 2);
    const Image<uint8_t> mask(roi_.width, roi_.height);
    CALL(zvpiIntegral_32f_C1R)(smooth_.data(), smooth_.step(), table.data(), table.step(), roi_);
    CALL(zvpiSqrIntegral_8u32f64f_C1R)
    (bytes_.data(), bytes_.step(), sums.data(), sums.step(), squares.data(), squares.step(), roi_, 0.3f, 0.7);
    CALL(zvpiTiltedSqrIntegral_8u32f64f_C1R)
    (bytes_.data(), bytes_.step(), tilted.data(), tilted.step(), tiltedSquares.data(), tiltedSquares.step(), roi_, 0.3f,
     0.7);
    CALL(zvpiRectStdDev_32f_C1R)
    (sums.data(), sums.step(), squares.data(), squares.step(), norm.data(), norm.step(), positions,
     {1, 1, kWindow - 2, kWindow - 2});
    mask.fill([] { return 1; });
    int positive = 0;
    const auto stage = build(randomStage<float>(7, 30, kWindow));
    CALL(zvpiApplyHaarClassifier_32f_C1R)
    (sums.data(), sums.step(), norm.data(), norm.step(), mask.data(), mask.step(), positions, &positive, 0.0f,
     stage.get());
    add(table), add(sums), add(squares), add(tilted), add(tiltedSquares), add(norm), add(mask);
  }

  void filters() {
    const Image<float> rows(roi_.width, roi_.height), out(roi_.width, roi_.height);
    std::vector<float*> to;
    for (int y = 0; y < roi_.height; ++y) to.push_back(rows.address(y));
    std::vector<const float*> from(to.begin(), to.end());
    const float taps[] = {0.1f, 0.7f, -0.3f, 0.2f, 0.3f};
    auto work = memory(10000);
    CALL(zvpiFilterRowBorderPipeline_32f_C1R)
    (smooth_.data(), smooth_.step(), to.data(), roi_, taps, 5, 2, BorderReflect, 0, work.data());
    CALL(zvpiFilterColumnPipeline_32f_C1R)
    (from.data(), out.data(), out.step(), {roi_.width, roi_.height - 4}, taps, 5, work.data());
    add(rows), add(out);
  }

  void morphology() {
    const uint8_t mask[] = {0, 1, 0, 1, 1, 1, 0, 1, 0};
    int specSize = 0, bufferSize = 0;
    zvpiMorphAdvGetSize_32f_C1R(roi_, {3, 3}, &specSize, &bufferSize);
    auto spec = memory(specSize), work = memory(bufferSize);
    auto* object = reinterpret_cast<MorphAdvSpec*>(spec.data());
    const Image<float> out(roi_.width, roi_.height);
    CALL(zvpiMorphAdvInit_32f_C1R)(roi_, mask, {3, 3}, object, work.data());
    CALL(zvpiMorphGradientBorder_32f_C1R)
    (smooth_.data(), smooth_.step(), out.data(), out.step(), roi_, BorderReplicate, 0, object, work.data());
    add(out);
  }

  void distances() {
    const Image<float> chamfer(roi_.width, roi_.height), exact(roi_.width, roi_.height);
    const Image<uint8_t> speckles(roi_.width, roi_.height), src(roi_.width, roi_.height);
    unsigned seed = 5;
    src.fill([&] { return ((seed = seed * 1664525 + 1013904223) >> 16) % 50; });
    speckles.fill([&] { return ((seed = seed * 1664525 + 1013904223) >> 16) % 3; });
    const float metrics[] = {1.0f, 1.4f, 2.1969f};
    int size = 0;
    zvpiTrueDistanceTransformGetBufferSize_8u32f_C1R(roi_, &size);
    auto work = memory(size + 13 * roi_.width * roi_.height);
    CALL(zvpiDistanceTransform_5x5_8u32f_C1R)
    (src.data(), src.step(), chamfer.data(), chamfer.step(), roi_, metrics);
    CALL(zvpiTrueDistanceTransform_8u32f_C1R)
    (src.data(), src.step(), exact.data(), exact.step(), roi_, work.data());
    ConnectedComponent component = {};
    CALL(zvpiFloodFill_Grad8Con_8u_C1IR)
    (speckles.data(), speckles.step(), roi_, {3, 3}, 9, 1, 1, &component, work.data());
    CALL(zvpiMarkSpeckles_8u_C1IR)
    (speckles.data(), speckles.step(), roi_, 0, 4, 0, 1, work.data());
    std::vector<Point> peaks(1000, Point{-1, -1});
    int count = 0;
    CALL(zvpiFindPeaks3x3_32f_C1R)
    (chamfer.data(), chamfer.step(), roi_, 2.0f, peaks.data(), 1000, &count, 0, 1, work.data());
    const auto* coordinates = reinterpret_cast<const uint8_t*>(peaks.data());
    bits_.insert(bits_.end(), coordinates, coordinates + sizeof(Point) * peaks.size());
    add(chamfer), add(exact), add(speckles);
  }

  void pyramids() {
    const RoiSize half{(roi_.width + 1) / 2, (roi_.height + 1) / 2};
    const Image<float> down(half.width, half.height), up(2 * half.width, 2 * half.height);
    auto work = memory(100 * roi_.width + 1000);
    CALL(zvpiPyrDown_Gauss5x5_32f_C1R)
    (smooth_.data(), smooth_.step(), down.data(), down.step(), roi_, work.data());
    CALL(zvpiPyrUp_Gauss5x5_32f_C1R)(down.data(), down.step(), up.data(), up.step(), half, work.data());
    add(down), add(up);

    const float kernel[] = {1, 3, 5, 3, 1}, rate = 1.7f;
    RoiSize next;
    PyramidLayerState* state = nullptr;
    zvpiGetPyramidDownROI(roi_, &next, rate);
    const Image<float> layer(next.width, next.height);
    CALL(zvpiPyramidLayerDownInitAlloc_32f_C1R)(&state, roi_, rate, kernel, 5, 2);
    CALL(zvpiPyramidLayerDown_32f_C1R)
    (smooth_.data(), smooth_.step(), roi_, layer.data(), layer.step(), next, state);
    CALL(zvpiPyramidLayerDownFree_32f_C1R)(state);
    add(layer);
  }

  void samples() {
    constexpr int kSide = 15;
    const Image<float> window(kSide, kSide);
    const Image<uint8_t> bytes(kSide, kSide);
    Point min, max;
    CALL(zvpiCopySubpixIntersect_32f_C1R)
    (smooth_.data(), smooth_.step(), roi_, window.data(), window.step(), {kSide, kSide}, {5.3f, 7.7f}, &min, &max);
    CALL(zvpiCopySubpixIntersect_8u_C1R)
    (bytes_.data(), bytes_.step(), roi_, bytes.data(), bytes.step(), {kSide, kSide}, {5.3f, 7.7f}, &min, &max);
    add(window), add(bytes);

    uint8_t* images[] = {reinterpret_cast<uint8_t*>(smooth_.address())};
    RoiSize size = roi_;
    double rate = 1.0;
    int32_t step = smooth_.step();
    const Pyramid pyramid{images, &size, &rate, &step, nullptr, 0};
    const float from[] = {6.25f, 7.5f};
    const Image<float> found(2, 1), error(1, 1);
    found.set(0, 0, 6.5f), found.set(0, 1, 7.25f);
    int8_t status;
    OpticalFlowState* state = nullptr;
    CALL(zvpiOpticalFlowPyrLKInitAlloc_32f_C1R)(&state, roi_, 7, 0);
    CALL(zvpiOpticalFlowPyrLK_32f_C1R)
    (&pyramid, &pyramid, from, found.data(), &status, error.data(), 1, 7, 0, 3, 0.0f, state);
    CALL(zvpiOpticalFlowPyrLKFree_32f_C1R)(state);
    add(found), add(error);
  }

#undef CALL

  const Library& library_;
  RoiSize roi_;
  Image<uint8_t> bytes_{roi_.width, roi_.height};
  Image<float> floats_{roi_.width, roi_.height}, others_{roi_.width, roi_.height}, smooth_{roi_.width, roi_.height};
  std::vector<uint8_t> bits_;
};

TEST(Variants, GiveTheSameBits) {
  const std::string directory = ZVP_LIBRARY_DIR, name = ZVP_SONAME;
  const Library baseline(directory + "/" + name);
  for (const std::string variant : {"x86-64-v3", "x86-64-v4"}) {
    if (!processorRuns(variant)) GTEST_SKIP() << "this processor does not run " << variant;
    const Library library(directory + "/glibc-hwcaps/" + variant + "/" + name);
    EXPECT_NE(library.find(&zvpcvGetLibVersion, "zvpcvGetLibVersion")(),
              baseline.find(&zvpcvGetLibVersion, "zvpcvGetLibVersion")())
        << "one library loaded twice";
    for (const int width : {14, 31, 64, 127, 640})
      ASSERT_EQ(Results(library, width, 37).bits(), Results(baseline, width, 37).bits()) << variant << ", " << width;
  }
}

// The loader takes the best build by itself.
TEST(Variants, TheLoaderPicksTheBest) {
  Dl_info info;
  ASSERT_NE(dladdr(reinterpret_cast<void*>(zvpcvGetLibVersion), &info), 0);
  const std::string best = processorRuns("x86-64-v4") ? "x86-64-v4" : processorRuns("x86-64-v3") ? "x86-64-v3" : "lib";
  EXPECT_NE(std::string(info.dli_fname).find("/" + best + "/"), std::string::npos) << info.dli_fname;
}

}  // namespace
}  // namespace zvp::test
