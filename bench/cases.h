// What there is to measure. A new family: a function that makes its Work, and one line per exported function in the
// list of its subsystem. A new subsystem: one more list, named here and in main.cpp.
#pragma once

#include <zvpcv/types.h>

#include <functional>
#include <string>
#include <vector>

#include "image.h"

namespace bench {

// One operation with its operands.
struct Work {
  std::function<void()> library;
  std::function<void()> plain;    // a scalar loop that does the same; may be empty
  std::size_t bytes = 0;          // that the operation reads and writes; 0: no copy to compare with
  std::function<bool()> agree{};  // after one run of both: the same results?
};

struct Case {
  std::string name;
  std::function<Work(RoiSize)> make;
};

// A case that measures one exported function: make(function, size).
#define ZVP_CASE(make, function)                                 \
  Case {                                                         \
#function, [](RoiSize size) { return make(function, size); } \
  }

std::vector<Case> accumulateCases();
std::vector<Case> arithmeticCases();
std::vector<Case> integralCases();
std::vector<Case> detectCases();
std::vector<Case> distanceCases();
std::vector<Case> filterCases();
std::vector<Case> geometryCases();
std::vector<Case> morphologyCases();
std::vector<Case> pyramidCases();
std::vector<Case> opticalFlowCases();
std::vector<Case> featuresCases();
std::vector<Case> segmentCases();

// Measured once, by the call instead of by the pixel: what builds and inspects objects.
std::vector<Case> detectObjectCases();

}  // namespace bench
