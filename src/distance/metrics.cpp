// The usual weights of chamfer transforms.
#include "core/checks.h"
#include "simd/loose.h"
#include "zvpcv/distance.h"

namespace zvp::distance {
namespace {

constexpr int kNorms = 3;

template <class T>
struct Weights {
  T step3x3[kNorms][2], step5x5[kNorms][3];
};
constexpr Weights<int32_t> kIntegers = {{{1, 1}, {1, 2}, {2, 3}}, {{1, 1, 2}, {1, 2, 3}, {5, 7, 11}}};
constexpr Weights<float> kFloats = {{{1, 1}, {1, 2}, {0.955f, 1.3693f}}, {{1, 1, 2}, {1, 2, 3}, {1, 1.4f, 2.1969f}}};

constexpr Status knownNorm(int norm) { return check(norm >= 0 && norm < kNorms, ErrBadArg); }

template <class T>
Status writeMask(const Weights<T>& table, int kernelSize, int norm, T* metrics) {
  if (Status s = firstFailure(nonNull(metrics), check(kernelSize == 3 || kernelSize == 5, ErrSize), knownNorm(norm)))
    return s;
  const T* weights = kernelSize == 3 ? table.step3x3[norm] : table.step5x5[norm];
  const int count = kernelSize == 3 ? 2 : 3;
  for (int i = 0; i < count; ++i) simd::store(metrics + i, weights[i]);
  return StatusOk;
}

}  // namespace
}  // namespace zvp::distance

using namespace zvp::distance;

Status zvpiGetDistanceTransformMask_32s(int kernelSize, int norm, int32_t* pMetrics) {
  return writeMask(kIntegers, kernelSize, norm, pMetrics);
}

Status zvpiGetDistanceTransformMask_32f(int kernelSize, int norm, float* pMetrics) {
  return writeMask(kFloats, kernelSize, norm, pMetrics);
}

Status zvpiGetDistanceTransformMask(int maskType, float* pMetrics) {
  const int kernelSize = maskType / 10, norm = maskType % 10;  // as documented: 10 kernelSize + norm
  if (Status s = knownNorm(norm)) return s;
  return writeMask(kFloats, kernelSize, norm, pMetrics);
}
