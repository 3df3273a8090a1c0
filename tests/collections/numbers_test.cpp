#include "KindHarness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace {

using namespace velmorak;
using test::KindHarness;

TEST(Number, givesWhatWasWritten) {
    KindHarness bench("Number");
    bench.set("value", "-12.75").run();
    EXPECT_EQ(bench.number("number"), -12.75);
}

TEST(Number, beginsWithZero) {
    KindHarness bench("Number");
    bench.run();
    EXPECT_EQ(bench.number("number"), 0.0);
}

TEST(Adder, addsWhatIsWrittenAndWhatIsWired) {
    KindHarness bench("Adder");
    bench.set("a", "1.5").wire("b", 2.25).run();
    EXPECT_EQ(bench.number("sum"), 3.75);
}

TEST(Multiplier, multipliesAndBeginsWithOne) {
    KindHarness bench("Multiplier");
    bench.run();
    EXPECT_EQ(bench.number("product"), 1.0);
    bench.wire("a", 0.5).set("b", "-3").run();
    EXPECT_EQ(bench.number("product"), -1.5);
}

TEST(Adder, nanStaysNan) {
    KindHarness bench("Adder");
    bench.wire("a", std::nan("")).run();
    EXPECT_TRUE(std::isnan(bench.number("sum")));
}

TEST(Text, givesWhatWasWritten) {
    KindHarness bench("Text");
    bench.set("value", " two\nlines \"é\"").run();
    EXPECT_EQ(bench.text("text"), " two\nlines \"é\"");
}

TEST(Subtractor, takesTheSecondFromTheFirst) {
    KindHarness bench("Subtractor");
    bench.wire("a", 1.5).set("b", "4").run();
    EXPECT_EQ(bench.number("difference"), -2.5);
}

TEST(Divider, dividesTheFirstByTheSecond) {
    KindHarness bench("Divider");
    bench.run();
    EXPECT_EQ(bench.number("quotient"), 1.0);
    bench.wire("a", 1.0).set("b", "4").run();
    EXPECT_EQ(bench.number("quotient"), 0.25);
    bench.set("b", "0").run();
    EXPECT_EQ(bench.number("quotient"), std::numeric_limits<double>::infinity());
    bench.wire("a", 0.0).run();
    EXPECT_TRUE(std::isnan(bench.number("quotient")));
}

TEST(Function, hasAnInputForEachName) {
    KindHarness bench("Function");
    bench.set("expression", "passed / all * (1 - passed / all)");
    ASSERT_EQ(bench.ports().inputs.size(), 3U);
    EXPECT_EQ(bench.ports().inputs[1].name, "passed");
    EXPECT_EQ(bench.ports().inputs[2].name, "all");
    bench.wire("passed", 1.0).set("all", "4").run();
    EXPECT_EQ(bench.number("value"), 0.1875);
}

TEST(Function, givesANumberForWholesAndTruths) {
    KindHarness bench("Function");
    bench.set("expression", "7 % 4").run();
    EXPECT_EQ(bench.number("value"), 3.0);
    bench.set("expression", "pi > 3").run();
    EXPECT_EQ(bench.number("value"), 1.0);
    bench.set("expression", "a / 0").set("a", "-1").run();
    EXPECT_EQ(bench.number("value"), -std::numeric_limits<double>::infinity());
}

TEST(Function, saysWhatIsMissingOrNoNumber) {
    KindHarness bench("Function");
    EXPECT_TRUE(bench.failure().starts_with("expression: ")) << bench.failure();
    EXPECT_EQ(bench.set("expression", "1 + a").failure(),
              "expression: there is no number \"a\" at an input of that name\n  1 + a\n      ^");
    EXPECT_NE(bench.set("expression", "expression + 1").failure().find("no number can have the name"),
              std::string::npos);
    EXPECT_NE(bench.set("expression", "'text'").failure().find("is a text"), std::string::npos);
    EXPECT_NE(bench.set("expression", "9223372036854775807 + 1").failure().find("no integer can hold"),
              std::string::npos);
    EXPECT_NE(bench.kind().refusal("expression", "1 +"), "");
}

