#pragma once

#include "expression/Kernels.h"

#include <vector>

/// Kernels for vector instructions that not every processor of the architecture has.
namespace velmorak::expression {

struct SimdKernel {
    const char* name = nullptr;
    ColumnType type = ColumnType::Real;  ///< Of the arguments, or of the values of a choice.
    Kernel kernel = nullptr;
    ReverseKernel reverse = nullptr;  ///< Null if only the common one exists.
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

/// @return the best vectorised kernels of a function for this processor; null if only the common ones exist.
const SimdKernel* findSimdKernel(std::string_view name, ColumnType type);

}  // namespace velmorak::expression
