#include "elementary/Loops.h"
#include "elementary/simd/Exp.h"

#include <velmorak/ElementaryFunctions.h>

namespace velmorak::elementary {

std::vector<const Loops*> runnableLoops() {
    return {&commonLoops()};
}

double exp(double x) {
    return exponential(x);
}

}  // namespace velmorak::elementary
