#include "fit/simd/FitKernels.h"

namespace velmorak::fitting {

std::vector<const FitKernels*> runnableKernels() {
    return {&commonKernels()};
}

}  // namespace velmorak::fitting
