#include "fit/simd/FitKernels.h"
#include "table/CpuFeatures.h"

namespace velmorak::fitting {

std::vector<const FitKernels*> runnableKernels() {
    std::vector<const FitKernels*> runnable;
    if (hasAvx512()) {
        runnable.push_back(&avx512Kernels());
    }
    if (hasAvx2()) {
        runnable.push_back(&avx2Kernels());
    }
    runnable.push_back(&commonKernels());
    return runnable;
}

}  // namespace velmorak::fitting
