#include <velmorak/ElementaryFunctions.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <numbers>

namespace velmorak::elementary {

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();

/// mu - log(1 + mu). Near 0, with s = mu / (2 + mu), it is s mu - 2 (s^3 / 3 + s^5 / 5 + ...), without cancellation.
double excess(double mu) {
    if (mu < -0.7 || mu > 2.0) {
        return mu - log1p(mu);
    }
    const double s = mu / (2.0 + mu);
    const double square = s * s;
    double power = s * square;
    double sum = 0.0;
    for (double n = 3.0; std::fabs(power) > 0.1 * epsilon * std::fabs(sum); n += 2.0) {
        sum += power / n;
        power *= square;
    }
    return s * mu - 2.0 * sum;
}

/// Logarithm of the gamma function minus Stirling's approximation, for a of at least 12.
double stirlingRest(double a) {
    const double inverseSquare = 1.0 / a / a;
    return (1.0 / 12 -
            inverseSquare *
                (1.0 / 360 - inverseSquare * (1.0 / 1260 - inverseSquare * (1.0 / 1680 - inverseSquare / 1188)))) /
           a;
}

/// x^a exp(-x) / Gamma(a + 1).
double factor(double a, double x) {
    if (a < 100.0 && x < 700.0) {
        return pow(x, a) * exp(-x) / tgamma(a + 1.0);
    }
    if (a >= 12.0) {
        return exp(-a * excess((x - a) / a) - stirlingRest(a)) / std::sqrt(2.0 * std::numbers::pi * a);
    }
    const double root = exp(-0.5 * x);
    return root == 0.0 ? 0.0 : pow(x, a) * root / tgamma(a + 1.0) * root;
}

/// Lower function P by its power series (NIST Digital Library of Mathematical Functions, 8.7.1).
double lowerBySeries(double a, double x) {
    double term = 1.0;
    double sum = 1.0;
    for (double n = 1.0; term > 0.1 * epsilon * sum; n += 1.0) {
        term *= x / (a + n);
        sum += term;
    }
    return factor(a, x) * sum;
}

/// By the continued fraction (8.9.2), evaluated with the method of W. Lentz, Applied Optics 15 (1976) 668.
double byContinuedFraction(double a, double x) {
    double b = x + 1.0 - a;
    double c = std::numeric_limits<double>::max();
    double d = 1.0 / b;
    double fraction = d;
    double change = 0.0;
    for (double n = 1.0; std::fabs(change - 1.0) > epsilon && n < 10000.0; n += 1.0) {
        const double numerator = n * (a - n);
        b += 2.0;
        d = 1.0 / (b + numerator * d);
        c = b + numerator / c;
        change = c * d;
        fraction *= change;
    }
    return a * factor(a, x) * fraction;
}

/// Uniform expansion for a of at least 12 and x near a: A. Gil, J. Segura, N. Temme, SIAM Journal on Scientific
/// Computing 34 (2012) A2965, section 2.5.
double byUniformExpansion(double a, double mu) {
    // Of eta / mu in powers of eta, where eta^2 / 2 = mu - log(1 + mu).
    constexpr double coefficients[] = {1.0,
                                       -1.0 / 3,
                                       1.0 / 12,
                                       -2.0 / 135,
                                       1.0 / 864,
                                       1.0 / 2835,
                                       -0.0001787551440329218,
                                       3.919263178522438e-05,
                                       -2.185448510679992e-06,
                                       -1.85406221071516e-06,
                                       8.296711340953087e-07,
                                       -1.7665952736826078e-07,
                                       6.707853543401498e-09,
                                       1.0261809784240309e-08,
                                       -4.382036018453353e-09,
                                       9.14769958223679e-10,
                                       -2.5514193994946248e-11,
                                       -5.830772132550426e-11,
                                       2.4361948020667415e-11,
                                       -5.0276692801141755e-12,
                                       1.1004392031956135e-13,
                                       3.371763262400985e-13,
                                       -1.392388722418162e-13,
                                       2.8534893807447045e-14,
                                       -5.139111834242572e-16,
                                       -1.9752288294349442e-15,
                                       8.099521156704561e-16};
    const double halfSquare = excess(mu);
    const double eta = std::copysign(std::sqrt(2.0 * halfSquare), mu);
    double next = 0.0;
    double afterNext = 0.0;
    double sum = 0.0;
    for (std::size_t n = std::size(coefficients) - 1; n > 0; --n) {
        const double current = coefficients[n] + static_cast<double>(n + 1) * afterNext / a;
        afterNext = next;
        next = current;
        sum = current + eta * sum;
    }
    const double scale = exp(-a * halfSquare) / std::sqrt(2.0 * std::numbers::pi * a);
    return 0.5 * erfc(eta * std::sqrt(0.5 * a)) + scale * sum / (1.0 + afterNext / a);
}

}  // namespace

double gammaQ(double a, double x) {
    if (!(a > 0.0) || !(x >= 0.0) || std::isinf(a)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (x == 0.0 || std::isinf(x)) {
        return x == 0.0 ? 1.0 : 0.0;
    }
    const double mu = (x - a) / a;
    if (a >= 12.0 && mu > -0.7 && mu < 1.35) {
        return byUniformExpansion(a, mu);
    }
    return x < a || x < 1.1 ? 1.0 - lowerBySeries(a, x) : byContinuedFraction(a, x);
}

}  // namespace velmorak::elementary
