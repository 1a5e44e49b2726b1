// The core library itself: reached through the dynamic linker, since this program stands in for its allocator.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <stdint.h>

#include "zvpcore/zvpcore.h"
#include "zvpcv/types.h"

namespace {

template <class F>
F next(F, const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

TEST(CoreLibrary, AllocatesAlignedBlocks) {
  const auto allocate = next(&zvpMalloc, "zvpMalloc");
  const auto release = next(&zvpFree, "zvpFree");
  for (const int n : {1, 63, 64, 65, 1000000}) {
    auto* block = static_cast<uint8_t*>(allocate(n));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 64, 0u);
    block[0] = block[n - 1] = 1;
    release(block);
  }
  for (const int n : {0, -1, INT_MIN}) EXPECT_EQ(allocate(n), nullptr);
  release(nullptr);
}

TEST(CoreLibrary, ReportsProcessorAndCache) {
  const uint64_t features = zvpGetEnabledCpuFeatures();
  EXPECT_EQ(features & 0x30, 0x30u) << "every AVX processor has these two";
  EXPECT_EQ((features & ZVP_CPU_AVX2) != 0, __builtin_cpu_supports("avx2") != 0);
  EXPECT_EQ(zvpGetMaxCacheSizeB(nullptr), ErrNullPtr);
  int size = -1;
  EXPECT_EQ(zvpGetMaxCacheSizeB(&size), StatusOk);
  EXPECT_GE(size, 0);
}

}  // namespace
