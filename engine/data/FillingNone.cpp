#include "Filling.h"

namespace velmorak::filling {

std::vector<Kernels> runnableKernels() {
    return {};
}

}  // namespace velmorak::filling
