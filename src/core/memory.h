// The internal allocation routines; every object and every scratch table goes through them.
#pragma once

#include <stdint.h>

#include "core/bytes.h"
#include "zvpcv/types.h"

namespace zvp {

// Null, without a call of the allocator, for n < 1 and for more bytes than 31 bits hold.
void* allocBytes(int32_t n);
void* allocWords(int32_t n);  // n elements of 32 bits

void releaseMemory(void* block);

// A block of a size that has been formed, or null where 31 bits do not hold it.
inline void* allocate(Bytes size) { return size.fit() ? allocBytes(size.value()) : nullptr; }

// Releases an object that is one block.
inline Status release(void* object) {
  if (object == nullptr) return ErrNullPtr;
  releaseMemory(object);
  return StatusOk;
}

}  // namespace zvp
