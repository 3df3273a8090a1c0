#include "histogram/fill/Fill.h"
#include "table/CpuFeatures.h"

namespace velmorak::filling {

std::vector<Kernels> runnableKernels() {
    std::vector<Kernels> runnable;
    if (hasAvx512()) {
        runnable.push_back(avx512Kernels());
    }
    if (hasAvx2()) {
        runnable.push_back(avx2Kernels());
    }
    return runnable;
}

}  // namespace velmorak::filling