/// Two numbers with errors of 0.2 and 0.3 and a covariance of -0.03.
std::vector<NumberWithError> fitted(double a, double b) {
    return numbersWithErrors({a, b}, {.origin = "fit", .names = {"a", "b"}, .elements = {0.04, -0.03, -0.03, 0.09}});
}

NumberWithError measured(const std::string& origin, double value, double error) {
    return numbersWithErrors({value}, {.origin = origin, .names = {"x"}, .elements = {error * error}}).front();
}

NumberWithError valueOf(const std::string& expression, const std::map<std::string, NumberWithError>& numbers) {
    KindHarness bench("Function");
    bench.set("expression", expression);
    for (const auto& [name, number] : numbers) {
        bench.wire(name, number);
    }
    bench.run();
    EXPECT_EQ(bench.number("error"), bench.numberWithError("value").error()) << expression;
    return bench.numberWithError("value");
}

TEST(Measurement, givesWhatWasWrittenAsOneNumber) {
    KindHarness bench("Measurement");
    bench.set("value", "35.9").set("error", "0.9").run();
    EXPECT_EQ(bench.number("number"), 35.9);
    EXPECT_EQ(bench.numberWithError("number").error(), 0.9);
    bench.set("error", "0").run();
    EXPECT_TRUE(std::holds_alternative<double>(bench.value("number")));
}

TEST(Measurement, isIndependentOfOthers) {
    const auto made = [](const std::string& name) {
        KindHarness bench("Measurement", name);
        bench.set("value", "2").set("error", "1").run();
        return bench.numberWithError("number");
    };
    EXPECT_NEAR(valueOf("a - b", {{"a", made("one")}, {"b", made("other")}}).error(), std::sqrt(2.0), 1e-13);
    EXPECT_NEAR(valueOf("a - b", {{"a", made("one")}, {"b", made("one")}}).error(), 0.0, 1e-13);
}

TEST(Function, ofExactNumbersHasNoError) {
    KindHarness bench("Function");
    bench.set("expression", "a + 1").wire("a", 2.0).run();
    EXPECT_FALSE(bench.numberWithError("value").hasError());
    EXPECT_EQ(bench.number("error"), 0.0);
}

TEST(Function, givesTheErrorFromTheCovarianceOfItsFit) {
    const auto numbers = fitted(2.0, 5.0);
    const std::map<std::string, NumberWithError> inputs{{"a", numbers[0]}, {"b", numbers[1]}};
    EXPECT_NEAR(valueOf("a + b", inputs).error(), std::sqrt(0.04 + 0.09 - 2 * 0.03), 1e-13);
    EXPECT_NEAR(valueOf("a - b", inputs).error(), std::sqrt(0.04 + 0.09 + 2 * 0.03), 1e-13);
    EXPECT_NEAR(valueOf("a * b", inputs).error(), std::sqrt(25 * 0.04 + 4 * 0.09 - 2 * 10 * 0.03), 1e-12);
    EXPECT_NEAR(valueOf("3 * a + offset", {{"a", numbers[0]}, {"offset", NumberWithError(7.0)}}).error(), 0.6, 1e-13);
}

TEST(Function, takesNumbersOfDifferentFitsAsIndependent) {
    const NumberWithError sum = valueOf("a + b", {{"a", measured("one", 1, 3)}, {"b", measured("other", 1, 4)}});
    EXPECT_NEAR(sum.error(), 5.0, 1e-12);
}

TEST(Function, ofAFunctionKeepsTheCorrelation) {
    const auto numbers = fitted(2.0, 5.0);
    const NumberWithError product = valueOf("a * b", {{"a", numbers[0]}, {"b", numbers[1]}});
    EXPECT_NEAR(valueOf("p / a", {{"p", product}, {"a", numbers[0]}}).error(), 0.3, 1e-12) << "it is b";
    EXPECT_NEAR(valueOf("p / q", {{"p", product}, {"q", product}}).error(), 0.0, 1e-12);
}

