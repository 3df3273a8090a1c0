#include "ExpressionWide.h"

namespace velmorak::expression {

Kernel wideKernel(std::string_view name, ColumnType type) {
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma"))
        return nullptr;
    const WideKernels all = avx2Kernels();
    for (const WideKernel* known = all.first; known != all.end; ++known)
        if (known->type == type && name == known->name)
            return known->kernel;
    return nullptr;
}

}  // namespace velmorak::expression
