#include "NamedFunctions.h"

#include <gtest/gtest.h>
#include <quadmath.h>

#include <algorithm>
#include <limits>
#include <string>

namespace velmorak::elementary {
namespace {

using Quad = __float128;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Distance from the true value in units in the last place; infinite if one of the two is NaN, infinite or of the other
/// sign and the other is not.
double ulpsFrom(Quad truth, double value) {
    const auto nearest = static_cast<double>(truth);
    if (std::isnan(nearest) || std::isnan(value)) {
        return std::isnan(nearest) && std::isnan(value) ? 0.0 : infinity;
    }
    if (std::isinf(nearest) || std::isinf(value) || std::signbit(nearest) != std::signbit(value)) {
        return nearest == value && nearest != 0.0 ? 0.0 : infinity;
    }
    if (nearest == 0.0) {
        return std::fabs(value) / std::numeric_limits<double>::denorm_min();
    }
    const double size = std::fabs(nearest);
    const double ulp = std::isinf(std::nextafter(size, infinity)) ? size - std::nextafter(size, 0.0)
                                                                  : std::nextafter(size, infinity) - size;
    return std::fabs(static_cast<double>((static_cast<Quad>(value) - truth) / static_cast<Quad>(ulp)));
}

struct Truth {
    const char* name;
    Quad (*function)(Quad);
    double maxUlps;
};

struct TruthOfTwo {
    const char* name;
    Quad (*function)(Quad, Quad);
    double maxUlps;
};

constexpr Truth truths[] = {
    {"acos", acosq, 1.0},   {"acosh", acoshq, 1.5}, {"asin", asinq, 1.0},     {"asinh", asinhq, 1.5},
    {"atan", atanq, 1.0},   {"atanh", atanhq, 1.0}, {"cbrt", cbrtq, 1.0},     {"cos", cosq, 1.0},
    {"cosh", coshq, 2.0},   {"erf", erfq, 1.1},     {"erfc", erfcq, 1.6},     {"exp", expq, 1.2},
    {"exp2", exp2q, 1.0},   {"expm1", expm1q, 1.0}, {"lgamma", lgammaq, 1.0}, {"log", logq, 0.9},
    {"log10", log10q, 1.0}, {"log1p", log1pq, 1.0}, {"log2", log2q, 1.0},     {"sin", sinq, 1.0},
    {"sinh", sinhq, 2.0},   {"tan", tanq, 1.0},     {"tanh", tanhq, 1.0},     {"tgamma", tgammaq, 1.0},
};

constexpr TruthOfTwo truthsOfTwo[] = {{"atan2", atan2q, 1.5}, {"hypot", hypotq, 0.9}, {"pow", powq, 0.8}};

template <typename Row, typename Rows>
const Row& rowOf(const Rows& rows, const std::string& name) {
    return *std::find_if(std::begin(rows), std::end(rows), [&](const Row& row) { return row.name == name; });
}

/// Accuracies that the header states in other units than ulps.
bool isAsStated(const std::string& name, double x, Quad truth, double value) {
    const auto size = static_cast<double>(fabsq(truth));
    if (name == "lgamma" && x < 0.0) {
        return std::fabs(static_cast<double>(value - truth)) < 1e-15 * std::max(1.0, size);
    }
    return name == "tgamma" && size < 2.3e-308 && ulpsFrom(truth, value) < 10.0;
}

TEST(ElementaryFunctions, haveTheStatedAccuracy) {
    std::mt19937_64 random(4711);
    for (const OfOne& function : functionsOfOne) {
        const auto& truth = rowOf<Truth>(truths, function.name);
        double most = 0.0;
        for (int i = 0; i < 50'000; ++i) {
            const double x = randomValue(random);
            const Quad exact = truth.function(x);
            const double ulps = ulpsFrom(exact, function.scalar(x));
            if (ulps > truth.maxUlps && isAsStated(function.name, x, exact, function.scalar(x))) {
                continue;
            }
            most = std::max(most, ulps);
            ASSERT_LE(ulps, truth.maxUlps) << function.name << " of " << std::hexfloat << x << ": "
                                           << function.scalar(x) << ", true " << static_cast<double>(exact);
        }
        std::cout << function.name << ": at most " << most << " ulp\n";
    }
}

TEST(ElementaryFunctions, ofTwoArgumentsHaveTheStatedAccuracy) {
    std::mt19937_64 random(4711);
    for (const OfTwo& function : functionsOfTwo) {
        const auto& truth = rowOf<TruthOfTwo>(truthsOfTwo, function.name);
        double most = 0.0;
        for (int i = 0; i < 100'000; ++i) {
            const double x = randomValue(random);
            const double y = randomValue(random);
            const Quad exact = truth.function(x, y);
            const double ulps = ulpsFrom(exact, function.scalar(x, y));
            most = std::max(most, ulps);
            ASSERT_LE(ulps, truth.maxUlps) << function.name << " of " << std::hexfloat << x << ", " << y << ": "
                                           << function.scalar(x, y) << ", true " << static_cast<double>(exact);
        }
        std::cout << function.name << ": at most " << most << " ulp\n";
    }
}

// Where the argument of the logarithm that they are is near 1, it needs more bits than a number has.
TEST(ElementaryFunctions, ofTheInverseHyperbolicKindKeepTheirAccuracyNearTheirZeros) {
    std::mt19937_64 random(4711);
    for (int i = 0; i < 100'000; ++i) {
        const double size =
            std::ldexp(std::uniform_real_distribution<double>(0.5, 1.0)(random), static_cast<int>(random() % 80) - 52);
        const double x = random() % 2 == 0 ? size : -size;
        ASSERT_LE(ulpsFrom(asinhq(x), asinh(x)), 0.6) << std::hexfloat << x;
        ASSERT_LE(ulpsFrom(acoshq(1.0 + size), acosh(1.0 + size)), 0.6) << std::hexfloat << size;
    }
}

/// The limits of ISO C, Annex F, which the C library keeps.
template <typename Number>
void expectLimit(const char* name, double ours, Number theirs, const std::string& arguments) {
    EXPECT_EQ(std::isnan(ours), std::isnan(theirs)) << name << " of " << arguments;
    if (!std::isnan(ours)) {
        EXPECT_EQ(std::signbit(ours), std::signbit(theirs)) << name << " of " << arguments;
        EXPECT_EQ(std::isinf(ours), std::isinf(theirs)) << name << " of " << arguments;
        EXPECT_EQ(ours == 0.0, theirs == 0.0) << name << " of " << arguments;
    }
}

constexpr double limits[] = {0.0,        -0.0,          1.0,       -1.0,   0.5,       -0.5,       2.0,
                             -2.0,       3.0,           -3.0,      2.5,    0x1p-1074, -0x1p-1074, 0x1p53,
                             0x1p52 + 1, -(0x1p52 + 1), 1e308,     -1e308, -180.5,    -181.5,     710.4,
                             -710.4,     infinity,      -infinity, NAN};

TEST(ElementaryFunctions, haveTheLimitsOfTheStandard) {
    using Peer = double (*)(double);
    constexpr std::pair<const char*, Peer> peers[] = {
        {"acos", std::acos},   {"acosh", std::acosh}, {"asin", std::asin},     {"asinh", std::asinh},
        {"atan", std::atan},   {"atanh", std::atanh}, {"cbrt", std::cbrt},     {"cos", std::cos},
        {"cosh", std::cosh},   {"erf", std::erf},     {"erfc", std::erfc},     {"exp", std::exp},
        {"exp2", std::exp2},   {"expm1", std::expm1}, {"lgamma", std::lgamma}, {"log", std::log},
        {"log10", std::log10}, {"log1p", std::log1p}, {"log2", std::log2},     {"sin", std::sin},
        {"sinh", std::sinh},   {"tan", std::tan},     {"tanh", std::tanh},     {"tgamma", std::tgamma}};
    for (const auto& [name, peer] : peers) {
        for (const double x : limits) {
            expectLimit(name, rowOf<OfOne>(functionsOfOne, name).scalar(x), peer(x), std::to_string(x));
        }
    }
}

TEST(ElementaryFunctions, ofTwoArgumentsHaveTheLimitsOfTheStandard) {
    for (const double x : limits) {
        for (const double y : limits) {
            const std::string arguments = std::to_string(x) + ", " + std::to_string(y);
            expectLimit("atan2", atan2(x, y), std::atan2(x, y), arguments);
            expectLimit("hypot", hypot(x, y), std::hypot(x, y), arguments);
            expectLimit("pow", pow(x, y), std::pow(x, y), arguments);
        }
    }
}

}  // namespace
}  // namespace velmorak::elementary
