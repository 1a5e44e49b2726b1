// One body for the argument checks that every image function makes, in their order.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/image.h"

namespace zvp::test {

struct Operand {
  const void* data;
  int step;
  int elementSize;  // its steps must be multiples of this
};

// A valid call with everything that the checks look at laid open. Steps must be the smallest allowed ones, and
// multiples of the element size.
struct Call {
  std::string name;
  std::vector<Operand> operands;
  std::vector<const void*> otherPointers;
  RoiSize roi;
  std::function<Status(const std::vector<Operand>&, const std::vector<const void*>&, RoiSize)> invoke;

  Status operator()() const { return invoke(operands, otherPointers, roi); }
};

// Each fault is planted together with all faults that later checks find, so that the order shows.
inline void expectStandardChecks(const Call& valid) {
  SCOPED_TRACE(valid.name);
  Call stepsTooSmall = valid;
  for (Operand& o : stepsTooSmall.operands) o.step = 1 - o.elementSize;
  Call empty = stepsTooSmall;
  empty.roi = {0, 0};

  for (size_t i = 0; i < valid.operands.size(); ++i) {
    Call c = empty;
    c.operands[i].data = nullptr;
    EXPECT_EQ(c(), ErrNullPtr) << "operand " << i;
  }
  for (size_t i = 0; i < valid.otherPointers.size(); ++i) {
    Call c = empty;
    c.otherPointers[i] = nullptr;
    EXPECT_EQ(c(), ErrNullPtr) << "pointer " << i;
  }
  for (const RoiSize roi : {RoiSize{0, 1}, RoiSize{1, 0}, RoiSize{-5, 1}, RoiSize{1, INT32_MIN}, RoiSize{0, 0}}) {
    Call c = stepsTooSmall;
    c.roi = roi;
    EXPECT_EQ(c(), ErrSize) << roi.width << "x" << roi.height;
  }
  for (size_t i = 0; i < valid.operands.size(); ++i) {
    const int smallest = valid.operands[i].step;
    for (const int step : {smallest - 1, 0, -smallest, INT32_MIN}) {
      Call c = valid;
      for (Operand& o : c.operands) o.step += o.elementSize > 1 ? 1 : 0;
      c.operands[i].step = step;
      EXPECT_EQ(c(), ErrStep) << "operand " << i << ", step " << step;
    }
    if (valid.operands[i].elementSize > 1) {
      Call c = valid;
      c.operands[i].step += valid.operands[i].elementSize / 2;
      EXPECT_EQ(c(), ErrStepNotMultiple) << "operand " << i;
    }
  }
  for (const int width : {INT32_MAX, INT32_MAX / 2 + 1, 1 << 29}) {  // would wrap in 32 bits
    Call c = valid;
    c.roi.width = width;
    EXPECT_EQ(c(), ErrStep) << width;
  }
}

}  // namespace zvp::test
