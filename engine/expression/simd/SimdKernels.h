#pragma once

#include "expression/Kernels.h"

#include <vector>

/// Kernels for processors with wider vectors than any of the family has.
namespace velmorak::expression {

struct WideKernel {
    const char* name = nullptr;
    ColumnType type = ColumnType::Real;  ///< Of the values that it takes.
    Kernel kernel = nullptr;
};

struct WideKernels {
    const WideKernel* first = nullptr;
    const WideKernel* last = nullptr;  ///< One behind.

    const WideKernel* begin() const { return first; }
    const WideKernel* end() const { return last; }
};

/// Those for AVX2 and FMA, which the processor must have to run them.
WideKernels avx2Kernels();
/// The same, with the same bits, for AVX-512 (F, BW, DQ, VL) beside these.
WideKernels avx512Kernels();

/// @return those that the processor of this machine can run, the widest first.
std::vector<WideKernels> runnableKernels();

/// @return the kernel of the function that suits the processor of this machine better than the common one; null when
///         there is none.
Kernel wideKernel(std::string_view name, ColumnType type);

}  // namespace velmorak::expression
