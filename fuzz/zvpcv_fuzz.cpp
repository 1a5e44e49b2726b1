// One structured fuzz target for the whole interface: the first bytes pick a function, the rest its arguments.
#include "families.h"

namespace fuzz {
namespace {

std::vector<Target> allTargets() {
  std::vector<Target> all;
  for (const Targets family :
       {arithmeticTargets(), detectTargets(), distanceTargets(), featuresTargets(), filterTargets(), geometryTargets(),
        integralTargets(), morphologyTargets(), opticalFlowTargets(), pyramidTargets(), segmentTargets()})
    all.insert(all.end(), family.begin(), family.end());
  return all;
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::vector<fuzz::Target> kTargets = fuzz::allTargets();
  fuzz::Bytes in(data, size);
  kTargets[in.ConsumeIntegralInRange<std::size_t>(0, kTargets.size() - 1)](in);
  return 0;
}
