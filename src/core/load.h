// What happens when the library is loaded.
#pragma once

#include <stdint.h>

namespace zvp {

enum class LoadReason { kProcessDetach, kProcessAttach, kThreadAttach, kThreadDetach };

// Sets cpuFlag on process attach and does nothing for every other reason. Returns success always: loading never fails.
bool onLoadNotification(LoadReason reason);

// 1 when both processor features that the build assumes are enabled, else 0. Written once at load; nothing reads it:
// no function chooses its arithmetic by processor.
extern uint32_t cpuFlag;

}  // namespace zvp
