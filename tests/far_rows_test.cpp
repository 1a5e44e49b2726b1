// Rows more than 2 and 4 GiB apart, in memory of which only the rows exist, against the same calls on rows side by side.
#include <gtest/gtest.h>

#include "calls/calls.h"

namespace zvp::test {
namespace {

constexpr int kBeside = 1024;  // more than any feature or neighbourhood reaches beyond a row

std::vector<uint8_t> outcome(const calls::Export& e, unsigned seed, int padding) {
  calls::Seeded draw(seed, {9, 10}, padding);
  calls::Call call(e, draw);
  EXPECT_GE(call.run(), StatusOk);
  return call.outcome();
}

TEST(FarRows, GiveWhatRowsSideBySideGive) {
  if (sizeof(void*) == 4) GTEST_SKIP() << "no rows lie so far apart in 32 bits";
  for (const calls::Export& e : calls::allExports())
    for (unsigned seed = 0; seed < 4; ++seed)
      EXPECT_EQ(outcome(e, seed, calls::Draw::kFarPadding), outcome(e, seed, kBeside)) << e.name << ", seed " << seed;
}

}  // namespace
}  // namespace zvp::test
