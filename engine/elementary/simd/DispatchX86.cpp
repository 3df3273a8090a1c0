#include "elementary/Loops.h"
#include "table/CpuFeatures.h"

namespace velmorak::elementary {

std::vector<const Loops*> runnableLoops() {
    std::vector<const Loops*> runnable;
    if (hasAvx512()) {
        runnable.push_back(&avx512Loops());
    }
    if (hasAvx2()) {
        runnable.push_back(&avx2Loops());
    }
    runnable.push_back(&commonLoops());
    return runnable;
}

}  // namespace velmorak::elementary
