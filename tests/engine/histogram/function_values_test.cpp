#include <velmorak/FunctionValues.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <velmorak/Failure.h>

namespace velmorak {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

FunctionObject function(const std::string& codelet, std::vector<FunctionObject::Parameter> parameters = {}) {
    FunctionObject made;
    made.name = "f";
    made.codelet = codelet;
    made.parameters = std::move(parameters);
    return made;
}

std::string refusalOf(const FunctionObject& function) {
    try {
        FunctionValues{function};
        return "nothing refused";
    } catch (const Failure& failure) {
        return failure.what();
    }
}

TEST(FunctionValues, areThoseOfTheWrittenExpression) {
    const FunctionValues line(
        function("codelet:line:verbatim:jel : 1 : a+b*x[0] : a,b : null", {{"b", -0.25}, {"a", 1.5}}));
    EXPECT_EQ(line(2.0), 1.0);
    EXPECT_THAT(line(std::vector<double>{0.0, 4.0, 6.0}), ElementsAre(1.5, 0.5, 0.0));
    EXPECT_TRUE(line(std::vector<double>{}).empty());
    EXPECT_TRUE(std::isnan(line(std::numeric_limits<double>::quiet_NaN())));
}

TEST(FunctionValues, takeAParameterOfAnyNameAndAnExpressionWithColons) {
    const FunctionValues step(function("codelet:a step: up:verbatim:jel : 1 : x[0] < e ? pi : x*x[0] : pi, e ,x : null",
                                       {{"pi", 3.0}, {"e", 2.0}, {"x", 10.0}}));
    EXPECT_EQ(step(1.0), 3.0);
    EXPECT_EQ(step(2.5), 25.0);
}

TEST(FunctionValues, mayBeConstantOrWhole) {
    EXPECT_EQ(FunctionValues(function("codelet:c:verbatim:jel : 1 : 7 :  : null"))(3.0), 7.0);
    EXPECT_EQ(FunctionValues(function("codelet:c:verbatim:jel : 1 : x[0] > 2 : null : null"))(3.0), 1.0);
}

TEST(FunctionValues, knowTheCatalogue) {
    const FunctionValues gauss(function("codelet:G:catalog", {{"amplitude", 5.0}, {"mean", 1.0}, {"sigma", 2.0}}));
    EXPECT_EQ(gauss(1.0), 5.0);
    EXPECT_DOUBLE_EQ(gauss(3.0), 5.0 * std::exp(-0.5));
    const FunctionValues exponential(function("E", {{"amplitude", 2.0}, {"exponent", -0.5}}));
    EXPECT_DOUBLE_EQ(exponential(3.0), 2.0 * std::exp(-1.5));
    EXPECT_EQ(FunctionValues(function("codelet:P0:catalog", {{"p0", 2.5}}))(9.0), 2.5);
    EXPECT_EQ(FunctionValues(function("P2", {{"p0", 1.0}, {"p1", 2.0}, {"p2", 3.0}}))(2.0), 17.0);
    const FunctionValues sum(
        function("codelet:E*P1+P0:catalog", {{"", 2.0}, {"", 0.0}, {"", 1.0}, {"", 3.0}, {"", 5.0}}));
    EXPECT_EQ(sum(2.0), 2.0 * 7.0 + 5.0);
}

TEST(FunctionValues, knowTheCatalogueInSmallLettersToo) {
    const FunctionValues line(function("codelet:p1:catalog", {{"a", 1.0}, {"b", 2.0}}));
    EXPECT_EQ(line(3.0), 7.0);
    const FunctionValues sum(function("g+e", {{"a", 5.0}, {"m", 1.0}, {"s", 2.0}, {"h", 2.0}, {"e", 0.0}}));
    EXPECT_EQ(sum(1.0), 7.0);
    std::string many = "P99";
    for (int term = 0; term < 20; ++term) {
        many += "+P99";
    }
    EXPECT_THAT(refusalOf(function(many)), HasSubstr("takes more than 1000 parameters"));
}

TEST(FunctionValues, refuseWhatTheyDoNotUnderstandByName) {
    EXPECT_THAT(refusalOf(function("codelet:XYZ:catalog")), HasSubstr(R"(the function "f" is not understood: "XYZ")"));
    EXPECT_THAT(refusalOf(function("")), HasSubstr(R"(the function "f" is not understood)"));
    EXPECT_THAT(refusalOf(function("codelet:G:catalog", {{"mean", 1.0}})),
                HasSubstr("has 1 parameters, but \"G\" takes 3"));
    EXPECT_THAT(refusalOf(function("codelet:p:verbatim:jel : 2 : x[0]*x[1] : : null")),
                HasSubstr("more than one argument"));
    EXPECT_THAT(refusalOf(function("codelet:p:verbatim:jel : 1 : a*x[0] : a : null")),
                HasSubstr(R"(no value for its parameter "a")"));
    EXPECT_THAT(refusalOf(function("codelet:p:verbatim:jel : 1 : 2*+ : : null")), HasSubstr("value is missing"));
    EXPECT_THAT(refusalOf(function("codelet:p:verbatim:jel : 1 : 'a' : : null")), HasSubstr("gives a text"));
    EXPECT_THAT(refusalOf(function("codelet:p:verbatim:jel : 1 : concat(x[0], 1) : : null")),
                HasSubstr("gives a list"));
    EXPECT_THAT(refusalOf(function("codelet:p:verbatim:jel : 1 ")), HasSubstr("no codelet of the form"));
    FunctionObject normalised = function("P0", {{"p0", 1.0}});
    normalised.isNormalized = true;
    EXPECT_THAT(refusalOf(normalised), HasSubstr("normalised"));
}

}  // namespace
}  // namespace velmorak
