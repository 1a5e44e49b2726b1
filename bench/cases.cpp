#include "cases.h"

namespace bench::ZVP_LOOPS {

std::vector<Section> imageSections() {
  return {
      {"Absolute differences", arithmeticCases()},
      {"Accumulation", accumulateCases()},
      {"Integral images", integralCases()},
      {"Detection", detectCases()},
      {"Distance and fill", distanceCases()},
      {"Filters", filterCases()},
      {"Sub-pixel windows", geometryCases()},
      {"Morphology", morphologyCases()},
      {"Pyramids", pyramidCases()},
      {"Optical flow", opticalFlowCases()},
      {"Peaks", featuresCases()},
      {"Speckles", segmentCases()},
  };
}

}  // namespace bench::ZVP_LOOPS
