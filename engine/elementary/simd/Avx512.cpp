#include "elementary/simd/VectorLoops.h"

#include <sleef.h>

namespace velmorak::elementary {

namespace {

// SLEEF without fused multiply-adds, whose bits would differ.
constexpr Loops loops{
    .acos = ofOne<__m512d, Sleef_cinz_acosd8_u10avx512fnofma>,
    .acosh = mostlyInlined<usualAcosh<fused>, unusualAcosh>,
    .asin = ofOne<__m512d, Sleef_cinz_asind8_u10avx512fnofma>,
    .asinh = mostlyInlined<usualAsinh<fused>, unusualAsinh>,
    .atan = ofOne<__m512d, Sleef_cinz_atand8_u10avx512fnofma>,
    .atanh = corrected<__m512d, Sleef_cinz_atanhd8_u10avx512fnofma, isTiny, atanh>,
    .cbrt = ofOne<__m512d, Sleef_cinz_cbrtd8_u10avx512fnofma>,
    .cos = ofOne<__m512d, Sleef_cinz_cosd8_u10avx512fnofma>,
    .cosh = corrected<__m512d, Sleef_cinz_coshd8_u10avx512fnofma, isTinyOrBeyondExp, cosh>,
    .erf = ofOne<__m512d, Sleef_cinz_erfd8_u10avx512fnofma>,
    .erfc = ofOne<__m512d, Sleef_cinz_erfcd8_u15avx512fnofma>,
    .exp = inlined<exponential>,
    .exp2 = ofOne<__m512d, Sleef_cinz_exp2d8_u10avx512fnofma>,
    .expm1 = ofOne<__m512d, Sleef_cinz_expm1d8_u10avx512fnofma>,
    .lgamma = ofOne<__m512d, Sleef_cinz_lgammad8_u10avx512fnofma>,
    .log = mostlyInlined<usualLogarithm, unusualLogarithm>,
    .log10 = ofOne<__m512d, Sleef_cinz_log10d8_u10avx512fnofma>,
    .log1p = corrected<__m512d, Sleef_cinz_log1pd8_u10avx512fnofma, isTinyOrHugeFor1, log1p>,
    .log2 = ofOne<__m512d, Sleef_cinz_log2d8_u10avx512fnofma>,
    .sin = ofOne<__m512d, Sleef_cinz_sind8_u10avx512fnofma>,
    .sinh = corrected<__m512d, Sleef_cinz_sinhd8_u10avx512fnofma, isTinyOrBeyondExp, sinh>,
    .tan = corrected<__m512d, Sleef_cinz_tand8_u10avx512fnofma, isTiny, tan>,
    .tanh = corrected<__m512d, Sleef_cinz_tanhd8_u10avx512fnofma, isTiny, tanh>,
    .tgamma = corrected<__m512d, Sleef_cinz_tgammad8_u10avx512fnofma, isFarBelow, tgamma>,
    .atan2 = ofTwo<__m512d, Sleef_cinz_atan2d8_u10avx512fnofma>,
    .hypot = mostlyInlinedOfTwo<usualHypotenuse<fused>, unusualHypotenuse>,
    .pow = mostlyInlinedOfTwo<usualPower<fused>, unusualPower>,
};

}  // namespace

const Loops& avx512Loops() {
    return loops;
}

}  // namespace velmorak::elementary
