#include <velmorak/Fit.h>

#include <cmath>

namespace velmorak {

namespace {

constexpr int maxTerms = 100000;
constexpr double exactness = 1e-16;

/// Lower incomplete gamma function by its series, without the factor x^a e^-x / gamma(a).
double series(double a, double x) {
    double term = 1.0 / a;
    double sum = term;
    for (int i = 1; i < maxTerms && term > exactness * sum; ++i) {
        term *= x / (a + i);
        sum += term;
    }
    return sum;
}

/// Upper incomplete gamma function by its continued fraction (Lentz's method), without the same factor.
double fraction(double a, double x) {
    constexpr double tiny = 1e-300;
    double b = x + 1.0 - a;
    double c = 1.0 / tiny;
    double d = 1.0 / b;
    double h = d;
    for (int i = 1; i < maxTerms; ++i) {
        const double an = -i * (i - a);
        b += 2.0;
        d = an * d + b;
        d = 1.0 / (std::fabs(d) < tiny ? tiny : d);
        c = b + an / c;
        c = std::fabs(c) < tiny ? tiny : c;
        const double factor = d * c;
        h *= factor;
        if (std::fabs(factor - 1.0) < exactness) {
            break;
        }
    }
    return h;
}

}  // namespace

// Q(ndf / 2, chi2 / 2) (W. Press and others, Numerical Recipes, 6.2).
double chiSquareProbability(double chi2, double ndf) {
    if (!(chi2 >= 0.0) || !(ndf > 0.0) || std::isinf(ndf)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double a = 0.5 * ndf;
    const double x = 0.5 * chi2;
    if (x == 0.0) {
        return 1.0;
    }
    if (std::isinf(x)) {
        return 0.0;
    }
    int ignoredSign = 0;
    const double factor = std::exp(a * std::log(x) - x - ::lgamma_r(a, &ignoredSign));
    return x < a + 1.0 ? 1.0 - factor * series(a, x) : factor * fraction(a, x);
}

}  // namespace velmorak
