#include "fit/simd/KernelTable.h"

namespace velmorak::fitting {

const FitKernels& commonKernels() {
    return kernels;
}

const FitKernels& bestKernels() {
    static const FitKernels& best = *runnableKernels().front();
    return best;
}

}  // namespace velmorak::fitting
