#include "morph/make_kernels.h"

const zvp::morph::Kernels zvp::morph::kKernels8u[2] = {kKernels<Minimum, uint8_t>, kKernels<Maximum, uint8_t>};
