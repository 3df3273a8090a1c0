#include <velmorak/ElementaryFunctions.h>
#include <velmorak/Fit.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include <velmorak/Failure.h>
#include <velmorak/FunctionValues.h>

#include "fit/Model.h"

namespace velmorak {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

template <typename Action>
std::string failureOf(const Action& action) {
    try {
        action();
        return "nothing failed";
    } catch (const Failure& failure) {
        return failure.what();
    }
}

TEST(FitModel, namesTheParametersOfItsShapes) {
    EXPECT_THAT(FitModel("gauss + pol1").parameters(), ElementsAre("amplitude", "mean", "sigma", "p0", "p1"));
    EXPECT_THAT(FitModel("gauss(x)+gauss").parameters(),
                ElementsAre("amplitude", "mean", "sigma", "amplitude_2", "mean_2", "sigma_2"));
    EXPECT_THAT(FitModel("n*exp(-x/tau) + b").parameters(), ElementsAre("n", "tau", "b"));
    EXPECT_THAT(FitModel("gauss(x, a, m, s) + gauss(x, b, m, 3*s)").parameters(), ElementsAre("a", "m", "s", "b"));
    EXPECT_THAT(FitModel("gauss + mean*x").parameters(), ElementsAre("amplitude", "mean_2", "sigma", "mean"));
    EXPECT_THAT(FitModel("pi*e*x").parameters(), ElementsAre());
    EXPECT_THAT(FitModel("`e`*x").parameters(), ElementsAre("e"));
    EXPECT_THAT(FitModel("crystalball*pol9").parameters().size(), 15U);
}

double valueOf(const std::string& model, const std::vector<double>& parameters, double x) {
    return FunctionValues(FitModel(model).function(parameters))(x);
}

TEST(FitModel, givesAFunctionThatCanBeComputed) {
    EXPECT_DOUBLE_EQ(valueOf("gauss + pol1", {3.0, 1.0, 2.0, 5.0, 0.5}, 3.0), 3.0 * std::exp(-0.5) + 6.5);
    EXPECT_DOUBLE_EQ(valueOf("exponential", {2.0, -0.5}, 4.0), 2.0 * std::exp(-2.0));
    EXPECT_DOUBLE_EQ(valueOf("breitwigner", {8.0, 90.0, 2.0}, 91.0), 4.0);
    EXPECT_DOUBLE_EQ(valueOf("pol3", {1.0, 2.0, 3.0, 4.0}, 2.0), 49.0);
    EXPECT_EQ(valueOf("a - (b - x) - (x/(b/a))*-2", {8.0, 4.0}, 1.0), 8.0 - 3.0 + 4.0);
    EXPECT_EQ(valueOf("x > a && !(x == 3) ? min(a, x, 1) : -x^2", {2.0}, 3.0), -9.0);
    EXPECT_EQ(valueOf("x >= a or x < 1 ? hypot(3, 4)*a : 2^-x", {2.0}, 1.5), elementary::pow(2.0, -1.5));
}

TEST(FitModel, joinsTheTailOfACrystalBallSmoothly) {
    const std::vector<double> parameters{10.0, 5.0, 2.0, 1.25, 3.0};
    const double joint = 5.0 - 2.0 * 1.25;
    EXPECT_NEAR(valueOf("crystalball", parameters, joint - 1e-9), valueOf("crystalball", parameters, joint + 1e-9),
                1e-7);
    // A (B - t)^-n with A = (n / a)^n exp(-a² / 2), B = n / a - a.
    const double t = -3.0;
    const double wanted =
        10.0 * std::pow(3.0 / 1.25, 3) * std::exp(-0.5 * 1.25 * 1.25) * std::pow(3.0 / 1.25 - 1.25 - t, -3);
    EXPECT_DOUBLE_EQ(valueOf("crystalball", parameters, 5.0 + 2.0 * t), wanted);
}

std::string repeated(const std::string& text, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

TEST(FitModel, warnsOfParametersThatLookLikeShapes) {
    EXPECT_THAT(FitModel("n*gaus").warnings(),
                ElementsAre("\"gaus\" is fitted as a parameter, not as a function of x; if you mean the shape gauss, "
                            "write its name, else write `gaus` in back quotes"));
    EXPECT_THAT(FitModel("expo + expo*x").warnings(), ElementsAre(HasSubstr("the shape exponential")));
    EXPECT_THAT(FitModel("pol10").warnings(), ElementsAre(HasSubstr("one of the shapes pol0 to pol9")));
    EXPECT_THAT(FitModel("poly2 + Gaussian + Breit_Wigner").warnings(),
                ElementsAre(HasSubstr("pol0 to pol9"), HasSubstr("gauss, write"), HasSubstr("breitwigner")));
    EXPECT_THAT(FitModel("gauss + `expo`*x + pole + mass + gauss_norm*exp(-x/tau)").warnings(), ElementsAre());
}

TEST(FitModel, refusesWhatItsFunctionCouldNotSay) {
    const auto refusal = [](const std::string& text) { return failureOf([&] { FitModel{text}; }); };
    const std::string reason =
        "the formula of this model, with its shapes written out, has more than 16384 characters "
        "or more than 200 nested parentheses";
    EXPECT_THAT(refusal(repeated("pol9(", 40) + "x" + repeated(")", 40)), HasSubstr(reason));
    EXPECT_THAT(refusal(repeated("2^", 300) + "x"), HasSubstr(reason));
    EXPECT_EQ(refusal(repeated("(", 200) + "x" + repeated(")", 200)), "nothing failed");
    EXPECT_THAT(refusal(repeated("(", 201) + "x" + repeated(")", 201)), HasSubstr("at most 200 nested parentheses"));
}

TEST(FitModel, boundsTheLengthOfItsFormulaWithoutWritingIt) {
    for (const std::string text :
         {"gauss + pol1", "x", "1", "-1.7976931348623157e308*x", "x > a && !(x == 3) ? min(a, x, 1) : -x^2",
          "(1/0)^-x - (-a - -b)/(2^-3*x)", "floor(2)*3 + round(x)*7 % 3", "atan2(-1e-300, hypot(a, -0.0))",
          "pol9(pol2) + crystalball", "x >= a or x < 1 ? hypot(3, 4)*a : 2^-x", "`not`*x + `true`*abs(-2)*3"}) {
        const FitModel model(text);
        EXPECT_GE(fitting::formulaLengthBound(model.compiled()), fitting::formulaOf(model.compiled()).size()) << text;
    }
    EXPECT_LE(fitting::formulaLengthBound(FitModel("gauss + pol1").compiled()), 200U)
        << "a short one need not be written";
}

TEST(FitModel, givesAFunctionAlsoOfNamesThatAreWords) {
    EXPECT_EQ(valueOf("`not`*x + `true` - `e`*`pi`", {2.0, 3.0, 4.0, 5.0}, 10.0), 3.0);
}

TEST(FitModel, refusesOnlyTheNamesThatItsKindReserves) {
    const auto refusal = [](const std::string& text) {
        return failureOf([&] { FitModel(text, {{"chi2"}, "_error"}); });
    };
    EXPECT_EQ(refusal("a + chi2*x"),
              "\"chi2\" is the name of another output; choose another name for the parameter\n  a + chi2*x\n      ^");
    EXPECT_THAT(refusal("a + a_error"), HasSubstr("\"a_error\" is the name of another output"));
    EXPECT_EQ(refusal("a + b_error + ndf"), "nothing failed");
    EXPECT_EQ(failureOf([] { FitModel("a + a_error + chi2*x"); }), "nothing failed");
}

TEST(FitModel, refusesMistakesWithACaret) {
    const auto refusal = [](const std::string& text) { return failureOf([&] { FitModel{text}; }); };
    EXPECT_EQ(refusal("gauss + gaus(x)"),
              "there is no function \"gaus\"; did you mean \"gauss\"?\n  gauss + gaus(x)\n          ^");
    EXPECT_THAT(refusal("gauss(x, a)"), HasSubstr("gauss takes x, or x and its 3 parameters"));
    EXPECT_THAT(refusal("pol10(x)"), HasSubstr("there is no function \"pol10\""));
    EXPECT_THAT(refusal("a*'b'"), HasSubstr("\"*\" does not take a value of type text\n  a*'b'\n    ^"));
    EXPECT_THAT(refusal("exp(x, a)"), HasSubstr("\"exp\" takes one value"));
    EXPECT_THAT(refusal("'b'"), HasSubstr("a function cannot give a text"));
    EXPECT_THAT(refusal("gauss('b')"), HasSubstr("\"-\" does not take a value of type text\n  gauss('b')\n  ^"));
    EXPECT_THAT(refusal("a +"), HasSubstr("ends too early"));
    EXPECT_THAT(refusal(""), HasSubstr("the expression is empty"));
    EXPECT_THAT(refusal("`two words`*x"), HasSubstr("one word"));
}

TEST(FitParameters, areReadWithStartLimitsAndWhetherTheyAreFixed) {
    const FitParameters read = readFitParameters(" mean=91.2 [80,100], width = 2.5 fixed,\n a[0,] , b [,-1e3] ,c");
    EXPECT_EQ(read.size(), 5U);
    EXPECT_EQ(read.at("mean"), (FitParameter{91.2, 80.0, 100.0, false}));
    EXPECT_EQ(read.at("width"), (FitParameter{2.5, -HUGE_VAL, HUGE_VAL, true}));
    EXPECT_EQ(read.at("a"), (FitParameter{{}, 0.0, HUGE_VAL, false}));
    EXPECT_EQ(read.at("b"), (FitParameter{{}, -HUGE_VAL, -1000.0, false}));
    EXPECT_EQ(read.at("c"), FitParameter{});
    EXPECT_TRUE(readFitParameters("  ").empty());
}

TEST(FitParameters, areRefusedWithThePlace) {
    const auto refusal = [](const std::string& text) { return failureOf([&] { readFitParameters(text); }); };
    EXPECT_EQ(refusal("mean=9l"), "the start value of mean must be a number\n  mean=9l\n       ^");
    EXPECT_THAT(refusal("a=1 b=2"), HasSubstr("only  fixed  may follow\n  a=1 b=2\n      ^"));
    EXPECT_THAT(refusal("a=1 fixed b=2"), HasSubstr("separate parameters by commas"));
    EXPECT_THAT(refusal("a=1, a=2"), HasSubstr("\"a\" is given twice"));
    EXPECT_THAT(refusal("a=1 [2,1]"), HasSubstr("must be less than"));
    EXPECT_THAT(refusal("a=1 [2,3]"), HasSubstr("outside its limits"));
    EXPECT_THAT(refusal("a=1 [2"), HasSubstr("write limits as"));
    EXPECT_THAT(refusal("a [0,1] fixed"), HasSubstr("has no value"));
    EXPECT_THAT(refusal("a=nan"), HasSubstr("must be a number"));
    EXPECT_THAT(refusal("a=inf"), HasSubstr("not finite"));
    EXPECT_THAT(refusal(",a=1"), HasSubstr("name of a parameter is missing"));
}

}  // namespace
}  // namespace velmorak
