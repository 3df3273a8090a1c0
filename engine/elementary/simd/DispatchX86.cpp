#include "elementary/Loops.h"
#include "elementary/simd/Exp.h"
#include "elementary/simd/Hypot.h"
#include "elementary/simd/Pow.h"
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

double hypot(double x, double y) {
    if (hasAvx2()) {
        return fusedHypot(x, y);
    }
    const Usual hypotenuse = usualHypotenuse<unfused>(x, y);
    return hypotenuse.unusual == 0 ? hypotenuse.value : unusualHypotenuse(x, y);
}

double pow(double x, double y) {
    if (hasAvx2()) {
        return fusedPow(x, y);
    }
    const Usual power = usualPower<unfused>(x, y);
    return power.unusual == 0 ? power.value : unusualPower(x, y);
}

}  // namespace velmorak::elementary