TEST(Function, chainsWithSumsDifferencesProductsAndQuotients) {
    const auto numbers = fitted(2.0, 5.0);
    const auto result = [&](const std::string& kind, const std::string& output, NumberWithError a, NumberWithError b) {
        KindHarness bench(kind);
        bench.wire("a", std::move(a)).wire("b", std::move(b)).run();
        return bench.numberWithError(output);
    };
    const NumberWithError product = result("Multiplier", "product", numbers[0], numbers[1]);
    EXPECT_NEAR(result("Divider", "quotient", product, numbers[0]).error(), 0.3, 1e-15);
    EXPECT_NEAR(product.error(), std::sqrt(25 * 0.04 + 4 * 0.09 - 2 * 10 * 0.03), 1e-15);
    const NumberWithError sum = result("Adder", "sum", numbers[0], numbers[1]);
    EXPECT_NEAR(result("Subtractor", "difference", sum, numbers[1]).error(), 0.2, 1e-15);
    EXPECT_FALSE(result("Adder", "sum", NumberWithError(1.0), NumberWithError(2.0)).error() > 0.0);
}

/// Derivatives in closed form, also where the error is far smaller or larger than the number.
TEST(Function, hasTheDerivativesOfItsExpression) {
    struct Case {
        std::string expression;
        double x;
        double error;
        double derivative;
    };
    const double pi = std::acos(-1.0);
    const std::vector<Case> cases{
        {"exp(x)", 1.5, 0.1, std::exp(1.5)},
        {"exp(-x / 2)", 700.0, 1.0, -0.5 * std::exp(-350.0)},
        {"log(x)", 1e-6, 1e-8, 1e6},
        {"log(x)", 1e-3, 1.0, 1e3},
        {"sqrt(x)", 2.0, 0.5, 0.5 / std::sqrt(2.0)},
        {"sqrt(x)", 0.01, 0.5, 5.0},
        {"1 / x", -1e-8, 1e-9, -1e16},
        {"x^5", 91.2, 0.01, 5 * std::pow(91.2, 4)},
        {"x^5", 1e60, 1e59, 5e240},
        {"sin(x)", 1000.0, 0.01, std::cos(1000.0)},
        {"sin(x)", 1000.0, 100.0, std::cos(1000.0)},
        {"sin(x)", 0.0, 0.01, 1.0},
        {"tanh(50 * x)", 0.01, 0.2, 50 / std::pow(std::cosh(0.5), 2)},
        {"atan2(x, 2)", 1.0, 0.1, 0.4},
        {"x^2", 0.0, 1.0, 0.0},
        {"x * 1e-300", 3.0, 0.5, 1e-300},
        {"x", 1e-150, 1e-151, 1.0},
        {"x + 1e6", 1.0, 0.1, 1.0},
        {"max(x, 0)", 1.0, 2.0, 1.0},
        {"x > 1", 3.0, 0.5, 0.0},
        {"abs(x)", -3.0, 0.5, -1.0},
        {"abs(x)", 0.0, 0.5, 0.0},
        {"floor(x)", 0.5, 0.5, 0.0},
        {"x^3", 0.0, 0.5, 0.0},
        {"x - floor(x)", 0.5, 3.0, 1.0},
        {"(x + 1e6) - 1e6", 1.0, 0.5, 1.0},
        {"erf(x / sqrt(2))", 1.0, 0.1, std::sqrt(2 / pi) * std::exp(-0.5)},
    };
    for (const Case& each : cases) {
        const double error = valueOf(each.expression, {{"x", measured("fit", each.x, each.error)}}).error();
        const double wanted = std::abs(each.derivative) * each.error;
        EXPECT_NEAR(error, wanted, 1e-9 * wanted) << each.expression << " at " << each.x;
    }
}

TEST(Function, saysThatTheErrorIsUnknownWhereThereIsNoDerivative) {
    for (const std::string expression : {"sqrt(x)", "x > 0", "floor(x)"}) {
        KindHarness bench("Function");
        bench.set("expression", expression).wire("x", measured("fit", 0.0, 0.5)).expectWarnings().run();
        EXPECT_EQ(bench.number("value"), 0.0);
        EXPECT_TRUE(std::isnan(bench.number("error"))) << expression;
        ASSERT_EQ(bench.warnings().size(), 1U) << expression;
        EXPECT_EQ(bench.warnings()[0],
                  "the error of the value is unknown, because the expression has no finite derivative by \"x\" at 0");
    }
}

}  // namespace
