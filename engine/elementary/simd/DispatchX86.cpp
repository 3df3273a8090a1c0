#include "elementary/Loops.h"
#include "elementary/simd/Exp.h"
#include "table/CpuFeatures.h"

#include <velmorak/ElementaryFunctions.h>

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

double exp(double x) {
    return hasAvx2() ? fusedExp(x) : exponentialWith<emulatedFused>(x);
}

}  // namespace velmorak::elementary
