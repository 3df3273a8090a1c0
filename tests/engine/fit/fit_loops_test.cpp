#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "fit/Loops.h"

namespace velmorak::fitting {
namespace {

using Values = std::vector<double>;

constexpr std::size_t maxPlaces = 41;

/// Numbers of every size, among them those that need care.
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

/// One NaN is as good as another.
bool areSame(const Values& a, const Values& b) {
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::bit_cast<std::uint64_t>(a[i]) != std::bit_cast<std::uint64_t>(b[i]) &&
            !(std::isnan(a[i]) && std::isnan(b[i]))) {
            return false;
        }
    }
    return true;
}

std::vector<Op> allOperations() {
    std::vector<Op> all;
    for (int i = 0; i <= static_cast<int>(Op::Choice); ++i) {
        all.push_back(static_cast<Op>(i));
    }
    return all;
}

Values performed(const Loops& loops, Op op, const std::vector<Values>& in, std::size_t count) {
    const double* const arrays[3] = {in[0].data(), in[1].data(), in[2].data()};
    Values out(count, 7.0);
    loops.perform(op, arrays, count, out.data());
    return out;
}

/// The weights of the three arguments one behind the other.
Values handed(const Loops& loops, Op op, const std::vector<Values>& in, const Values& result, bool hasAdjoint) {
    const std::size_t count = result.size();
    Values weights(3 * count, 0.25);
    std::uint8_t touched[3] = {hasAdjoint, hasAdjoint, hasAdjoint};
    AdjointStep chain{};
    for (std::size_t k = 0; k < 3; ++k) {
        chain.value[k] = in[k].data();
        chain.weight[k] = weights.data() + k * count;
        chain.hasAdjoint[k] = &touched[k];
    }
    chain.result = result.data();
    chain.outer = in[2].data();
    chain.count = count;
    loops.backward(op, chain);
    return weights;
}

TEST(FitLoops, ofEveryOperationHaveTheSameBitsWithEveryWidth) {
    std::mt19937_64 random(20);
    for (const Loops* wide : runnableLoops()) {
        for (const Op op : allOperations()) {
            for (std::size_t count = 1; count <= maxPlaces; ++count) {
                const std::vector<Values> in{drawn(random, count), drawn(random, count), drawn(random, count)};
                const Values result = performed(commonLoops(), op, in, count);
                EXPECT_TRUE(areSame(performed(*wide, op, in, count), result)) << static_cast<int>(op);
                for (const bool hasAdjoint : {false, true}) {
                    EXPECT_TRUE(areSame(handed(*wide, op, in, result, hasAdjoint),
                                        handed(commonLoops(), op, in, result, hasAdjoint)))
                        << static_cast<int>(op);
                }
            }
        }
    }
}

TEST(FitLoops, ofSumsHaveTheSameBitsWithEveryWidth) {
    std::mt19937_64 random(21);
    for (const Loops* wide : runnableLoops()) {
        for (std::size_t count = 1; count <= maxPlaces; ++count) {
            const Values a = drawn(random, count);
            const Values b = drawn(random, count);
            EXPECT_TRUE(areSame({wide->product(a.data(), b.data(), count)},
                                {commonLoops().product(a.data(), b.data(), count)}));
            for (const bool isFirst : {false, true}) {
                Values sum(count, 0.5);
                Values expected(count, 0.5);
                wide->addScaled(a.data(), b.data(), count, isFirst, sum.data());
                commonLoops().addScaled(a.data(), b.data(), count, isFirst, expected.data());
                EXPECT_TRUE(areSame(sum, expected));
            }
        }
    }
}

/// Columns of so many rows, with room behind each, which holds anything.
struct Matrix {
    static constexpr std::size_t columns = 5;
    std::size_t stride;
    Values rows;
    Values rFactor = Values(columns * columns, 0.0);

    Matrix(std::mt19937_64& random, std::size_t count) : stride(count + foldedRows), rows(columns * stride, NAN) {
        for (std::size_t k = 0; k < columns; ++k) {
            for (std::size_t i = 0; i < count; ++i) {
                rows[k * stride + i] = std::normal_distribution<double>()(random);
            }
        }
    }

    void householderUpdate(const Loops& loops, std::size_t count) {
        loops.householderUpdate(rFactor.data(), columns, rows.data(), stride, count);
    }
};

TEST(FitLoops, foldRowsWithTheSameBitsWithEveryWidth) {
    std::mt19937_64 random(22);
    for (const Loops* wide : runnableLoops()) {
        for (std::size_t count = 1; count <= maxPlaces; ++count) {
            Matrix matrix(random, count);
            Matrix expected = matrix;
            matrix.householderUpdate(*wide, count);
            expected.householderUpdate(commonLoops(), count);
            EXPECT_TRUE(areSame(matrix.rFactor, expected.rFactor)) << count;
        }
    }
}

TEST(FitLoops, foldRowsSoThatColumnsKeepTheirAngles) {
    std::mt19937_64 random(23);
    const std::size_t count = 19;
    Matrix first(random, count);
    Matrix second(random, count);
    const Matrix both[2] = {first, second};
    first.householderUpdate(bestLoops(), count);
    second.rFactor = first.rFactor;
    second.householderUpdate(bestLoops(), count);
    for (std::size_t a = 0; a < Matrix::columns; ++a) {
        for (std::size_t b = a; b < Matrix::columns; ++b) {
            double wanted = 0.0;
            for (const Matrix& part : both) {
                wanted += bestLoops().product(&part.rows[a * part.stride], &part.rows[b * part.stride], count);
            }
            const double* const rFactor = second.rFactor.data();
            EXPECT_NEAR(bestLoops().product(rFactor + a * Matrix::columns, rFactor + b * Matrix::columns, a + 1),
                        wanted, 1e-12);
        }
    }
}

TEST(FitLoops, foldRowsOfZerosWithoutATrace) {
    Values rFactor{2.0, 0.0, 3.0, 5.0};
    Values rows(2 * foldedRows, 0.0);
    bestLoops().householderUpdate(rFactor.data(), 2, rows.data(), foldedRows, 3);
    EXPECT_EQ(rFactor, (Values{2.0, 0.0, 3.0, 5.0}));
}

TEST(FitLoops, endWithThoseForEveryProcessor) {
    EXPECT_EQ(runnableLoops().back(), &commonLoops());
    EXPECT_EQ(runnableLoops().front(), &bestLoops());
}

}  // namespace
}  // namespace velmorak::fitting
