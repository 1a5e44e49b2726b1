#include <stdlib.h>

#include "zvpcore/zvpcore.h"

namespace {
constexpr size_t kAlignment = 64;  // a cache line, and the widest vector register
}

void* zvpMalloc(int numBytes) {
  if (numBytes < 1) return nullptr;
  void* block = nullptr;
  return posix_memalign(&block, kAlignment, static_cast<size_t>(numBytes)) == 0 ? block : nullptr;
}

void zvpFree(void* ptr) { free(ptr); }
