#include "core/load.h"

#include <gtest/gtest.h>

#include "core/memory.h"
#include "zvpcore/zvpcore.h"

namespace zvp {
namespace {

TEST(Load, OnlyProcessAttachDoesAnything) {
  EXPECT_EQ(cpuFlag, 1u) << "set by the constructor before any test";
  for (const LoadReason reason : {LoadReason::kProcessDetach, LoadReason::kThreadAttach, LoadReason::kThreadDetach}) {
    cpuFlag = 77;
    EXPECT_TRUE(onLoadNotification(reason));
    EXPECT_EQ(cpuFlag, 77u);
  }
  EXPECT_TRUE(onLoadNotification(LoadReason::kProcessAttach));
  EXPECT_EQ(cpuFlag, 1u);
}

TEST(Memory, SizesThatCannotBeAreNull) {
  for (const int32_t n : {0, -1, INT32_MIN}) {
    EXPECT_EQ(allocBytes(n), nullptr);
    EXPECT_EQ(allocWords(n), nullptr);
  }
  EXPECT_EQ(allocWords(INT32_MAX / 4 + 1), nullptr) << "4 x n does not fit 31 bits";
  auto* words = static_cast<int32_t*>(allocWords(3));
  ASSERT_NE(words, nullptr);
  words[2] = 1;
  releaseMemory(words);
  releaseMemory(nullptr);
}

}  // namespace
}  // namespace zvp
