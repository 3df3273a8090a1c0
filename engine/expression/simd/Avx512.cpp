#include "expression/simd/KernelLoops.h"

namespace velmorak::expression {

WideKernels avx512Kernels() {
    return allKernels;
}

}  // namespace velmorak::expression
