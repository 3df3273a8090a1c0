#include "fit/Program.h"

#include <boost/math/special_functions/digamma.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace velmorak::fitting {

namespace {

constexpr double pi = std::numbers::pi;

// std::lgamma writes a global.
double logGamma(double x) {
    int ignoredSign = 0;
    return ::lgamma_r(x, &ignoredSign);
}

/// Derivative of the logarithm of the gamma function; NaN at its poles.
double digamma(double x) {
    using boost::math::policies::ignore_error;
    const boost::math::policies::policy<boost::math::policies::pole_error<ignore_error>> valuesForErrors;
    return boost::math::digamma(x, valuesForErrors);
}

double flat(double /*x*/, double /*y*/) {
    return 0.0;
}

double signOf(double x) {
    return x > 0.0 ? 1.0 : x < 0.0 ? -1.0 : x;
}

double gaussian(double x) {
    return 2.0 / std::sqrt(pi) * std::exp(-x * x);
}

constexpr std::array functions{
    UnaryFunction{"abs", [](double x) { return std::fabs(x); }, [](double x, double) { return signOf(x); }},
    UnaryFunction{"sign", signOf, flat},
    UnaryFunction{"floor", [](double x) { return std::floor(x); }, flat},
    UnaryFunction{"ceil", [](double x) { return std::ceil(x); }, flat},
    UnaryFunction{"round", [](double x) { return std::round(x); }, flat},
    UnaryFunction{"trunc", [](double x) { return std::trunc(x); }, flat},
    UnaryFunction{"sqrt", [](double x) { return std::sqrt(x); }, [](double, double y) { return 0.5 / y; }},
    UnaryFunction{"cbrt", [](double x) { return std::cbrt(x); }, [](double, double y) { return 1.0 / (3.0 * y * y); }},
    UnaryFunction{"exp2", [](double x) { return std::exp2(x); },
                  [](double, double y) { return y * std::numbers::ln2; }},
    UnaryFunction{"expm1", [](double x) { return std::expm1(x); }, [](double, double y) { return y + 1.0; }},
    UnaryFunction{"log", [](double x) { return std::log(x); }, [](double x, double) { return 1.0 / x; }},
    UnaryFunction{"log10", [](double x) { return std::log10(x); },
                  [](double x, double) { return std::numbers::log10e / x; }},
    UnaryFunction{"log2", [](double x) { return std::log2(x); },
                  [](double x, double) { return std::numbers::log2e / x; }},
    UnaryFunction{"log1p", [](double x) { return std::log1p(x); }, [](double x, double) { return 1.0 / (1.0 + x); }},
    UnaryFunction{"sin", [](double x) { return std::sin(x); }, [](double x, double) { return std::cos(x); }},
    UnaryFunction{"cos", [](double x) { return std::cos(x); }, [](double x, double) { return -std::sin(x); }},
    UnaryFunction{"tan", [](double x) { return std::tan(x); }, [](double, double y) { return 1.0 + y * y; }},
    UnaryFunction{"asin", [](double x) { return std::asin(x); },
                  [](double x, double) { return 1.0 / std::sqrt((1.0 - x) * (1.0 + x)); }},
    UnaryFunction{"acos", [](double x) { return std::acos(x); },
                  [](double x, double) { return -1.0 / std::sqrt((1.0 - x) * (1.0 + x)); }},
    UnaryFunction{"atan", [](double x) { return std::atan(x); }, [](double x, double) { return 1.0 / (1.0 + x * x); }},
    UnaryFunction{"sinh", [](double x) { return std::sinh(x); }, [](double x, double) { return std::cosh(x); }},
    UnaryFunction{"cosh", [](double x) { return std::cosh(x); }, [](double x, double) { return std::sinh(x); }},
    UnaryFunction{"tanh", [](double x) { return std::tanh(x); },
                  [](double, double y) { return (1.0 - y) * (1.0 + y); }},
    UnaryFunction{"asinh", [](double x) { return std::asinh(x); },
                  [](double x, double) { return 1.0 / std::hypot(1.0, x); }},
    UnaryFunction{"acosh", [](double x) { return std::acosh(x); },
                  [](double x, double) { return 1.0 / std::sqrt((x - 1.0) * (x + 1.0)); }},
    UnaryFunction{"atanh", [](double x) { return std::atanh(x); },
                  [](double x, double) { return 1.0 / ((1.0 - x) * (1.0 + x)); }},
    UnaryFunction{"erf", [](double x) { return std::erf(x); }, [](double x, double) { return gaussian(x); }},
    UnaryFunction{"erfc", [](double x) { return std::erfc(x); }, [](double x, double) { return -gaussian(x); }},
    UnaryFunction{"gamma", [](double x) { return std::tgamma(x); }, [](double x, double y) { return y * digamma(x); }},
    UnaryFunction{"lgamma", logGamma, [](double x, double) { return digamma(x); }},
    UnaryFunction{"isnan", [](double x) { return std::isnan(x) ? 1.0 : 0.0; }, flat},
    UnaryFunction{"isinf", [](double x) { return std::isinf(x) ? 1.0 : 0.0; }, flat},
    UnaryFunction{"isfinite", [](double x) { return std::isfinite(x) ? 1.0 : 0.0; }, flat}};

}  // namespace

const UnaryFunction* findUnary(std::string_view name) {
    const auto* const found = std::find_if(functions.begin(), functions.end(),
                                           [&](const UnaryFunction& known) { return known.name == name; });
    return found == functions.end() ? nullptr : found;
}

std::vector<std::string> unaryNames() {
    std::vector<std::string> names;
    names.reserve(std::size(functions));
    for (const UnaryFunction& function : functions) {
        names.emplace_back(function.name);
    }
    return names;
}

}  // namespace velmorak::fitting
