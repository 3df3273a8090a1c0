#include "elementary/Loops.h"
#include "elementary/simd/Exp.h"
#include "elementary/simd/Hypot.h"
#include "elementary/simd/Pow.h"

#include <velmorak/ElementaryFunctions.h>

namespace velmorak::elementary {

std::vector<const Loops*> runnableLoops() {
    return {&commonLoops()};
}

double exp(double x) {
    return exponential(x);
}

double hypot(double x, double y) {
    const Usual hypotenuse = usualHypotenuse<fused>(x, y);
    return hypotenuse.unusual == 0 ? hypotenuse.value : unusualHypotenuse(x, y);
}

double pow(double x, double y) {
    const Usual power = usualPower<fused>(x, y);
    return power.unusual == 0 ? power.value : unusualPower(x, y);
}

}  // namespace velmorak::elementary
