// One classifier object serves several threads at once; run under the thread sanitizer this also proves that nothing
// is written that calls share.
#include <atomic>
#include <thread>

#include "support/haar.h"
#include "zvpcv/integral.h"

namespace zvp::test {
namespace {

constexpr int kWidth = 60, kHeight = 40, kWindow = 12;

// The stage's survivors in an image of the given seed, from the pixels on.
int survivors(HaarClassifier* stage, unsigned seed) {
  const Image<uint8_t> src(kWidth, kHeight), mask(kWidth - kWindow, kHeight - kWindow);
  const Image<float> sums(kWidth + 1, kHeight + 1), norm(kWidth - kWindow, kHeight - kWindow);
  const Image<double> squares(kWidth + 1, kHeight + 1);
  src.fill(Values<uint8_t>(seed));
  mask.fill([] { return 1; });
  const RoiSize positions{kWidth - kWindow, kHeight - kWindow};
  int positive = -1;
  EXPECT_EQ(zvpiSqrIntegral_8u32f64f_C1R(src.data(), src.step(), sums.data(), sums.step(), squares.data(),
                                         squares.step(), {kWidth, kHeight}, 0, 0),
            StatusOk);
  EXPECT_EQ(zvpiRectStdDev_32f_C1R(sums.data(), sums.step(), squares.data(), squares.step(), norm.data(), norm.step(),
                                   positions, {1, 1, kWindow - 2, kWindow - 2}),
            StatusOk);
  EXPECT_EQ(zvpiApplyHaarClassifier_32f_C1R(sums.data(), sums.step(), norm.data(), norm.step(), mask.data(),
                                            mask.step(), positions, &positive, 0.0f, stage),
            StatusOk);
  return positive;
}

TEST(Threads, ShareOneClassifier) {
  const auto stage = build(randomStage<float>(5, 20, kWindow));
  constexpr int kThreads = 4, kRounds = 8;
  std::vector<int> expected;
  for (unsigned round = 0; round < kRounds; ++round) expected.push_back(survivors(stage.get(), round));
  std::atomic<int> differences = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&] {
      for (unsigned round = 0; round < kRounds; ++round)
        differences += survivors(stage.get(), round) != expected[round];
    });
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(differences, 0);
}

}  // namespace
}  // namespace zvp::test
