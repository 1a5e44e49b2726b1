/* The core library of the zvp family: memory, processor features and cache size. */
#ifndef ZVPCORE_ZVPCORE_H
#define ZVPCORE_ZVPCORE_H

#include <stdint.h>

#if defined(__GNUC__)
#define ZVPCORE_API __attribute__((visibility("default")))
#else
#define ZVPCORE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The family's result type: 0 (StatusOk) is success, a negative value an error. */
#ifndef ZVP_STATUS
#define ZVP_STATUS
typedef int32_t Status;
#endif

/* Bits of zvpGetEnabledCpuFeatures. A bit is set when the processor has the instruction set and the operating system
 * saves the registers it needs. */
enum {
  ZVP_CPU_MMX = 0x1,
  ZVP_CPU_SSE = 0x2,
  ZVP_CPU_SSE2 = 0x4,
  ZVP_CPU_SSE3 = 0x8,
  ZVP_CPU_SSSE3 = 0x10,
  ZVP_CPU_SSE41 = 0x20,
  ZVP_CPU_SSE42 = 0x40,
  ZVP_CPU_POPCNT = 0x80,
  ZVP_CPU_AVX = 0x100,
  ZVP_CPU_FMA = 0x200,
  ZVP_CPU_AVX2 = 0x400,
  ZVP_CPU_BMI = 0x800,
  ZVP_CPU_BMI2 = 0x1000,
  ZVP_CPU_AVX512F = 0x2000,
  ZVP_CPU_AVX512BW = 0x4000,
  ZVP_CPU_AVX512CD = 0x8000,
  ZVP_CPU_AVX512DQ = 0x10000,
  ZVP_CPU_AVX512VL = 0x20000
};

/* Allocates numBytes bytes, aligned to 64 bytes; the content is undefined. Null when numBytes < 1 or when there is no
 * memory. Release with zvpFree. */
ZVPCORE_API void* zvpMalloc(int numBytes);

/* Releases what zvpMalloc returned; null is allowed and does nothing. */
ZVPCORE_API void zvpFree(void* ptr);

/* The ZVP_CPU_ bits of this machine; the same value on every call. */
ZVPCORE_API uint64_t zvpGetEnabledCpuFeatures(void);

/* Stores the size in bytes of the largest data cache, 0 where the system does not tell.
 * Returns 0 (StatusOk), or -8 (ErrNullPtr) when pSizeBytes is null. */
ZVPCORE_API Status zvpGetMaxCacheSizeB(int* pSizeBytes);

#ifdef __cplusplus
}
#endif

#endif
