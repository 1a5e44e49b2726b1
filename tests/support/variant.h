#pragma once

#include <string>

namespace zvp::test {

// The build that the program was told to test; empty: whichever the loader takes.
inline std::string variantUnderTest;

// Whether this processor runs a build variant of the library.
inline bool processorRuns(const std::string& variant) {
  const bool v3 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("bmi2");
  const bool v4 = v3 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                  __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
                  __builtin_cpu_supports("avx512vl");
  return variant == "x86-64-v3" ? v3 : variant == "x86-64-v4" ? v4 : true;
}

}  // namespace zvp::test
