#include "Filling.h"
#include "Processor.h"

namespace velmorak::filling {

std::vector<Kernels> runnableKernels() {
    std::vector<Kernels> runnable;
    if (hasAvx2())
        runnable.push_back(avx2Kernels());
    return runnable;
}

}  // namespace velmorak::filling
