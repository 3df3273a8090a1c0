#include <velmorak/ElementaryFunctions.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <numbers>

namespace velmorak::elementary {

namespace {

/// Asymptotic series log x - 1 / (2 x) - sum of B(2k) / (2k x^2k) (NIST Digital Library of Mathematical Functions,
/// 5.11.2), for x of at least 10.
double series(double x) {
    constexpr double coefficients[] = {1.0 / 12,  -1.0 / 120,       1.0 / 252, -1.0 / 240,
                                       1.0 / 132, -691.0 / 32760.0, 1.0 / 12,  -3617.0 / 8160.0};
    const double inverseSquare = 1.0 / x / x;
    double sum = 0.0;
    for (std::size_t i = std::size(coefficients); i-- > 0;) {
        sum = inverseSquare * (coefficients[i] + sum);
    }
    return log(x) - 0.5 / x - sum;
}

/// By the recurrence digamma(x) = digamma(x + 1) - 1 / x.
double ofPositive(double x) {
    double below = 0.0;
    double above = x;
    while (above < 10.0) {
        below += 1.0 / above;
        above += 1.0;
    }
    return series(above) - below;
}

}  // namespace

double digamma(double x) {
    if (x > 0.0) {
        return std::isinf(x) ? x : ofPositive(x);
    }
    if (std::floor(x) == x || std::isinf(x)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    // Reflection: digamma(1 - x) - pi / tan(pi x).
    const double fromInteger = x - std::round(x);
    return ofPositive(1.0 - x) - std::numbers::pi / tan(std::numbers::pi * fromInteger);
}

}  // namespace velmorak::elementary
