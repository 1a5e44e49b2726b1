// Every export in each floating-point environment that a caller may have set: the environment stays, nothing outside the
// operands is touched, and the integer functions give the same results.
#include <gtest/gtest.h>
#include <immintrin.h>

#include <algorithm>

#include "calls/calls.h"

namespace zvp::test {
namespace {

using calls::Call;
using calls::Export;

constexpr unsigned kControl = 0xffc0;  // the bits of MXCSR that are no flags
constexpr unsigned kEnvironments[] = {_MM_FLUSH_ZERO_ON | 0x40, _MM_ROUND_DOWN, _MM_ROUND_UP, _MM_ROUND_TOWARD_ZERO};

class Environment {
 public:
  explicit Environment(unsigned bits) { _mm_setcsr(before_ | bits); }
  ~Environment() { _mm_setcsr(before_); }

 private:
  unsigned before_ = _mm_getcsr();
};

// Results of floating-point operations, or of integers that pass through them.
bool dependsOnEnvironment(const Export& e) {
  const std::string name = e.name;
  const auto has = [&](const char* part) { return name.find(part) != std::string::npos; };
  if (std::any_of(e.parameters.begin(), e.parameters.end(), [](const auto& p) { return p.element.isFloat; }))
    return true;
  return (has("Pipeline_") && !has("Low")) || has("RectStdDev") || has("CopySubpix") || has("Pyramid");
}

// Objects and work memory are made in the environment of the call if `throughout`, else in the default one.
std::vector<uint8_t> outcome(const Export& e, unsigned seed, unsigned environment, bool throughout) {
  calls::Seeded draw(seed);
  const Environment around(throughout ? environment : 0);
  Call call(e, draw);
  const Environment within(environment);
  EXPECT_GE(call.run(), StatusOk);
  EXPECT_EQ(_mm_getcsr() & kControl, (_MM_MASK_MASK | environment)) << "the environment was changed";
  return call.outcome();
}

TEST(Environment, StaysAndChangesNoIntegers) {
  for (const unsigned environment : kEnvironments) {
    int different = 0;
    for (const Export& e : calls::allExports()) {
      for (unsigned seed = 0; seed < 4; ++seed) {
        SCOPED_TRACE(testing::Message() << e.name << ", seed " << seed << ", MXCSR " << std::hex << environment);
        const bool same = outcome(e, seed, environment, seed % 2 == 0) == outcome(e, seed, 0, false);
        EXPECT_TRUE(same || dependsOnEnvironment(e));
        different += !same;
      }
    }
    EXPECT_GT(different, 0);
  }
}

}  // namespace
}  // namespace zvp::test
