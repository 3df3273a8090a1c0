#include "elementary/simd/VectorLoops.h"

#include <sleef.h>

namespace velmorak::elementary {

namespace {

// SLEEF without fused multiply-adds, whose bits would differ.
constexpr Loops loops{
    .acos = ofOne<__m256d, Sleef_cinz_acosd4_u10avx>,
    .acosh = mostlyInlined<usualAcosh<fused>, unusualAcosh>,
    .asin = ofOne<__m256d, Sleef_cinz_asind4_u10avx>,
    .asinh = mostlyInlined<usualAsinh<fused>, unusualAsinh>,
    .atan = ofOne<__m256d, Sleef_cinz_atand4_u10avx>,
    .atanh = corrected<__m256d, Sleef_cinz_atanhd4_u10avx, isTiny, atanh>,
    .cbrt = ofOne<__m256d, Sleef_cinz_cbrtd4_u10avx>,
    .cos = ofOne<__m256d, Sleef_cinz_cosd4_u10avx>,
    .cosh = corrected<__m256d, Sleef_cinz_coshd4_u10avx, isTinyOrBeyondExp, cosh>,
    .erf = ofOne<__m256d, Sleef_cinz_erfd4_u10avx>,
    .erfc = ofOne<__m256d, Sleef_cinz_erfcd4_u15avx>,
    .exp = inlined<exponential>,
    .exp2 = ofOne<__m256d, Sleef_cinz_exp2d4_u10avx>,
    .expm1 = ofOne<__m256d, Sleef_cinz_expm1d4_u10avx>,
    .lgamma = ofOne<__m256d, Sleef_cinz_lgammad4_u10avx>,
    .log = mostlyInlined<usualLogarithm, unusualLogarithm>,
    .log10 = ofOne<__m256d, Sleef_cinz_log10d4_u10avx>,
    .log1p = corrected<__m256d, Sleef_cinz_log1pd4_u10avx, isTinyOrHugeFor1, log1p>,
    .log2 = ofOne<__m256d, Sleef_cinz_log2d4_u10avx>,
    .sin = ofOne<__m256d, Sleef_cinz_sind4_u10avx>,
    .sinh = corrected<__m256d, Sleef_cinz_sinhd4_u10avx, isTinyOrBeyondExp, sinh>,
    .tan = corrected<__m256d, Sleef_cinz_tand4_u10avx, isTiny, tan>,
    .tanh = corrected<__m256d, Sleef_cinz_tanhd4_u10avx, isTiny, tanh>,
    .tgamma = corrected<__m256d, Sleef_cinz_tgammad4_u10avx, isFarBelow, tgamma>,
    .atan2 = ofTwo<__m256d, Sleef_cinz_atan2d4_u10avx>,
    .hypot = mostlyInlinedOfTwo<usualHypotenuse<fused>, unusualHypotenuse>,
    .pow = mostlyInlinedOfTwo<usualPower<fused>, unusualPower>,
};

}  // namespace

const Loops& avx2Loops() {
    return loops;
}

double fusedExp(double x) {
    return exponential(x);
}

double fusedHypot(double x, double y) {
    const Usual hypotenuse = usualHypotenuse<fused>(x, y);
    return hypotenuse.unusual == 0 ? hypotenuse.value : unusualHypotenuse(x, y);
}

double fusedPow(double x, double y) {
    const Usual power = usualPower<fused>(x, y);
    return power.unusual == 0 ? power.value : unusualPower(x, y);
}

}  // namespace velmorak::elementary
