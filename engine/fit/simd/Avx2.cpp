#include "fit/simd/KernelTable.h"

namespace velmorak::fitting {

const FitKernels& avx2Kernels() {
    return kernels;
}

}  // namespace velmorak::fitting
