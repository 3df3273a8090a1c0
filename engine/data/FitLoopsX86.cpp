#include "FitLoops.h"

namespace velmorak::fitting {

std::vector<const Loops*> runnableLoops() {
    std::vector<const Loops*> runnable{&commonLoops()};
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma"))
        return runnable;
    runnable.insert(runnable.begin(), &avx2Loops());
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl"))
        runnable.insert(runnable.begin(), &avx512Loops());
    return runnable;
}

}  // namespace velmorak::fitting
