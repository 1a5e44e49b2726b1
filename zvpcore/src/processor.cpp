#include <limits.h>
#include <unistd.h>

#include "zvpcore/zvpcore.h"

uint64_t zvpGetEnabledCpuFeatures(void) {
  uint64_t features = 0;
  const auto add = [&features](uint64_t bit, int supported) { features |= supported != 0 ? bit : 0; };
  __builtin_cpu_init();
  add(ZVP_CPU_MMX, __builtin_cpu_supports("mmx"));
  add(ZVP_CPU_SSE, __builtin_cpu_supports("sse"));
  add(ZVP_CPU_SSE2, __builtin_cpu_supports("sse2"));
  add(ZVP_CPU_SSE3, __builtin_cpu_supports("sse3"));
  add(ZVP_CPU_SSSE3, __builtin_cpu_supports("ssse3"));
  add(ZVP_CPU_SSE41, __builtin_cpu_supports("sse4.1"));
  add(ZVP_CPU_SSE42, __builtin_cpu_supports("sse4.2"));
  add(ZVP_CPU_POPCNT, __builtin_cpu_supports("popcnt"));
  add(ZVP_CPU_AVX, __builtin_cpu_supports("avx"));
  add(ZVP_CPU_FMA, __builtin_cpu_supports("fma"));
  add(ZVP_CPU_AVX2, __builtin_cpu_supports("avx2"));
  add(ZVP_CPU_BMI, __builtin_cpu_supports("bmi"));
  add(ZVP_CPU_BMI2, __builtin_cpu_supports("bmi2"));
  add(ZVP_CPU_AVX512F, __builtin_cpu_supports("avx512f"));
  add(ZVP_CPU_AVX512BW, __builtin_cpu_supports("avx512bw"));
  add(ZVP_CPU_AVX512CD, __builtin_cpu_supports("avx512cd"));
  add(ZVP_CPU_AVX512DQ, __builtin_cpu_supports("avx512dq"));
  add(ZVP_CPU_AVX512VL, __builtin_cpu_supports("avx512vl"));
  return features;
}

Status zvpGetMaxCacheSizeB(int* pSizeBytes) {
  constexpr Status kOk = 0, kNullPtr = -8;
  if (pSizeBytes == nullptr) return kNullPtr;
  long largest = 0;
  constexpr int kLevels[] = {_SC_LEVEL1_DCACHE_SIZE, _SC_LEVEL2_CACHE_SIZE, _SC_LEVEL3_CACHE_SIZE,
                             _SC_LEVEL4_CACHE_SIZE};
  for (const int level : kLevels) {
    const long size = sysconf(level);
    if (size > largest) largest = size;
  }
  *pSizeBytes = largest > INT_MAX ? INT_MAX : static_cast<int>(largest);
  return kOk;
}
