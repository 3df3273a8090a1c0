#include "expression/simd/SimdKernels.h"

namespace velmorak::expression {

std::vector<SimdKernels> runnableKernels() {
    return {};
}

}  // namespace velmorak::expression
