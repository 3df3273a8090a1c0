#include "expression/simd/SimdKernels.h"

namespace velmorak::expression {

std::vector<WideKernels> runnableKernels() {
    return {};
}

}  // namespace velmorak::expression
