#include "expression/simd/SimdKernels.h"

#include "RandomColumns.h"

#include <gtest/gtest.h>

#include <cstring>

namespace velmorak {
namespace {

/// Both kernels on random values, of which there are so many that every length of a last piece comes up.
void expectSameResults(const expression::SimdKernel& wide, const expression::Function& function,
                       std::mt19937_64& random) {
    const bool isOfReals = wide.type == ColumnType::Real;
    const expression::Kernel common = isOfReals ? function.forReals : function.forBooleans;
    const bool givesTruths = !isOfReals || function.rule == expression::Rule::Comparison;
    for (std::size_t rows = 1; rows < 150; ++rows) {
        const std::vector<Column::Reals> in = randomColumns(random, rows);
        Column::Reals out(rows);
        expression::KernelArgs lane{out.data(), {in[0].data(), in[1].data(), in[2].data()}, nullptr, rows};
        wide.kernel(lane);
        Column::Reals expected(rows);
        lane.out = expected.data();
        common(lane);
        if (givesTruths) {
            ASSERT_EQ(std::memcmp(out.data(), expected.data(), rows), 0) << wide.name;
            continue;
        }
        for (std::size_t row = 0; row < rows; ++row) {
            ASSERT_TRUE(isSame(out[row], expected[row]))
                << wide.name << " of " << in[0][row] << ", " << in[1][row] << ", " << in[2][row];
        }
    }
}

TEST(SimdKernels, haveTheBitsOfTheScalarOnes) {
    const std::vector<expression::SimdKernels> runnable = expression::runnableKernels();
    if (runnable.empty()) {
        GTEST_SKIP() << "no AVX2";
    }
    std::mt19937_64 random(seed());
    for (const expression::SimdKernels& kernels : runnable) {
        for (const expression::SimdKernel& wide : kernels) {
            expectSameResults(wide, *expression::findFunction(wide.name), random);
        }
    }
}

/// The adjoints of the three arguments, one after the other.
Column::Reals propagated(expression::ReverseKernel reverse, const std::vector<Column::Reals>& in,
                         const Column::Reals& result, bool hasAdjoint) {
    const std::size_t rows = result.size();
    Column::Reals adjoints(3 * rows, 0.25);
    std::uint8_t flags[3] = {hasAdjoint, hasAdjoint, hasAdjoint};
    expression::AdjointStep step{};
    for (std::size_t k = 0; k < 3; ++k) {
        step.value[k] = in[k].data();
        step.adjoint[k] = adjoints.data() + k * rows;
        step.hasAdjoint[k] = &flags[k];
    }
    step.result = result.data();
    step.resultAdjoint = in[2].data();
    step.count = rows;
    reverse(step);
    return adjoints;
}

void expectSameDerivatives(const expression::SimdKernel& wide, std::mt19937_64& random) {
    const expression::Function& function = *expression::findFunction(wide.name);
    for (std::size_t rows = 1; rows < 42; ++rows) {
        const std::vector<Column::Reals> in = randomColumns(random, rows);
        Column::Reals result(rows);
        function.forReals({result.data(), {in[0].data(), in[1].data(), in[2].data()}, nullptr, rows});
        for (const bool hasAdjoint : {false, true}) {
            const Column::Reals adjoints = propagated(wide.reverse, in, result, hasAdjoint);
            const Column::Reals expected = propagated(function.reverse, in, result, hasAdjoint);
            for (std::size_t i = 0; i < adjoints.size(); ++i) {
                ASSERT_TRUE(isSame(adjoints[i], expected[i])) << wide.name;
            }
        }
    }
}

TEST(SimdKernels, haveTheBitsOfTheScalarDerivatives) {
    std::mt19937_64 random(seed());
    for (const expression::SimdKernels& kernels : expression::runnableKernels()) {
        for (const expression::SimdKernel& wide : kernels) {
            if (wide.reverse) {
                expectSameDerivatives(wide, random);
            }
        }
    }
}

}  // namespace
}  // namespace velmorak
