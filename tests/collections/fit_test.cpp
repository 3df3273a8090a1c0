#include <velmorak/Fit.h>
#include <velmorak/FunctionObject.h>
#include <velmorak/FunctionValues.h>
#include <velmorak/Histogram.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>

#include "KindHarness.h"

namespace {

using namespace velmorak;
using test::KindHarness;
using testing::ElementsAre;
using testing::HasSubstr;

/// Twenty fills in three bins of width 2 and an empty one: 4, 8, 8, 0.
Value counts(double weight = 1.0) {
    auto made = std::make_shared<Histogram1D>(Axis(4, 0.0, 8.0));
    for (int i = 0; i < 20; ++i) {
        made->fill(i < 4 ? 1.0 : i < 12 ? 3.0 : 5.0, weight);
    }
    return DataObjectPtr(std::move(made));
}

/// y = 1 + 2 x, with errors that differ upwards and downwards.
Value line() {
    std::vector<Measurement> all;
    for (const double x : {0.0, 1.0, 2.0, 4.0}) {
        all.push_back({x, 0.0, 0.0});
        all.push_back({1.0 + 2.0 * x, 0.3, 0.1});
    }
    return DataObjectPtr(std::make_shared<Points>(2, all));
}

/// Parabolic values in ten bins, four fills each.
Value profile() {
    auto made = std::make_shared<Profile1D>(Grid<1>({Axis(10, 0.0, 10.0)}));
    for (int bin = 0; bin < 9; ++bin) {
        for (const double shift : {-1.0, 1.0, -2.0, 2.0}) {
            const double x = bin + 0.5;
            made->fill({x}, 3.0 + 0.5 * x * x + shift);
        }
    }
    return DataObjectPtr(std::move(made));
}

std::vector<std::string> outputNames(const KindHarness& fit) {
    std::vector<std::string> names;
    for (const OutputSpec& output : fit.ports().outputs) {
        names.push_back(output.name);
    }
    return names;
}

/// A Gaussian peak of height 100, mean 5 and sigma 1 in bins of width 0.25.
Value peak() {
    auto made = std::make_shared<Histogram1D>(Axis(40, 0.0, 10.0));
    for (int bin = 0; bin < 40; ++bin) {
        const double x = 0.125 + 0.25 * bin;
        const int height = static_cast<int>(std::lround(100.0 * std::exp(-0.5 * (x - 5.0) * (x - 5.0))));
        for (int i = 0; i < height; ++i) {
            made->fill(x);
        }
    }
    return DataObjectPtr(std::move(made));
}

TEST(FitKind, givesItsParametersWithErrorsAndCovariance) {
    KindHarness fit("Fit", "peak");
    fit.wire("data", peak()).set("method", "likelihood").run();
    const NumberWithError amplitude = fit.numberWithError("amplitude");
    const NumberWithError sigma = fit.numberWithError("sigma");
    EXPECT_NEAR(amplitude.error() / fit.number("amplitude_error"), 1.0, 1e-15);
    ASSERT_EQ(amplitude.terms().size(), 1U);
    EXPECT_EQ(amplitude.terms()[0].covariance->origin, "peak");
    EXPECT_THAT(amplitude.terms()[0].covariance->names, ElementsAre("amplitude", "mean", "sigma"));
    EXPECT_THAT(fit.text("covariance"), HasSubstr("," + textOf(covarianceOf(amplitude, sigma)) + "\n"));
    EXPECT_LT(covarianceOf(amplitude, sigma), 0.0);
}

TEST(FitKind, itsParametersGiveAYieldWithAnError) {
    KindHarness fit("Fit", "peak");
    fit.wire("data", peak()).set("method", "likelihood").run();
    const NumberWithError amplitude = fit.numberWithError("amplitude");
    const NumberWithError sigma = fit.numberWithError("sigma");
    KindHarness yield("Function");
    yield.set("expression", "amplitude * sigma * sqrt(2*pi) / width").set("width", "0.25");
    yield.wire("amplitude", amplitude).wire("sigma", sigma).run();
    const double entries = yield.number("value");
    const double parts = std::pow(amplitude.error() / amplitude.value(), 2) +
                         std::pow(sigma.error() / sigma.value(), 2) +
                         2.0 * covarianceOf(amplitude, sigma) / amplitude.value() / sigma.value();
    EXPECT_NEAR(entries, 1000.0, 1e-2);
    EXPECT_NEAR(yield.number("error") / (entries * std::sqrt(parts)), 1.0, 1e-10);
    EXPECT_NEAR(yield.number("error") / std::sqrt(entries), 1.0, 1e-3) << "the error of counts without background";
}

TEST(FitKind, aFixedParameterHasNoError) {
    KindHarness fit("Fit");
    fit.wire("data", peak()).set("method", "likelihood").set("start", "mean=5 fixed").run();
    EXPECT_TRUE(std::holds_alternative<double>(fit.value("mean")));
    EXPECT_TRUE(std::holds_alternative<NumberWithError>(fit.value("sigma")));
}

/// The fit has one point more, and one parameter, which is 0.
TEST(PValue, hasTheSameBitsInAFitAndInAComparison) {
    for (int pairs = 1; pairs <= 20; ++pairs) {
        auto first = std::make_shared<Histogram1D>(Axis(static_cast<std::size_t>(2 * pairs), 0.0, 2.0 * pairs));
        auto second = std::make_shared<Histogram1D>(first->axis());
        std::vector<Measurement> points{{-1.0, 0.0, 0.0}, {0.0, 1.0, 1.0}};
        for (int bin = 0; bin < 2 * pairs; ++bin) {
            for (int i = 0; i < 4; ++i) {
                (i == 0 || (i < 3 && bin % 2 == 0) ? first : second)->fill(bin + 0.5);
            }
            points.push_back({static_cast<double>(bin), 0.0, 0.0});
            points.push_back({bin % 2 == 0 ? 1.0 : -1.0, 1.0, 1.0});
        }
        KindHarness comparison("Compare");
        comparison.set("test", "heights")
            .wire("first", DataObjectPtr(first))
            .wire("second", DataObjectPtr(second))
            .run();
        KindHarness fit("Fit");
        fit.set("model", "pol0").wire("data", DataObjectPtr(std::make_shared<Points>(2, points))).run();
        ASSERT_EQ(fit.number("chi2"), comparison.number("chisquare"));
        ASSERT_EQ(fit.number("ndf"), comparison.number("ndf"));
        EXPECT_EQ(std::bit_cast<std::uint64_t>(fit.number("p_value")),
                  std::bit_cast<std::uint64_t>(comparison.number("probability")));
        EXPECT_EQ(fit.number("p_value"), chiSquareProbability(2.0 * pairs, 2.0 * pairs));
        const auto function = fit.object<FunctionObject>("function");
        EXPECT_THAT(function->annotation,
                    testing::Contains(AnnotationItem{"p_value", textOf(comparison.number("probability")), false}));
    }
}

TEST(FitKind, hasAnOutputForEachParameterAndItsError) {
    KindHarness fit("Fit");
    EXPECT_THAT(outputNames(fit),
                ElementsAre("function", "chi2", "ndf", "reduced", "p_value", "entries", "status", "covariance",
                            "amplitude", "amplitude_error", "mean", "mean_error", "sigma", "sigma_error"));
    fit.set("model", "a*x + b");
    EXPECT_EQ(outputNames(fit).size(), 12U);
    EXPECT_EQ(outputNames(fit)[8], "a");
    fit.set("model", "a*");
    EXPECT_EQ(outputNames(fit).size(), 8U);
}

/// Weighted mean of 4 ± 2, 8 ± root 8, 8 ± root 8.
TEST(FitKind, fitsAHistogramByChiSquareWithoutItsEmptyBins) {
    KindHarness fit("Fit", "level");
    fit.wire("data", counts()).set("model", "pol0").expectWarnings().run();
    const double weights = 1.0 / 4 + 2.0 / 8;
    EXPECT_NEAR(fit.number("p0"), 3.0 / weights, 1e-13);
    EXPECT_NEAR(fit.number("p0_error"), 1.0 / std::sqrt(weights), 1e-9);
    EXPECT_NEAR(fit.number("chi2"), (4 - 6) * (4 - 6) / 4.0 + 2 * 4 / 8.0, 1e-13);
    EXPECT_EQ(fit.number("ndf"), 2.0);
    EXPECT_NEAR(fit.number("reduced"), 1.0, 1e-13);
    EXPECT_NEAR(fit.number("p_value"), std::exp(-1.0), 1e-13);
    EXPECT_EQ(fit.number("entries"), 3.0);
    EXPECT_EQ(fit.text("status"), "converged");
    EXPECT_THAT(fit.warnings(), ElementsAre("1 entry without an error, such as empty bins, is left out"));
}

TEST(FitKind, fitsAHistogramByLikelihoodWithItsEmptyBins) {
    KindHarness fit("Fit");
    fit.wire("data", counts()).set("model", "pol0").set("method", "likelihood").run();
    EXPECT_NEAR(fit.number("p0"), 5.0, 1e-9);
    EXPECT_NEAR(fit.number("p0_error"), std::sqrt(5.0 / 4.0), 1e-4);
    EXPECT_EQ(fit.number("ndf"), 3.0);
    fit.set("compare", "integral").run();
    EXPECT_NEAR(fit.number("p0"), 2.5, 1e-9);
    KindHarness weighted("Fit");
    weighted.wire("data", counts(0.5)).set("model", "pol0").set("method", "likelihood").run();
    EXPECT_NEAR(weighted.number("p0"), 2.5, 1e-9);
    EXPECT_NEAR(weighted.number("p0_error"), 0.5 * std::sqrt(5.0 / 4.0), 1e-4);
}

TEST(FitKind, fitsPointsWithTheMeanOfTheirErrors) {
    KindHarness fit("Fit");
    fit.wire("data", line()).set("model", "a + b*x").set("start", "a=1 fixed").run();
    EXPECT_NEAR(fit.number("b"), 2.0, 1e-13);
    EXPECT_NEAR(fit.number("b_error"), 0.2 / std::sqrt(21.0), 1e-10);
    EXPECT_EQ(fit.number("a"), 1.0);
    EXPECT_EQ(fit.number("a_error"), 0.0);
}

TEST(FitKind, fitsAProfile) {
    KindHarness fit("Fit");
    fit.wire("data", profile()).set("model", "a + c*x^2").expectWarnings().run();
    EXPECT_NEAR(fit.number("a"), 3.0, 1e-12);
    EXPECT_NEAR(fit.number("c"), 0.5, 1e-13);
    EXPECT_EQ(fit.number("entries"), 9.0);
}

TEST(FitKind, givesAFunctionThatSaysHowGoodItIs) {
    KindHarness fit("Fit", "straight");
    fit.wire("data", line()).set("model", "pol1").set("title", "a line").run();
    const auto value = fit.value("function");
    const auto function = std::dynamic_pointer_cast<const FunctionObject>(std::get<DataObjectPtr>(value));
    ASSERT_TRUE(function);
    EXPECT_EQ(function->name, "straight");
    EXPECT_EQ(function->title, "a line");
    EXPECT_EQ(function->codelet, "codelet:fit:verbatim:jel : 1 : p0+x[0]*p1 : p0,p1 : null");
    EXPECT_NEAR(FunctionValues(*function)(10.0), 21.0, 1e-12);
    EXPECT_EQ(function->annotation.front().value, "pol1");
    EXPECT_EQ(function->annotation.back(), (AnnotationItem{"status", "converged", false}));
}

TEST(FitKind, tellsTheCovarianceByName) {
    KindHarness fit("Fit");
    fit.wire("data", line()).set("model", "b*x").run();
    EXPECT_THAT(fit.text("covariance"), testing::StartsWith("parameter,b\nb,0.0019047619"));
}

TEST(FitKind, fitsInTheRangeOnly) {
    KindHarness fit("Fit");
    fit.wire("data", counts()).set("model", "pol0").set("low", "2").set("high", "6").run();
    EXPECT_NEAR(fit.number("p0"), 8.0, 1e-12);
    fit.set("low", "7");
    EXPECT_THAT(fit.failure(), HasSubstr("the range from 7 to 6 is empty"));
}

TEST(FitKind, warnsOfAParameterThatLooksLikeAShape) {
    KindHarness fit("Fit");
    fit.wire("data", line()).set("model", "expo").expectWarnings().run();
    EXPECT_THAT(fit.warnings(), ElementsAre(HasSubstr("if you mean the shape exponential, write its name")));
}

TEST(FitKind, refusesWhatItCannotFit) {
    KindHarness nothing("Fit");
    EXPECT_THAT(nothing.failure(), HasSubstr("nothing is wired; expected a histogram, profile or points"));
    nothing.wire("data", Value(DataObjectPtr(std::make_shared<Histogram2D>(Grid<2>({Axis(2, 0, 1), Axis(2, 0, 1)})))));
    EXPECT_THAT(nothing.failure(), HasSubstr("cannot be fitted"));
    KindHarness flat("Fit");
    flat.wire("data", Value(DataObjectPtr(std::make_shared<Points>(1, std::vector<Measurement>(3)))));
    EXPECT_THAT(flat.failure(), HasSubstr("have 1 coordinates"));
    KindHarness counted("Fit");
    counted.wire("data", line()).set("method", "likelihood");
    EXPECT_THAT(counted.failure(), HasSubstr("only a histogram has"));
    KindHarness few("Fit");
    few.wire("data", line()).set("model", "pol7");
    EXPECT_THAT(few.failure(), HasSubstr("4 entries are too few to fit 8 parameters"));
}

TEST(FitKind, refusesMistakesWhenTheyAreMade) {
    const Kind& kind = test::shippedKind("Fit");
    EXPECT_EQ(kind.refusal("model", "gauss + pol1"), "");
    EXPECT_THAT(kind.refusal("model", "gauss + pool(x)"), HasSubstr("^"));
    EXPECT_EQ(kind.refusal("start", "mean=1 [0,2]"), "");
    EXPECT_THAT(kind.refusal("start", "mean=one"), HasSubstr("must be a number"));
    KindHarness wired("Fit");
    wired.wire("data", line()).wire("model", Value(std::string("pol1")));
    EXPECT_THAT(wired.failure(), HasSubstr("cannot be wired"));
}

TEST(FitKind, endsWhenTheRunIsStopped) {
    KindHarness fit("Fit");
    fit.wire("data", line()).set("model", "pol1").stop();
    EXPECT_THROW(fit.run(), Stopped);
}

}  // namespace
