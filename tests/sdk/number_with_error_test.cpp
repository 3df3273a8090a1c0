#include <velmorak/NumberWithError.h>
#include <velmorak/Value.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace velmorak {
namespace {

/// Two numbers with the errors 2 and 3 and the correlation 0.5.
std::vector<NumberWithError> pairOf(const std::string& origin) {
    return numbersWithErrors({10.0, 20.0}, {.origin = origin, .names = {"a", "b"}, .elements = {4.0, 3.0, 3.0, 9.0}});
}

NumberWithError sumOf(const NumberWithError& one, const NumberWithError& other) {
    return withPropagatedError(one.value() + other.value(), {{one, 1.0}, {other, 1.0}});
}

NumberWithError differenceOf(const NumberWithError& one, const NumberWithError& other) {
    return withPropagatedError(one.value() - other.value(), {{one, 1.0}, {other, -1.0}});
}

TEST(NumberWithError, hasTheErrorOfItsMatrix) {
    const auto numbers = pairOf("fit");
    EXPECT_EQ(numbers[0].value(), 10.0);
    EXPECT_EQ(numbers[0].error(), 2.0);
    EXPECT_EQ(numbers[1].error(), 3.0);
    EXPECT_EQ(covarianceOf(numbers[0], numbers[1]), 3.0);
}

TEST(NumberWithError, withoutAMatrixHasNoError) {
    const NumberWithError exact(5.0);
    EXPECT_FALSE(exact.hasError());
    EXPECT_EQ(exact.error(), 0.0);
    EXPECT_EQ(sumOf(exact, pairOf("fit")[0]).error(), 2.0);
}

TEST(WithPropagatedError, usesTheCorrelationOfNumbersOfOneOrigin) {
    const auto numbers = pairOf("fit");
    EXPECT_EQ(sumOf(numbers[0], numbers[1]).error(), std::sqrt(4.0 + 9.0 + 2.0 * 3.0));
    EXPECT_EQ(differenceOf(numbers[0], numbers[1]).error(), std::sqrt(4.0 + 9.0 - 2.0 * 3.0));
}

TEST(WithPropagatedError, takesNumbersOfDifferentOriginsAsIndependent) {
    const NumberWithError one = pairOf("one")[0];
    const NumberWithError other = pairOf("other")[0];
    EXPECT_EQ(sumOf(one, other).error(), std::sqrt(8.0));
    EXPECT_EQ(covarianceOf(one, other), 0.0);
}

TEST(WithPropagatedError, keepsTheCorrelationThroughAChain) {
    const auto numbers = pairOf("fit");
    const NumberWithError sum = sumOf(numbers[0], numbers[1]);
    EXPECT_EQ(differenceOf(sum, numbers[1]).error(), 2.0) << "(a + b) - b is a";
    EXPECT_EQ(differenceOf(sum, sum).error(), 0.0);
    EXPECT_EQ(covarianceOf(sum, numbers[0]), 7.0);
}

TEST(WithPropagatedError, takesEqualMatricesForOne) {
    EXPECT_EQ(differenceOf(pairOf("fit")[0], pairOf("fit")[0]).error(), 0.0);
}

TEST(WithPropagatedError, isNaNWhereADerivativeIs) {
    const NumberWithError number = pairOf("fit")[0];
    EXPECT_TRUE(std::isnan(withPropagatedError(1.0, {{number, std::nan("")}}).error()));
}

TEST(NumberWithError, aDerivativeOfZeroHidesAnUnusableElement) {
    const double nan = std::nan("");
    const auto numbers =
        numbersWithErrors({1.0, 2.0}, {.origin = "fit", .names = {"a", "b"}, .elements = {4.0, nan, nan, nan}});
    EXPECT_EQ(numbers[0].error(), 2.0);
    EXPECT_TRUE(std::isnan(numbers[1].error()));
}

TEST(NumberWithError, aVarianceBelowZeroByRoundingGivesNoNaN) {
    const double a = 0.1;
    const double b = 0.3;
    const auto numbers =
        numbersWithErrors({1.0, 1.0}, {.origin = "fit", .names = {"a", "b"}, .elements = {a * a, a * b, a * b, b * b}});
    const double error = withPropagatedError(0.0, {{numbers[0], b}, {numbers[1], -a}}).error();
    EXPECT_GE(error, 0.0);
    EXPECT_LT(error, 1e-8);
}

TEST(NumberWithError, derivativesOfAnySizeHaveAnError) {
    const NumberWithError number = pairOf("fit")[0];
    for (const double derivative : {1e-300, 1e-160, 1.0, 1e160, 1e300}) {
        EXPECT_EQ(withPropagatedError(0.0, {{number, derivative}}).error(), 2.0 * derivative);
    }
}

TEST(NumberWithError, refusesSizesThatDoNotAgree) {
    EXPECT_THROW(numbersWithErrors({1.0}, {.origin = "fit", .names = {"a", "b"}, .elements = {1, 0, 0, 1}}),
                 std::invalid_argument);
    EXPECT_THROW(numbersWithErrors({1.0}, {.origin = "fit", .names = {"a"}, .elements = {1, 2}}),
                 std::invalid_argument);
    EXPECT_THROW(NumberWithError(1.0, {{nullptr, {1.0}}}), std::invalid_argument);
}

TEST(NumberIn, findsNumbersWithAndWithoutAnError) {
    EXPECT_EQ(numberIn(Value(2.5)).value().value(), 2.5);
    EXPECT_EQ(numberIn(Value(pairOf("fit")[0])).value().error(), 2.0);
    EXPECT_FALSE(numberIn(Value(std::string("2.5"))));
    EXPECT_FALSE(numberIn(Value()));
}

}  // namespace
}  // namespace velmorak
