// All builds of the library, loaded side by side, give the same bits. One typical road through the library, on images
// that hold extremes; the other tests compare each build with plain models.
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
#define FIND(library, name) (library).find(&name, #name)

using Bits = std::vector<uint8_t>;

template <class T>
void append(Bits& bits, const Image<T>& image) {
  const Bits more = image.bytes();
  bits.insert(bits.end(), more.begin(), more.end());
}

// Results of every family at one size, as bytes.
Bits results(const Library& lib, int width, int height) {
  Bits bits;
  const RoiSize roi{width, height};
  const Image<float> a(width, height), b(width, height), difference(width, height), table(width + 1, height + 1);
  a.fill(Values<float>(1));
  b.fill(Values<float>(2));
  FIND(lib, zvpiAbsDiff_32f_C1R)(a.data(), a.step(), b.data(), b.step(), difference.data(), difference.step(), roi);
  append(bits, difference);
  int count = 0;
  a.fill([&] { return static_cast<float>(++count % 1013) / 7.0f; });
  FIND(lib, zvpiIntegral_32f_C1R)(a.data(), a.step(), table.data(), table.step(), roi);
  append(bits, table);

  const Image<uint8_t> src(width, height), mask(width, height);
  src.fill(Values<uint8_t>(3));
  const Image<float> sums(width + 2, height + 2), tilted(width + 30, height + 30), norm(width, height);
  const Image<double> squares(width + 2, height + 2), tiltedSquares(width + 2, height + 2);
  FIND(lib, zvpiSqrIntegral_8u32f64f_C1R)
  (src.data(), src.step(), sums.data(), sums.step(), squares.data(), squares.step(), roi, 0.3f, 0.7);
  FIND(lib, zvpiTiltedSqrIntegral_8u32f64f_C1R)
  (src.data(), src.step(), tilted.data(), tilted.step(), tiltedSquares.data(), tiltedSquares.step(), roi, 0.3f, 0.7);
  append(bits, sums);
  append(bits, squares);
  append(bits, tilted);
  append(bits, tiltedSquares);

  constexpr int kWindow = 12;
  const RoiSize positions{width - kWindow, height - kWindow};
  mask.fill([] { return 1; });
  norm.fill([] { return 0; });
  FIND(lib, zvpiRectStdDev_32f_C1R)
  (sums.data(), sums.step(), squares.data(), squares.step(), norm.data(), norm.step(), positions,
   {1, 1, kWindow - 2, kWindow - 2});
  append(bits, norm);
  int positive = 0;
  const auto stage = build(randomStage<float>(7, 30, kWindow));
  FIND(lib, zvpiApplyHaarClassifier_32f_C1R)
  (sums.data(), sums.step(), norm.data(), norm.step(), mask.data(), mask.step(), positions, &positive, 0.0f,
   stage.get());
  append(bits, mask);
  return bits;
}

TEST(Variants, GiveTheSameBits) {
  const std::string directory = ZVP_LIBRARY_DIR, name = ZVP_SONAME;
  const Library baseline(directory + "/" + name);
  for (const std::string variant : {"x86-64-v3", "x86-64-v4"}) {
    if (!processorRuns(variant)) GTEST_SKIP() << "this processor does not run " << variant;
    const Library library(directory + "/glibc-hwcaps/" + variant + "/" + name);
    EXPECT_NE(FIND(library, zvpcvGetLibVersion)(), FIND(baseline, zvpcvGetLibVersion)()) << "one library loaded twice";
    for (const int width : {13, 31, 64, 127, 640})
      ASSERT_EQ(results(library, width, 37), results(baseline, width, 37)) << variant << ", width " << width;
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
