#include "ExpressionWide.h"

namespace velmorak::expression {

std::vector<WideKernels> runnableKernels() {
    std::vector<WideKernels> runnable;
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma"))
        return runnable;
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl"))
        runnable.push_back(avx512Kernels());
    runnable.push_back(avx2Kernels());
    return runnable;
}

}  // namespace velmorak::expression
