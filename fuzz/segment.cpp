// Speckle marking.
#include <zvpcv/segment.h>

#include <cstdlib>

#include "families.h"
#include "operands.h"

namespace fuzz {
namespace {

// Any step whose rows do not overlap: also negative ones, and ones that no element size divides.
template <class T>
void speckles(Bytes& in, Status (*f)(T*, int, RoiSize, T, int, T, int, std::uint8_t*)) {
  const RoiSize wanted = someSize(in), size = wanted.width > 80 || wanted.height > 12 ? RoiSize{0, 1} : wanted;
  const int rowBytes = std::max(size.width, 0) * int{sizeof(T)}, gaps = std::max(size.height, 1) - 1;
  const int distance = rowBytes + in.ConsumeIntegralInRange(0, 9);
  const bool upward = in.ConsumeBool();
  const auto image = block(in, distance * gaps + rowBytes);
  int bytes = 0;
  zvpiMarkSpecklesGetBufferSize(size, DataType8u, 1, &bytes);
  const auto buffer = block(in, bytes);
  const auto marker = static_cast<T>(in.ConsumeIntegral<std::uint8_t>());
  const auto tolerance = static_cast<T>(in.ConsumeIntegral<std::int8_t>());
  auto* first = static_cast<std::uint8_t*>(image);
  if (first != nullptr && upward) first += distance * gaps;
  checkCall(f(reinterpret_cast<T*>(first), upward ? -distance : distance, size, marker, number(in, 0, 100), tolerance,
              number(in, 1, 1), buffer),
            image, buffer);
}

constexpr Target kTargets[] = {
    ZVP_TARGET(speckles, zvpiMarkSpeckles_8u_C1IR), ZVP_TARGET(speckles, zvpiMarkSpeckles_16u_C1IR),
    ZVP_TARGET(speckles, zvpiMarkSpeckles_16s_C1IR), ZVP_TARGET(speckles, zvpiMarkSpeckles_32f_C1IR)};

}  // namespace

Targets segmentTargets() { return kTargets; }

}  // namespace fuzz
