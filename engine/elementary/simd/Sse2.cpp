#include "elementary/simd/VectorLoops.h"

#include <sleef.h>

namespace velmorak::elementary {

namespace {

// Every processor of the architecture has SSE2.
constexpr Loops loops{
    .acos = ofOne<__m128d, Sleef_cinz_acosd2_u10sse2>,
    .acosh = mostlyInlined<usualAcosh<unfused>, unusualAcosh>,
    .asin = ofOne<__m128d, Sleef_cinz_asind2_u10sse2>,
    .asinh = mostlyInlined<usualAsinh<unfused>, unusualAsinh>,
    .atan = ofOne<__m128d, Sleef_cinz_atand2_u10sse2>,
    .atanh = corrected<__m128d, Sleef_cinz_atanhd2_u10sse2, isTiny, atanh>,
    .cbrt = ofOne<__m128d, Sleef_cinz_cbrtd2_u10sse2>,
    .cos = ofOne<__m128d, Sleef_cinz_cosd2_u10sse2>,
    .cosh = corrected<__m128d, Sleef_cinz_coshd2_u10sse2, isTinyOrBeyondExp, cosh>,
    .erf = ofOne<__m128d, Sleef_cinz_erfd2_u10sse2>,
    .erfc = ofOne<__m128d, Sleef_cinz_erfcd2_u15sse2>,
    .exp = inlined<exponentialWith<emulatedFused>>,
    .exp2 = ofOne<__m128d, Sleef_cinz_exp2d2_u10sse2>,
    .expm1 = ofOne<__m128d, Sleef_cinz_expm1d2_u10sse2>,
    .lgamma = ofOne<__m128d, Sleef_cinz_lgammad2_u10sse2>,
    .log = mostlyInlined<usualLogarithm, unusualLogarithm>,
    .log10 = ofOne<__m128d, Sleef_cinz_log10d2_u10sse2>,
    .log1p = corrected<__m128d, Sleef_cinz_log1pd2_u10sse2, isTinyOrHugeFor1, log1p>,
    .log2 = ofOne<__m128d, Sleef_cinz_log2d2_u10sse2>,
    .sin = ofOne<__m128d, Sleef_cinz_sind2_u10sse2>,
    .sinh = corrected<__m128d, Sleef_cinz_sinhd2_u10sse2, isTinyOrBeyondExp, sinh>,
    .tan = corrected<__m128d, Sleef_cinz_tand2_u10sse2, isTiny, tan>,
    .tanh = corrected<__m128d, Sleef_cinz_tanhd2_u10sse2, isTiny, tanh>,
    .tgamma = corrected<__m128d, Sleef_cinz_tgammad2_u10sse2, isFarBelow, tgamma>,
    .atan2 = ofTwo<__m128d, Sleef_cinz_atan2d2_u10sse2>,
    .hypot = mostlyInlinedOfTwo<usualHypotenuse<unfused>, unusualHypotenuse>,
    .pow = mostlyInlinedOfTwo<usualPower<unfused>, unusualPower>,
};

}  // namespace

const Loops& commonLoops() {
    return loops;
}

}  // namespace velmorak::elementary
