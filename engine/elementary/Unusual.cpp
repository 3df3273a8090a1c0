#include "elementary/simd/Hypot.h"
#include "elementary/simd/Log.h"
#include "elementary/simd/Pow.h"

#include <cmath>
#include <limits>

namespace velmorak::elementary {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

bool isInteger(double y) {
    return std::floor(y) == y;
}

bool isOdd(double y) {
    return isInteger(y) && std::fabs(std::fmod(y, 2.0)) == 1.0;
}

Binary binaryOf(double positive) {
    const bool isNormal = positive >= 0x1p-1022;
    return binaryOf(bitsOf(isNormal ? positive : positive * 0x1p54), isNormal ? 0.0 : 54.0);
}

/// exp(x), rounded once more where the numbers have fewer bits.
double scaledExponential(TwoParts x) {
    const Exponential power = exponentialOfParts(x);
    const std::uint64_t fraction = power.steps & 31U;
    const double root = numberOf(rootBits[fraction] + (fraction << 47U));
    const auto steps = static_cast<std::int64_t>(power.steps - bitsOf(0x1.8p52));
    return std::ldexp(root + root * power.relative, static_cast<int>(steps >> 5));
}

/// @param size neither negative nor NaN.
double powerOfSize(double size, double y) {
    if (size == 1.0) {
        return 1.0;
    }
    if (size == 0.0 || std::isinf(size) || std::isinf(y)) {
        return (size > 1.0) == (y > 0.0) ? infinity : 0.0;
    }
    const TwoParts logarithm = logarithmInParts<unfused>(binaryOf(size));
    const double head = y * logarithm.head;
    if (std::fabs(head) > 750.0) {
        return head > 0.0 ? infinity : 0.0;
    }
    return scaledExponential({head, unfused(y, logarithm.head, -head) + y * logarithm.rest});
}

}  // namespace

double unusualLogarithm(double x) {
    if (x == 0.0) {
        return -infinity;
    }
    if (!(x > 0.0)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const bool isSubnormal = x < 0x1p-1022;
    return x == infinity ? x : logarithmOfNormal(isSubnormal ? x * 0x1p54 : x, isSubnormal ? 54.0 : 0.0);
}

double unusualHypotenuse(double x, double y) {
    const double a = std::fabs(x);
    const double b = std::fabs(y);
    if (std::isinf(a) || std::isinf(b)) {
        return infinity;
    }
    if (std::isnan(a) || std::isnan(b)) {
        return a + b;
    }
    const double longer = a < b ? b : a;
    const double shorter = a < b ? a : b;
    if (longer > 0x1p500) {
        return hypotenuseOfSorted<unfused>(longer * 0x1p-600, shorter * 0x1p-600) * 0x1p600;
    }
    return hypotenuseOfSorted<unfused>(longer * 0x1p600, shorter * 0x1p600) * 0x1p-600;
}

// The limits of ISO C, Annex F.
double unusualPower(double x, double y) {
    if (y == 0.0 || x == 1.0) {
        return 1.0;
    }
    if (std::isnan(x) || std::isnan(y)) {
        return x + y;
    }
    const double size = std::fabs(x);
    const bool isNegative = std::signbit(x);
    if (isNegative && !isInteger(y) && size != 0.0 && size != infinity) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double value = powerOfSize(size, y);
    return isNegative && isOdd(y) ? -value : value;
}

}  // namespace velmorak::elementary
