#pragma once

#include <cstddef>
#include <vector>

/// The functions of <velmorak/ElementaryFunctions.h> for arrays. All variants yield the same bits as the scalar ones.
namespace velmorak::elementary {

/// Computes count values. out must not overlap the arguments.
using LoopOfOne = void (*)(const double* x, std::size_t count, double* out);
using LoopOfTwo = void (*)(const double* x, const double* y, std::size_t count, double* out);

struct Loops {
    LoopOfOne acos, acosh, asin, asinh, atan, atanh, cbrt, cos, cosh, erf, erfc, exp, exp2, expm1, lgamma, log, log10,
        log1p, log2, sin, sinh, tan, tanh, tgamma;
    LoopOfTwo atan2, hypot, pow;
};

/// For every processor of the architecture.
const Loops& commonLoops();
/// Needs AVX2 and FMA.
const Loops& avx2Loops();
/// For single numbers; need AVX2 and FMA.
double fusedExp(double x);
double fusedHypot(double x, double y);
double fusedPow(double x, double y);
/// Needs AVX-512 (F, BW, DQ, VL).
const Loops& avx512Loops();

/// @return the loops that this processor can run, the widest first and commonLoops last.
std::vector<const Loops*> runnableLoops();
/// @return the first of runnableLoops.
const Loops& bestLoops();

}  // namespace velmorak::elementary
