#include "fit/Program.h"

#include <velmorak/ElementaryFunctions.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace velmorak::fitting {

namespace {

constexpr double pi = std::numbers::pi;

double flat(double /*x*/, double /*y*/) {
    return 0.0;
}

double signOf(double x) {
    return x > 0.0 ? 1.0 : x < 0.0 ? -1.0 : x;
}

double gaussian(double x) {
    return 2.0 / std::sqrt(pi) * elementary::exp(-x * x);
}

constexpr std::array functions{
    UnaryFunction{"abs", [](double x) { return std::fabs(x); }, [](double x, double) { return signOf(x); }},
    UnaryFunction{"sign", signOf, flat},
    UnaryFunction{"floor", [](double x) { return std::floor(x); }, flat},
    UnaryFunction{"ceil", [](double x) { return std::ceil(x); }, flat},
    UnaryFunction{"round", [](double x) { return std::round(x); }, flat},
    UnaryFunction{"trunc", [](double x) { return std::trunc(x); }, flat},
    UnaryFunction{"sqrt", [](double x) { return std::sqrt(x); }, [](double, double y) { return 0.5 / y; }},
    UnaryFunction{"cbrt", elementary::cbrt, [](double, double y) { return 1.0 / (3.0 * y * y); },
                  &elementary::Loops::cbrt},
    UnaryFunction{"exp2", elementary::exp2, [](double, double y) { return y * std::numbers::ln2; },
                  &elementary::Loops::exp2},
    UnaryFunction{"expm1", elementary::expm1, [](double, double y) { return y + 1.0; }, &elementary::Loops::expm1},
    UnaryFunction{"log", elementary::log, [](double x, double) { return 1.0 / x; }, &elementary::Loops::log},
    UnaryFunction{"log10", elementary::log10, [](double x, double) { return std::numbers::log10e / x; },
                  &elementary::Loops::log10},
    UnaryFunction{"log2", elementary::log2, [](double x, double) { return std::numbers::log2e / x; },
                  &elementary::Loops::log2},
    UnaryFunction{"log1p", elementary::log1p, [](double x, double) { return 1.0 / (1.0 + x); },
                  &elementary::Loops::log1p},
    UnaryFunction{"sin", elementary::sin, [](double x, double) { return elementary::cos(x); }, &elementary::Loops::sin},
    UnaryFunction{"cos", elementary::cos, [](double x, double) { return -elementary::sin(x); },
                  &elementary::Loops::cos},
    UnaryFunction{"tan", elementary::tan, [](double, double y) { return 1.0 + y * y; }, &elementary::Loops::tan},
    UnaryFunction{"asin", elementary::asin, [](double x, double) { return 1.0 / std::sqrt((1.0 - x) * (1.0 + x)); },
                  &elementary::Loops::asin},
    UnaryFunction{"acos", elementary::acos, [](double x, double) { return -1.0 / std::sqrt((1.0 - x) * (1.0 + x)); },
                  &elementary::Loops::acos},
    UnaryFunction{"atan", elementary::atan, [](double x, double) { return 1.0 / (1.0 + x * x); },
                  &elementary::Loops::atan},
    UnaryFunction{"sinh", elementary::sinh, [](double x, double) { return elementary::cosh(x); },
                  &elementary::Loops::sinh},
    UnaryFunction{"cosh", elementary::cosh, [](double x, double) { return elementary::sinh(x); },
                  &elementary::Loops::cosh},
    UnaryFunction{"tanh", elementary::tanh, [](double, double y) { return (1.0 - y) * (1.0 + y); },
                  &elementary::Loops::tanh},
    UnaryFunction{"asinh", elementary::asinh, [](double x, double) { return 1.0 / elementary::hypot(1.0, x); },
                  &elementary::Loops::asinh},
    UnaryFunction{"acosh", elementary::acosh, [](double x, double) { return 1.0 / std::sqrt((x - 1.0) * (x + 1.0)); },
                  &elementary::Loops::acosh},
    UnaryFunction{"atanh", elementary::atanh, [](double x, double) { return 1.0 / ((1.0 - x) * (1.0 + x)); },
                  &elementary::Loops::atanh},
    UnaryFunction{"erf", elementary::erf, [](double x, double) { return gaussian(x); }, &elementary::Loops::erf},
    UnaryFunction{"erfc", elementary::erfc, [](double x, double) { return -gaussian(x); }, &elementary::Loops::erfc},
    UnaryFunction{"gamma", elementary::tgamma, [](double x, double y) { return y * elementary::digamma(x); },
                  &elementary::Loops::tgamma},
    UnaryFunction{"lgamma", elementary::lgamma, [](double x, double) { return elementary::digamma(x); },
                  &elementary::Loops::lgamma},
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
