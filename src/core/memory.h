// The internal allocation routines; every object and every scratch table goes through them.
#pragma once

#include <stdint.h>

namespace zvp {

// Null, without a call of the allocator, for n < 1 and for more bytes than 31 bits hold.
void* allocBytes(int32_t n);
void* allocWords(int32_t n);  // n elements of 32 bits

void releaseMemory(void* block);

}  // namespace zvp
