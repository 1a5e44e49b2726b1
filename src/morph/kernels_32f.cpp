#include "morph/make_kernels.h"

const zvp::morph::Kernels zvp::morph::kKernels32f[2] = {kKernels<Minimum, float>, kKernels<Maximum, float>};
