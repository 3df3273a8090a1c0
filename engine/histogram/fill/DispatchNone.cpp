#include "histogram/fill/Fill.h"

namespace velmorak::filling {

std::vector<Kernels> runnableKernels() {
    return {};
}

}  // namespace velmorak::filling
