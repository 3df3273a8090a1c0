#include "elementary/Loops.h"

#include <velmorak/ElementaryFunctions.h>

namespace velmorak::elementary {

namespace {

template <double (*function)(double)>
void ofOne(const double* x, std::size_t count, double* out) {
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = function(x[i]);
    }
}

template <double (*function)(double, double)>
void ofTwo(const double* x, const double* y, std::size_t count, double* out) {
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = function(x[i], y[i]);
    }
}

constexpr Loops loops{
    .acos = ofOne<acos>,
    .acosh = ofOne<acosh>,
    .asin = ofOne<asin>,
    .asinh = ofOne<asinh>,
    .atan = ofOne<atan>,
    .atanh = ofOne<atanh>,
    .cbrt = ofOne<cbrt>,
    .cos = ofOne<cos>,
    .cosh = ofOne<cosh>,
    .erf = ofOne<erf>,
    .erfc = ofOne<erfc>,
    .exp = ofOne<exp>,
    .exp2 = ofOne<exp2>,
    .expm1 = ofOne<expm1>,
    .lgamma = ofOne<lgamma>,
    .log = ofOne<log>,
    .log10 = ofOne<log10>,
    .log1p = ofOne<log1p>,
    .log2 = ofOne<log2>,
    .sin = ofOne<sin>,
    .sinh = ofOne<sinh>,
    .tan = ofOne<tan>,
    .tanh = ofOne<tanh>,
    .tgamma = ofOne<tgamma>,
    .atan2 = ofTwo<atan2>,
    .hypot = ofTwo<hypot>,
    .pow = ofTwo<pow>,
};

}  // namespace

const Loops& commonLoops() {
    return loops;
}

}  // namespace velmorak::elementary
