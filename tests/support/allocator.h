// Stands in for the core library's allocator, as the library under test sees it: it can fail the n-th allocation,
// counts what is alive, and places every block, filled with poison, against an inaccessible page.
#pragma once

namespace zvp::test {

void failAllocation(int n);  // the n-th from now on, counted from 1; 0: none
int liveAllocations();
int allocationsSinceLastFailure();

}  // namespace zvp::test
