#include "morph/make_kernels.h"

const zvp::morph::Kernels zvp::morph::kKernels16s[2] = {kKernels<Minimum, int16_t>, kKernels<Maximum, int16_t>};
