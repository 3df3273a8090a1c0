#include "elementary/simd/Extremes.h"
#include "elementary/simd/InverseHyperbolic.h"
#include "elementary/simd/Log.h"

#include <velmorak/ElementaryFunctions.h>

#include <sleef.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace velmorak::elementary {

namespace {

/// exp(size) / 2 for a size above 709, where exp(size) may overflow although its half does not.
double halfExp(double size) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    // The difference is exact; the rest of 1000 ln 2 is so small that the first terms of its exponential suffice.
    const double rest = 1000.0 * 0x1.a39ef35793c76p-33;
    const double reduced = size - 1000.0 * 0x1.62e42feep-1;
    return size > 711.0 ? infinity : exp(reduced) * (1.0 - rest + 0.5 * rest * rest) * 0x1p999;
}

/// log(2 size) for a large size.
double logOfDouble(double size) {
    return size < 0x1p1022 ? log(2.0 * size) : log(size) + std::numbers::ln2;
}

}  // namespace

double exp2(double x) {
    return Sleef_cinz_exp2d1_u10purec(x);
}

double expm1(double x) {
    return Sleef_cinz_expm1d1_u10purec(x);
}

double log(double x) {
    const Usual logarithm = usualLogarithm(x);
    return logarithm.unusual == 0 ? logarithm.value : unusualLogarithm(x);
}

double log2(double x) {
    return Sleef_cinz_log2d1_u10purec(x);
}

double log10(double x) {
    return Sleef_cinz_log10d1_u10purec(x);
}

double log1p(double x) {
    if (isTinyOrHugeFor1(x)) {
        return isHuge(x) ? log(x) : x;
    }
    return Sleef_cinz_log1pd1_u10purec(x);
}

double sin(double x) {
    return Sleef_cinz_sind1_u10purec(x);
}

double cos(double x) {
    return Sleef_cinz_cosd1_u10purec(x);
}

double tan(double x) {
    return isTiny(x) ? x : Sleef_cinz_tand1_u10purec(x);
}

double asin(double x) {
    return Sleef_cinz_asind1_u10purec(x);
}

double acos(double x) {
    return Sleef_cinz_acosd1_u10purec(x);
}

double atan(double x) {
    return Sleef_cinz_atand1_u10purec(x);
}

double atan2(double y, double x) {
    return Sleef_cinz_atan2d1_u10purec(y, x);
}

double sinh(double x) {
    if (isTinyOrBeyondExp(x)) {
        return isTiny(x) ? x : std::copysign(halfExp(std::fabs(x)), x);
    }
    return Sleef_cinz_sinhd1_u10purec(x);
}

double cosh(double x) {
    if (isTinyOrBeyondExp(x)) {
        return isTiny(x) ? 1.0 : halfExp(std::fabs(x));
    }
    return Sleef_cinz_coshd1_u10purec(x);
}

double tanh(double x) {
    return isTiny(x) ? x : Sleef_cinz_tanhd1_u10purec(x);
}

double unusualAsinh(double x) {
    return isHuge(std::fabs(x)) ? std::copysign(logOfDouble(std::fabs(x)), x) : x;
}

double asinh(double x) {
    const Usual value = usualAsinh<unfused>(x);
    return value.unusual == 0 ? value.value : unusualAsinh(x);
}

double unusualAcosh(double x) {
    const double value = x == 1.0 ? 0.0 : std::numeric_limits<double>::quiet_NaN();
    return isHuge(x) ? logOfDouble(x) : value;
}

double acosh(double x) {
    const Usual value = usualAcosh<unfused>(x);
    return value.unusual == 0 ? value.value : unusualAcosh(x);
}

double atanh(double x) {
    return isTiny(x) ? x : Sleef_cinz_atanhd1_u10purec(x);
}

double cbrt(double x) {
    return Sleef_cinz_cbrtd1_u10purec(x);
}

double erf(double x) {
    return Sleef_cinz_erfd1_u10purec(x);
}

double erfc(double x) {
    return Sleef_cinz_erfcd1_u15purec(x);
}

double tgamma(double x) {
    const double value = Sleef_cinz_tgammad1_u10purec(x);
    const bool isOdd = std::fmod(std::floor(x), 2.0) != 0.0;
    return isFarBelow(x) && value == 0.0 && isOdd ? -0.0 : value;
}

double lgamma(double x) {
    return Sleef_cinz_lgammad1_u10purec(x);
}

}  // namespace velmorak::elementary
