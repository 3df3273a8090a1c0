#include <velmorak/Fit.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <random>

#include <velmorak/Failure.h>

namespace velmorak {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

struct Answer {
    std::optional<FitResult> result;
    std::string refusal;
};

Answer fittedCrystalBall(const FitData& data, FitOptions::Method method) {
    FitOptions options;
    options.method = method;
    try {
        return {fit(FitModel("crystalball"), data, options), ""};
    } catch (const Failure& failure) {
        return {std::nullopt, failure.what()};
    }
}

/// Counts of a Gauss peak, so that nothing tells where a tail begins and how steep it is.
FitData peakWithoutTail(unsigned seed) {
    constexpr std::size_t count = 100;
    constexpr double low = 88.5;
    constexpr double width = (100.0 - low) / count;
    std::mt19937 random(seed);
    FitData data;
    for (std::size_t i = 0; i < count; ++i) {
        const double begin = low + width * static_cast<double>(i);
        const double expected = 1000.0 * std::exp(-0.5 * std::pow((begin + 0.5 * width - 91.0) / 1.5, 2));
        const double y = std::poisson_distribution<int>(expected)(random);
        data.entries.push_back({begin, begin + width, y, std::sqrt(std::max(1.0, y))});
    }
    return data;
}

/// Changes every number in its last place.
FitData rounded(FitData data) {
    for (std::size_t i = 0; i < data.entries.size(); ++i) {
        data.entries[i].error *= 1.0 + (static_cast<double>(i % 3) - 1.0) * 3e-16;
    }
    return data;
}

void expectAlike(const FitResult& a, const FitResult& b, unsigned seed) {
    for (std::size_t i = 0; i < a.values.size(); ++i) {
        EXPECT_NEAR(a.values[i], b.values[i], 1e-3 * a.errors[i]) << "seed " << seed << ", parameter " << i;
        EXPECT_NEAR(a.errors[i] / b.errors[i], 1.0, 0.01) << "seed " << seed << ", parameter " << i;
    }
}

TEST(DegenerateFit, ofACrystalBallWithoutATailIsStableOrNamesTheParametersOfTheTail) {
    int refused = 0;
    for (unsigned seed = 0; seed < 120; ++seed) {
        const FitData data = peakWithoutTail(seed);
        for (const auto method : {FitOptions::Method::ChiSquare, FitOptions::Method::Likelihood}) {
            const Answer answer = fittedCrystalBall(data, method);
            const Answer again = fittedCrystalBall(rounded(data), method);
            if (!answer.result) {
                ++refused;
                EXPECT_THAT(answer.refusal, AnyOf(HasSubstr("\"alpha\""), HasSubstr("\"n\"")));
            } else if (again.result) {
                expectAlike(*answer.result, *again.result, seed);
            }
        }
    }
    EXPECT_GT(refused, 20);
}

TEST(DegenerateFit, isDoneWithTheTailFixed) {
    FitOptions options;
    options.parameters = readFitParameters("alpha=5 fixed, n=3 fixed");
    const FitResult result = fit(FitModel("crystalball"), peakWithoutTail(53), options);
    EXPECT_NEAR(result.values[1], 91.0, 4.0 * result.errors[1]);
    EXPECT_NEAR(result.values[2], 1.5, 4.0 * result.errors[2]);
}

}  // namespace
}  // namespace velmorak
