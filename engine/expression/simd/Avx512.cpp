#include "expression/simd/KernelLoops.h"

namespace velmorak::expression {

SimdKernels avx512Kernels() {
    return allKernels;
}

}  // namespace velmorak::expression
