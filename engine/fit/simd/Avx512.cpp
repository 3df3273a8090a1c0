#include "fit/simd/KernelTable.h"

namespace velmorak::fitting {

const FitKernels& avx512Kernels() {
    return kernels;
}

}  // namespace velmorak::fitting
