#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "data/FitLoops.h"

namespace velmorak::fitting {
namespace {

using Values = std::vector<double>;

constexpr std::size_t mostPlaces = 41;

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
    for (double& value : made)
        value = random() % 4 == 0 ? odd[random() % odd.size()] : std::normal_distribution<double>(0.0, 3.0)(random);
    return made;
}

/// One NaN is as good as another.
bool areSame(const Values& a, const Values& b) {
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::bit_cast<std::uint64_t>(a[i]) != std::bit_cast<std::uint64_t>(b[i]) &&
            !(std::isnan(a[i]) && std::isnan(b[i])))
            return false;
    return true;
}

std::vector<Op> allOperations() {
    std::vector<Op> all;
    for (int i = 0; i <= static_cast<int>(Op::Choice); ++i)
        all.push_back(static_cast<Op>(i));
    return all;
}

Values performed(const Loops& loops, Op op, const std::vector<Values>& in, std::size_t count) {
    const double* const arrays[3] = {in[0].data(), in[1].data(), in[2].data()};
    Values out(count, 7.0);
    loops.perform(op, arrays, count, out.data());
    return out;
}

/// The weights of the three arguments one behind the other.
Values handed(const Loops& loops, Op op, const std::vector<Values>& in, const Values& result, bool isTouched) {
    const std::size_t count = result.size();
    Values weights(3 * count, 0.25);
    std::uint8_t touched[3] = {isTouched, isTouched, isTouched};
    Chain chain{};
    for (std::size_t k = 0; k < 3; ++k) {
        chain.value[k] = in[k].data();
        chain.weight[k] = weights.data() + k * count;
        chain.isTouched[k] = &touched[k];
    }
    chain.result = result.data();
    chain.outer = in[2].data();
    chain.count = count;
    loops.hand(op, chain);
    return weights;
}

TEST(FitLoops, ofEveryOperationHaveTheSameBitsWithEveryWidth) {
    std::mt19937_64 random(20);
    for (const Loops* wide : runnableLoops())
        for (const Op op : allOperations())
            for (std::size_t count = 1; count <= mostPlaces; ++count) {
                const std::vector<Values> in{drawn(random, count), drawn(random, count), drawn(random, count)};
                const Values result = performed(commonLoops(), op, in, count);
                EXPECT_TRUE(areSame(performed(*wide, op, in, count), result)) << static_cast<int>(op);
                for (const bool isTouched : {false, true})
                    EXPECT_TRUE(areSame(handed(*wide, op, in, result, isTouched),
                                        handed(commonLoops(), op, in, result, isTouched)))
                        << static_cast<int>(op);
            }
}

TEST(FitLoops, ofSumsHaveTheSameBitsWithEveryWidth) {
    std::mt19937_64 random(21);
    for (const Loops* wide : runnableLoops())
        for (std::size_t count = 1; count <= mostPlaces; ++count) {
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

/// A matrix of so many rows and 5 columns, with room behind each column.
Values drawnMatrix(std::mt19937_64& random, std::size_t rows) {
    Values matrix(5 * (rows + rowsBehind));
    for (std::size_t k = 0; k < 5; ++k)
        for (std::size_t i = 0; i < rows; ++i)
            matrix[k * (rows + rowsBehind) + i] = std::normal_distribution<double>()(random);
    return matrix;
}

TEST(FitLoops, rotateWithTheSameBitsWithEveryWidth) {
    std::mt19937_64 random(22);
    for (const Loops* wide : runnableLoops())
        for (std::size_t rows = 5; rows <= mostPlaces; ++rows) {
            Values matrix = drawnMatrix(random, rows);
            Values expected = matrix;
            wide->rotate(matrix.data(), rows, 5, rows + rowsBehind);
            commonLoops().rotate(expected.data(), rows, 5, rows + rowsBehind);
            EXPECT_TRUE(areSame(matrix, expected)) << rows;
        }
}

TEST(FitLoops, rotateKeepsTheAnglesOfColumns) {
    std::mt19937_64 random(23);
    const std::size_t rows = 19;
    const std::size_t stride = rows + rowsBehind;
    const Values before = drawnMatrix(random, rows);
    Values after = before;
    bestLoops().rotate(after.data(), rows, 5, stride);
    for (std::size_t a = 0; a < 5; ++a)
        for (std::size_t b = a; b < 5; ++b) {
            const double wanted = bestLoops().product(&before[a * stride], &before[b * stride], rows);
            EXPECT_NEAR(bestLoops().product(&after[a * stride], &after[b * stride], a + 1), wanted, 1e-13 * rows);
        }
}

TEST(FitLoops, endWithThoseForEveryProcessor) {
    EXPECT_EQ(runnableLoops().back(), &commonLoops());
    EXPECT_EQ(runnableLoops().front(), &bestLoops());
}

}  // namespace
}  // namespace velmorak::fitting
