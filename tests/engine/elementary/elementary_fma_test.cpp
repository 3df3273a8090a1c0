#include "elementary/simd/Fma.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace velmorak::elementary {
namespace {

// Few bits and close exponents make ties and cancellation frequent.
TEST(EmulatedFma, roundsOnceAsTheInstructionDoes) {
    std::mt19937_64 random(4711);
    const auto number = [&] {
        const auto bits = static_cast<double>(static_cast<std::int64_t>(random() >> (random() % 64)));
        const double value = std::ldexp(bits, static_cast<int>(random() % 120) - 100);
        return random() % 2 == 0 ? value : -value;
    };
    for (int i = 0; i < 1'000'000; ++i) {
        const double x = number();
        const double y = number();
        const double z = i % 3 == 0 ? -x * y * (1.0 + static_cast<double>(i % 5) * 0x1p-52) : number();
        ASSERT_EQ(emulatedFused(x, y, z), std::fma(x, y, z)) << std::hexfloat << x << ", " << y << ", " << z;
    }
}

TEST(UnfusedMultiplyAdd, yieldsWhatRoundingLeavesOutOfAProduct) {
    std::mt19937_64 random(4711);
    for (int i = 0; i < 1'000'000; ++i) {
        const double x =
            std::ldexp(std::uniform_real_distribution<double>(-1.0, 1.0)(random), static_cast<int>(random() % 60));
        const double y = std::uniform_real_distribution<double>(-1.0, 1.0)(random);
        ASSERT_EQ(unfused(x, y, -(x * y)), std::fma(x, y, -(x * y))) << std::hexfloat << x << ", " << y;
    }
}

TEST(EmulatedFma, keepsNumbersToWhichATinyProductIsAdded) {
    for (const double tiny : {0.0, 0x1p-1074, 1e-310, -1e-310, 1e-200}) {
        EXPECT_EQ(emulatedFused(tiny, 0.3, 0.5), 0.5);
        EXPECT_EQ(emulatedFused(tiny * tiny, 0.5, tiny), tiny);
    }
    EXPECT_TRUE(std::isnan(emulatedFused(NAN, 0.3, 0.5)));
}

}  // namespace
}  // namespace velmorak::elementary
