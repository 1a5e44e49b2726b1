#include "morph/make_kernels.h"

const zvp::morph::Kernels zvp::morph::kKernels16u[2] = {kKernels<Minimum, uint16_t>, kKernels<Maximum, uint16_t>};
