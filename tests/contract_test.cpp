// What holds for every export: each fault alone, and each two together, give the status that the documentation says, and
// nothing is written; failing allocations too. Names are those of the list of exports.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>

#include "calls/calls.h"
#include "support/allocator.h"

namespace zvp::test {
namespace {

using calls::Call;
using calls::Export;
using calls::Fault;
using calls::Seeded;

constexpr RoiSize kSizes[] = {{1, 1}, {13, 5}};

// test(call) for fresh calls of every export with valid arguments and the smallest steps.
template <class F>
void forEachExport(F test) {
  for (const Export& e : calls::allExports()) {
    for (unsigned seed = 0; seed < 4; ++seed) {
      SCOPED_TRACE(testing::Message() << e.name << ", seed " << seed);
      try {
        Seeded draw(seed, kSizes[seed % 2], 0);
        Call call(e, draw);
        test(call);
      } catch (const calls::BrokenPromise& broken) {
        ADD_FAILURE() << broken.what();
      }
    }
    EXPECT_EQ(liveAllocations(), 0) << e.name;
  }
}

TEST(Contract, EveryFaultIsFoundInItsOrderAndNothingIsWritten) {
  forEachExport([](Call& call) {
    for (const Fault& a : call.faults()) {
      EXPECT_EQ(call.runWith({&a}), a.status) << "argument " << a.argument;
      for (const Fault& b : call.faults()) {
        if (b.order <= a.order || b.argument == a.argument) continue;
        EXPECT_EQ(call.runWith({&a, &b}), a.status) << "arguments " << a.argument << " and " << b.argument;
      }
    }
    EXPECT_GE(call.run(), StatusOk);
  });
}

// All but these work in the memory that they are given.
bool mayAllocate(const Call& call) { return call.is("Alloc") || call.is("ApplyHaarClassifier"); }

TEST(Contract, EveryAllocationMayFail) {
  forEachExport([](Call& call) {
    const int before = liveAllocations();
    Status status = ErrNoMemory;
    for (int n = 1; status == ErrNoMemory && n < 10; ++n) {
      failAllocation(n);
      status = call.run();
      failAllocation(0);
      EXPECT_TRUE(status != ErrNoMemory || (mayAllocate(call) && liveAllocations() == before));
    }
    EXPECT_GE(status, StatusOk);
  });
}

TEST(Contract, CoversEveryExport) {
  std::ifstream file(ZVP_EXPORTS);
  const std::set<std::string> listed(std::istream_iterator<std::string>(file), {});
  std::set<std::string> called = {"zvpcvGetLibVersion"};  // takes nothing
  for (const Export& e : calls::allExports()) EXPECT_TRUE(called.insert(e.name).second) << e.name;
  EXPECT_EQ(called, listed);
}

}  // namespace
}  // namespace zvp::test
