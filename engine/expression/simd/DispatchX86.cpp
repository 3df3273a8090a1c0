#include "expression/simd/SimdKernels.h"
#include "table/CpuFeatures.h"

namespace velmorak::expression {

std::vector<SimdKernels> runnableKernels() {
    std::vector<SimdKernels> runnable;
    if (hasAvx512()) {
        runnable.push_back(avx512Kernels());
    }
    if (hasAvx2()) {
        runnable.push_back(avx2Kernels());
    }
    return runnable;
}

}  // namespace velmorak::expression
