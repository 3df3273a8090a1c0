#pragma once

#include "expression/Kernels.h"

#include <vector>

/// Kernels for vector instructions that not every processor of the architecture has.
namespace velmorak::expression {

struct SimdKernel {
    const char* name = nullptr;
    ColumnType type = ColumnType::Real;  ///< Of the arguments.
    Kernel kernel = nullptr;
};

struct SimdKernels {
    const SimdKernel* first = nullptr;
    const SimdKernel* last = nullptr;  ///< One past the end.

    const SimdKernel* begin() const { return first; }
    const SimdKernel* end() const { return last; }
};

/// Need AVX2 and FMA.
SimdKernels avx2Kernels();
/// Need also AVX-512 (F, BW, DQ, VL). Same bits.
SimdKernels avx512Kernels();

/// @return the kernels that this processor can run, the widest first; empty on a processor without AVX2.
std::vector<SimdKernels> runnableKernels();

/// @return the best vectorised kernel of a function for this processor; null if only the scalar one exists.
Kernel simdKernel(std::string_view name, ColumnType type);

}  // namespace velmorak::expression
