// Callers on 32 bits may keep the stack on four bytes only: this file is compiled to do so (see CMakeLists.txt), and
// the function it calls spills registers that need more.
#include "support/image.h"
#include "zvpcv/integral.h"

namespace zvp::test {
namespace {

struct Tables {
  Image<int32_t> sums{60, 5};
  Image<double> squares{60, 5};
  Image<float> dst{40, 3};
};

// Every depth moves the stack by a little.
[[gnu::noinline]] Status stdDevAtDepth(int depth, const Tables& t) {
  if (depth > 0) {
    volatile char padding[4] = {};
    const Status status = stdDevAtDepth(depth - 1, t);
    return status + padding[1];
  }
  return zvpiRectStdDev_32s32f_C1R(t.sums.data(), t.sums.step(), t.squares.data(), t.squares.step(), t.dst.data(),
                                   t.dst.step(), {40, 3}, {0, 0, 2, 2});
}

TEST(Stack, MayHaveAnyAlignment) {
  const Tables tables;
  for (int depth = 0; depth < 16; ++depth) EXPECT_EQ(stdDevAtDepth(depth, tables), StatusOk);
}

}  // namespace
}  // namespace zvp::test
