#include "expression/simd/KernelLoops.h"

namespace velmorak::expression {

SimdKernels avx2Kernels() {
    return allKernels;
}

}  // namespace velmorak::expression
