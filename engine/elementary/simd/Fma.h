#pragma once

#include <cstdint>

namespace velmorak::elementary {

namespace {

/// x y + z with one rounding. Without the instruction it becomes a call of the C library, which changes the mode of
/// rounding and takes microseconds.
[[gnu::always_inline]] inline double fused(double x, double y, double z) {
    return __builtin_fma(x, y, z);
}

struct ExactSum {
    double sum, error;
};

/// D. Knuth, The Art of Computer Programming 2, 4.2.2.
[[gnu::always_inline]] inline ExactSum exactSum(double x, double y) {
    const double sum = x + y;
    const double partOfY = sum - x;
    return {sum, (x - (sum - partOfY)) + (y - partOfY)};
}

/// The sum, rounded to the neighbour whose last bit is 1 unless it is exact.
[[gnu::always_inline]] inline double sumToOdd(double x, double y) {
    const ExactSum exact = exactSum(x, y);
    const auto bits = __builtin_bit_cast(std::uint64_t, exact.sum);
    const std::uint64_t away = (exact.error > 0.0) == (exact.sum > 0.0) ? 1 : ~std::uint64_t{0};
    const std::uint64_t step = (bits & 1U) == 0 ? away : 0;
    return __builtin_bit_cast(double, bits + (exact.error != 0.0 ? step : 0));
}

/// What rounding leaves out of product, the rounded x y (T. Dekker, Numerische Mathematik 18 (1971) 224), for |x| and
/// |y| below 2^996 and products above 2^-960.
[[gnu::always_inline]] inline double restOfProduct(double x, double y, double product) {
    const auto headOf = [](double value) {
        const double stretched = value * (0x1p27 + 1.0);
        return stretched - (stretched - value);
    };
    const double xHead = headOf(x);
    const double yHead = headOf(y);
    const double xRest = x - xHead;
    const double yRest = y - yHead;
    return xRest * yRest - (((product - xHead * yHead) - xRest * yHead) - xHead * yRest);
}

/// x y + z where it and round(x y) + z are doubles, so that fused has nothing to round and yields the same bits.
[[gnu::always_inline]] inline double unfused(double x, double y, double z) {
    const double product = x * y;
    return (product + z) + restOfProduct(x, y, product);
}

/// The bits of fused for products between 2^-900 and 2^900, and for smaller ones if |z| is above 2^60 times the
/// product. The product is exact as a sum of two numbers; adding the lower parts with rounding to odd makes the last
/// rounding the right one (S. Boldo, G. Melquiond, IEEE Transactions on Computers 57 (2008) 462).
[[gnu::always_inline]] inline double emulatedFused(double x, double y, double z) {
    const double product = x * y;
    const ExactSum low = exactSum(z, restOfProduct(x, y, product));
    const ExactSum high = exactSum(product, low.sum);
    return high.sum + sumToOdd(high.error, low.error);
}

}  // namespace

}  // namespace velmorak::elementary
