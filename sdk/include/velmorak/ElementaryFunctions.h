#pragma once

/// Elementary functions whose results have the same bits on every processor. A kind uses them instead of those of
/// <cmath>, which differ between processors and versions of the C library. sqrt, fma, fmod, remainder and roundings are
/// exact by IEEE 754, so that <cmath> serves for these.
///
/// Errors: at most 1 unit in the last place (ulp), unless stated otherwise.
/// Limits: those of ISO C, Annex F: a pole gives an infinity, a value outside the domain gives NaN, and NaN gives NaN.
///         The sign and the payload of a NaN are unspecified. No function sets errno.
/// Threads: any.
namespace velmorak::elementary {

double exp(double x);  ///< Error below 1.2 ulp.
double exp2(double x);
double expm1(double x);
double log(double x);
double log2(double x);
double log10(double x);
double log1p(double x);

double sin(double x);
double cos(double x);
double tan(double x);
double asin(double x);
double acos(double x);
double atan(double x);
double atan2(double y, double x);  ///< Error below 1.5 ulp.

double sinh(double x);  ///< Error below 2 ulp beyond 709.
double cosh(double x);  ///< Error below 2 ulp beyond 709.
double tanh(double x);
double asinh(double x);  ///< Error below 0.6 ulp, and 1.5 ulp beyond 4e307.
double acosh(double x);  ///< Error below 0.6 ulp, and 1.5 ulp beyond 4e307.
double atanh(double x);

double pow(double x, double y);    ///< Error below 0.6 ulp, and 0.8 ulp where the result is below 2.3e-308.
double powerOfTen(int exponent);   ///< 10^exponent, correctly rounded.
double hypot(double x, double y);  ///< Error below 0.95 ulp.
double cbrt(double x);

double erf(double x);     ///< Error below 1.1 ulp.
double erfc(double x);    ///< Error below 1.6 ulp.
double tgamma(double x);  ///< Error below 10 ulp where the result is below 2.3e-308.
/// Logarithm of the absolute value of the gamma function. For a negative x the error is below 1 ulp or 1e-15, whichever
/// is larger.
double lgamma(double x);
/// Derivative of lgamma; NaN at its poles. The error is below 1e-15 times the larger of 1 and the result.
double digamma(double x);
/// Regularised upper incomplete gamma function Q(a, x) (NIST Digital Library of Mathematical Functions, 8.2.4): the
/// p-value of chi square is gammaQ(ndf / 2, chi2 / 2). Relative error below 1e-14 where x is near a, and below 2e-13.
/// @return NaN unless a > 0 and x >= 0 and a is finite.
double gammaQ(double a, double x);

}  // namespace velmorak::elementary
