#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "fit/simd/FitKernels.h"

namespace velmorak::fitting {
namespace {

using Values = std::vector<double>;

constexpr std::size_t maxPoints = 41;

/// Numbers of every magnitude, including the special cases of floating point.
Values drawn(std::mt19937_64& random, std::size_t count) {
    const Values odd{0.0,
                     -0.0,
                     1.0,
                     -1.0,
                     INFINITY,
                     -INFINITY,
                     NAN,
                     1e308,
                     -745.2,
                     710.5,
                     std::numeric_limits<double>::denorm_min()};
    Values made(count);
    for (double& value : made) {
        value = random() % 4 == 0 ? odd[random() % odd.size()] : std::normal_distribution<double>(0.0, 3.0)(random);
    }
    return made;
}

/// Compares bits; all NaN are equal.
bool areSame(const Values& a, const Values& b) {
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::bit_cast<std::uint64_t>(a[i]) != std::bit_cast<std::uint64_t>(b[i]) &&
            !(std::isnan(a[i]) && std::isnan(b[i]))) {
            return false;
        }
    }
    return true;
}

TEST(FitKernels, fillAsManyValuesAsAsked) {
    for (const FitKernels* kernels : runnableKernels()) {
        for (std::size_t count = 0; count <= maxPoints; ++count) {
            Values values(maxPoints + 1, 7.0);
            kernels->fill(-0.0, count, values.data());
            Values expected(maxPoints + 1, 7.0);
            std::fill_n(expected.begin(), count, -0.0);
            EXPECT_TRUE(areSame(values, expected)) << count;
        }
    }
}

TEST(FitKernels, sumToTheBitsOfTheCommonOnes) {
    if (runnableKernels().size() == 1) {
        GTEST_SKIP() << "no AVX2";
    }
    std::mt19937_64 random(21);
    for (const FitKernels* wide : runnableKernels()) {
        for (std::size_t count = 1; count <= maxPoints; ++count) {
            const Values a = drawn(random, count);
            const Values b = drawn(random, count);
            EXPECT_TRUE(areSame({wide->product(a.data(), b.data(), count)},
                                {commonKernels().product(a.data(), b.data(), count)}));
            for (const bool isFirst : {false, true}) {
                Values sum(count, 0.5);
                Values expected(count, 0.5);
                wide->addScaled(a.data(), b.data(), count, isFirst, sum.data());
                commonKernels().addScaled(a.data(), b.data(), count, isFirst, expected.data());
                EXPECT_TRUE(areSame(sum, expected));
            }
        }
    }
}

/// Columns of count rows, each followed by room that holds arbitrary values.
struct Matrix {
    static constexpr std::size_t columns = 5;
    std::size_t stride;
    Values rows;
    Values rFactor = Values(columns * columns, 0.0);

    Matrix(std::mt19937_64& random, std::size_t count) : stride(count + rowsPerUpdate), rows(columns * stride, NAN) {
        for (std::size_t k = 0; k < columns; ++k) {
            for (std::size_t i = 0; i < count; ++i) {
                rows[k * stride + i] = std::normal_distribution<double>()(random);
            }
        }
    }

    void householderUpdate(const FitKernels& kernels, std::size_t count) {
        kernels.householderUpdate(rFactor.data(), columns, rows.data(), stride, count);
    }
};

TEST(FitKernels, updateTheRFactorWithTheBitsOfTheCommonOnes) {
    if (runnableKernels().size() == 1) {
        GTEST_SKIP() << "no AVX2";
    }
    std::mt19937_64 random(22);
    for (const FitKernels* wide : runnableKernels()) {
        for (std::size_t count = 1; count <= maxPoints; ++count) {
            Matrix matrix(random, count);
            Matrix expected = matrix;
            matrix.householderUpdate(*wide, count);
            expected.householderUpdate(commonKernels(), count);
            EXPECT_TRUE(areSame(matrix.rFactor, expected.rFactor)) << count;
        }
    }
}

TEST(FitKernels, updateTheRFactorSoThatColumnsKeepTheirAngles) {
    std::mt19937_64 random(23);
    const std::size_t count = 19;
    Matrix first(random, count);
    Matrix second(random, count);
    const Matrix both[2] = {first, second};
    first.householderUpdate(bestKernels(), count);
    second.rFactor = first.rFactor;
    second.householderUpdate(bestKernels(), count);
    for (std::size_t a = 0; a < Matrix::columns; ++a) {
        for (std::size_t b = a; b < Matrix::columns; ++b) {
            double wanted = 0.0;
            for (const Matrix& part : both) {
                wanted += bestKernels().product(&part.rows[a * part.stride], &part.rows[b * part.stride], count);
            }
            const double* const rFactor = second.rFactor.data();
            EXPECT_NEAR(bestKernels().product(rFactor + a * Matrix::columns, rFactor + b * Matrix::columns, a + 1),
                        wanted, 1e-12);
        }
    }
}

TEST(FitKernels, leaveTheRFactorAloneForRowsOfZeros) {
    Values rFactor{2.0, 0.0, 3.0, 5.0};
    Values rows(2 * rowsPerUpdate, 0.0);
    bestKernels().householderUpdate(rFactor.data(), 2, rows.data(), rowsPerUpdate, 3);
    EXPECT_EQ(rFactor, (Values{2.0, 0.0, 3.0, 5.0}));
}

TEST(FitKernels, endWithThoseForEveryProcessor) {
    EXPECT_EQ(runnableKernels().back(), &commonKernels());
    EXPECT_EQ(runnableKernels().front(), &bestKernels());
}

}  // namespace
}  // namespace velmorak::fitting
