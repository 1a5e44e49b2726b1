// Local peaks.
#include <zvpcv/features.h>

#include "families.h"
#include "operands.h"

namespace fuzz {
namespace {

template <class T>
void peaks(Bytes& in, Status (*f)(const T*, int, RoiSize, T, Point*, int, int*, int, int, std::uint8_t*)) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<T>(in, size.width, size.height);
  int bytes = 0;
  if (zvpiFindPeaks3x3GetBufferSize_32f_C1R(size.width, &bytes) != StatusOk || bytes > kMostBytes) bytes = 0;
  const int capacity = number(in, 1, 200);
  const auto points = block(in, capacity > 0 && capacity <= 200 ? capacity * int{sizeof(Point)} : 0);
  const auto count = block(in, sizeof(int)), buffer = block(in, bytes);
  const auto threshold = static_cast<T>(in.ConsumeIntegral<std::int8_t>());
  const int norm = number(in, 0, 1), border = number(in, 1, 6);
  // More peaks than there is memory for, unless the call fails.
  const T* pixels = capacity > 200 ? nullptr : static_cast<const T*>(src);
  checkCall(f(pixels, src.step, size, threshold, points, capacity, count, norm, border, buffer), src, points, count,
            buffer);
}

constexpr Target kTargets[] = {ZVP_TARGET(peaks, zvpiFindPeaks3x3_32s_C1R),
                               ZVP_TARGET(peaks, zvpiFindPeaks3x3_32f_C1R)};

}  // namespace

Targets featuresTargets() { return kTargets; }

}  // namespace fuzz
