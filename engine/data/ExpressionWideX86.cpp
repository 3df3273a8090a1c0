#include "ExpressionWide.h"

namespace velmorak::expression {

namespace {

WideKernels suitable() {
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma"))
        return {};
    const bool hasMore = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                         __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
    return hasMore ? avx512Kernels() : avx2Kernels();
}

}  // namespace

Kernel wideKernel(std::string_view name, ColumnType type) {
    const WideKernels all = suitable();
    for (const WideKernel* known = all.first; known != all.end; ++known)
        if (known->type == type && name == known->name)
            return known->kernel;
    return nullptr;
}

}  // namespace velmorak::expression
