#include "expression/simd/KernelLoops.h"

namespace velmorak::expression {

WideKernels avx2Kernels() {
    return allKernels;
}

}  // namespace velmorak::expression
