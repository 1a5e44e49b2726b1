#include "support/allocator.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>

#include "support/image.h"
#include "zvpcore/zvpcore.h"

namespace zvp::test {
namespace {

std::mutex lock;
std::map<void*, std::unique_ptr<GuardedBlock>> blocks;
int failAt = 0, count = 0;

}  // namespace

void failAllocation(int n) {
  const std::lock_guard guard(lock);
  failAt = n;
  count = 0;
}

int liveAllocations() {
  const std::lock_guard guard(lock);
  return static_cast<int>(blocks.size());
}

int allocationsSinceLastFailure() {
  const std::lock_guard guard(lock);
  return count;
}

}  // namespace zvp::test

// The program's definitions come before the core library's.
void* zvpMalloc(int numBytes) {
  using namespace zvp::test;
  const std::lock_guard guard(lock);
  if (++count == failAt || numBytes < 1 || numBytes > 1 << 28) return nullptr;
  constexpr int kAlignment = 8;  // that of any member of an object
  const Placement placement{true, (kAlignment - numBytes % kAlignment) % kAlignment};
  auto block = std::make_unique<GuardedBlock>(static_cast<size_t>(numBytes), placement);
  void* start = block->start();
  blocks.emplace(start, std::move(block));
  return start;
}

void zvpFree(void* ptr) {
  using namespace zvp::test;
  const std::lock_guard guard(lock);
  if (ptr != nullptr && blocks.erase(ptr) != 1) ADD_FAILURE() << "released a block that is not alive";
}
