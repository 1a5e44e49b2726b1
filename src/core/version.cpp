#include "zvpcv/version.h"

namespace {
constexpr LibraryVersion kVersion = {
    8, 1, 0, 41664, {'q', '9', 0, 0}, "zvpCV AVX (q9)", "8.1.0 (r41664)", "Jan 15 2014"};
}  // namespace

const LibraryVersion* zvpcvGetLibVersion(void) { return &kVersion; }
