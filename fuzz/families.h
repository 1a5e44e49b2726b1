// The families of the interface, a file each: a target draws the arguments of one exported function, valid and invalid,
// and calls it. A new family is a file, a line here and one in zvpcv_fuzz.cpp.
#pragma once

#include <span>

#include "operands.h"

namespace fuzz {

using Target = void (*)(Bytes&);
using Targets = std::span<const Target>;

#define ZVP_TARGET(draw, function) [](Bytes& in) { draw(in, function); }

Targets arithmeticTargets();
Targets detectTargets();
Targets distanceTargets();
Targets featuresTargets();
Targets filterTargets();
Targets geometryTargets();
Targets integralTargets();
Targets morphologyTargets();
Targets opticalFlowTargets();
Targets pyramidTargets();
Targets segmentTargets();

}  // namespace fuzz
