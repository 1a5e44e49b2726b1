// What there is to measure. A new family: a function that makes its Work, and one line per exported function in the
// list of its subsystem. A new subsystem: one more list, named here and in cases.cpp.
//
// The cases and their plain loops are compiled twice, without and with vectorisation; ZVP_LOOPS, set by the build, is
// the namespace that keeps the two apart.
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
  std::function<void()> plain;    // a loop that does the same; empty for what builds and inspects objects
  std::size_t bytes = 0;          // that the operation reads and writes; 0: no copy to compare with
  std::function<bool()> agree{};  // after one run of both: the same results?
};

// The usual operation: library(dst) and plain(dst) fill an image each.
template <class D, class Library, class Plain>
Work fills(int width, int height, std::size_t bytesRead, Library library, Plain plain) {
  const Image<D> dst(width, height), expected(width, height);
  return {.library = [=] { library(dst); },
          .plain = [=] { plain(expected); },
          .bytes = bytesRead + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

struct Case {
  std::string name;  // that of the exported function; what more there is to say follows a comma
  std::function<Work(RoiSize)> make;

  std::string function() const { return name.substr(0, name.find(',')); }
};

// A case that measures one exported function: make(function, size). The variant says which of its cases it is.
#define ZVP_CASE(make, function) ZVP_CASE_OF(make, function, "")
#define ZVP_CASE_OF(make, function, variant)                             \
  Case {                                                                 \
#function variant, [](RoiSize size) { return make(function, size); } \
  }

struct Section {
  std::string title;
  std::vector<Case> cases;
};

// All cases, compiled without and with vectorisation: the same ones in the same order.
namespace scalar {
std::vector<Section> imageSections();
std::vector<Case> objectCases();
}  // namespace scalar
namespace vectorised {
std::vector<Section> imageSections();
}

}  // namespace bench

#ifdef ZVP_LOOPS
namespace bench::ZVP_LOOPS {

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
std::vector<Case> objectCases();

}  // namespace bench::ZVP_LOOPS
#endif
