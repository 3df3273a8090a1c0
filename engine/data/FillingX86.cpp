#include "Filling.h"

namespace velmorak::filling {

std::vector<Kernels> runnableKernels() {
    std::vector<Kernels> runnable;
    if (__builtin_cpu_supports("avx2"))
        runnable.push_back(avx2Kernels());
    return runnable;
}

}  // namespace velmorak::filling
