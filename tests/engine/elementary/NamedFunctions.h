#pragma once

#include "elementary/Loops.h"

#include <velmorak/ElementaryFunctions.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <random>

namespace velmorak::elementary {

struct OfOne {
    const char* name;
    double (*scalar)(double);
    LoopOfOne Loops::*loop;
};

struct OfTwo {
    const char* name;
    double (*scalar)(double, double);
    LoopOfTwo Loops::*loop;
};

inline constexpr OfOne functionsOfOne[] = {
    {"acos", acos, &Loops::acos},    {"acosh", acosh, &Loops::acosh}, {"asin", asin, &Loops::asin},
    {"asinh", asinh, &Loops::asinh}, {"atan", atan, &Loops::atan},    {"atanh", atanh, &Loops::atanh},
    {"cbrt", cbrt, &Loops::cbrt},    {"cos", cos, &Loops::cos},       {"cosh", cosh, &Loops::cosh},
    {"erf", erf, &Loops::erf},       {"erfc", erfc, &Loops::erfc},    {"exp", exp, &Loops::exp},
    {"exp2", exp2, &Loops::exp2},    {"expm1", expm1, &Loops::expm1}, {"lgamma", lgamma, &Loops::lgamma},
    {"log", log, &Loops::log},       {"log10", log10, &Loops::log10}, {"log1p", log1p, &Loops::log1p},
    {"log2", log2, &Loops::log2},    {"sin", sin, &Loops::sin},       {"sinh", sinh, &Loops::sinh},
    {"tan", tan, &Loops::tan},       {"tanh", tanh, &Loops::tanh},    {"tgamma", tgamma, &Loops::tgamma},
};

inline constexpr OfTwo functionsOfTwo[] = {
    {"atan2", atan2, &Loops::atan2},
    {"hypot", hypot, &Loops::hypot},
    {"pow", pow, &Loops::pow},
};

inline constexpr double specialValues[] = {
    0.0,       -0.0,       1.0,     -1.0,    0.5,       -0.5,       2.0,    -2.0,   3.0,    -3.0,
    0x1p-1074, -0x1p-1074, 1e-310,  -1e-310, 0x1p-1022, 0x1p52 + 1, 0x1p53, -1e300, 1e300,  1.7e308,
    -1.7e308,  709.0,      709.5,   710.0,   710.47,    711.0,      -745.0, -746.0, 1024.0, -1074.0,
    170.5,     171.7,      -170.5,  -180.5,  -181.5,    -182.0,     26.0,   27.0,   28.0,   0x1p-28,
    0x1p-54,   0x1p500,    0x1p501, 1e22,    INFINITY,  -INFINITY,  NAN,
};

/// Any bits, special values, and the sizes that are common.
inline double randomValue(std::mt19937_64& random) {
    switch (random() % 8) {
        case 0:
            return specialValues[random() % std::size(specialValues)];
        case 1:
            return std::bit_cast<double>(random());
        case 2:
        case 3:
            return std::uniform_real_distribution<double>(-1.0, 1.0)(random);
        case 4:
            return std::uniform_real_distribution<double>(0.0, 2.0)(random);
        case 5:
            return std::ldexp(std::uniform_real_distribution<double>(-1.0, 1.0)(random),
                              static_cast<int>(random() % 140) - 70);
        default:
            return std::normal_distribution<double>(0.0, 60.0)(random);
    }
}

inline bool haveSameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || (std::isnan(a) && std::isnan(b));
}

}  // namespace velmorak::elementary
