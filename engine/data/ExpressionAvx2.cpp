#include "ExpressionWideLoops.h"

namespace velmorak::expression {

WideKernels avx2Kernels() {
    return allKernels;
}

}  // namespace velmorak::expression
