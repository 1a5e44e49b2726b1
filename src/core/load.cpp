#include "core/load.h"

#include "zvpcore/zvpcore.h"

namespace zvp {

uint32_t cpuFlag = 0;

bool onLoadNotification(LoadReason reason) {
  if (reason == LoadReason::kProcessAttach) {
    constexpr uint64_t kAssumed = 0x10 | 0x20;
    cpuFlag = (zvpGetEnabledCpuFeatures() & kAssumed) == kAssumed ? 1 : 0;
  }
  return true;
}

namespace {
[[gnu::constructor]] void onLoad() { onLoadNotification(LoadReason::kProcessAttach); }
}  // namespace

}  // namespace zvp
