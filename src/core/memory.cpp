#include "core/memory.h"

#include "zvpcore/zvpcore.h"

namespace zvp {

void* allocBytes(int32_t n) { return n < 1 ? nullptr : zvpMalloc(n); }

void* allocWords(int32_t n) { return n < 1 || n > INT32_MAX / 4 ? nullptr : zvpMalloc(4 * n); }

void releaseMemory(void* block) { zvpFree(block); }

}  // namespace zvp
