#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "fit/Model.h"

namespace velmorak::fitting {
namespace {

struct Formula {
    std::string text;
    std::vector<double> parameters;
    double x;
};

double valueOf(const Model& model, const std::vector<double>& parameters, double x, Workspace& space) {
    return *model.program.evaluate(&x, 1, parameters.data(), space);
}

/// Central differences of two steps, extrapolated to step 0.
double difference(const Model& model, std::vector<double> parameters, std::size_t i, double x) {
    Workspace space = model.program.workspace();
    const double at = parameters[i];
    const auto slope = [&](double step) {
        parameters[i] = at + step;
        const double above = valueOf(model, parameters, x, space);
        parameters[i] = at - step;
        return (above - valueOf(model, parameters, x, space)) / (2.0 * step);
    };
    return (4.0 * slope(5e-4) - slope(1e-3)) / 3.0;
}

TEST(FitDerivatives, areThoseOfEveryOperation) {
    const std::vector<Formula> formulas{
        {"a + b*x - c/x", {1.5, 0.7, 2.0}, 1.3},
        {"gauss + exponential + breitwigner + crystalball + pol3",
         {3, 1, 0.8, 2, -0.4, 5, 1.4, 0.6, 7, 2.5, 0.9, 1.2, 3.1, 1, -2, 0.5, 0.1},
         1.2},
        {"crystalball", {7, 2.5, 0.9, 1.2, 3.1}, 3.0},
        {"pow(a, b)*x^a + a^2 + x^b", {1.7, 2.4}, 1.3},
        {"fmod(a*x, b)", {5.3, 1.7}, 1.1},
        {"atan2(a, x) + atan2(x, b) + hypot(a, b*x)", {0.6, 1.9}, 0.7},
        {"min(a, x, b) + 3*max(a, x, b)", {0.6, 1.9}, 0.7},
        {"x < a ? b*b : 1/b", {0.6, 1.9}, 0.7},
        {"x <= a && b != 0 || a == 0 || !(a > b) ? sin(a*b) : a", {0.6, 1.9}, 0.7},
        {"sqrt(a) + cbrt(a) + exp2(a) + expm1(a) + log(a) + log10(a) + log2(a) + log1p(a)", {0.43}, 0},
        {"sin(a) + cos(a)*tan(a) + asin(a) + acos(a)*2 + atan(a) + sinh(a)*2 + cosh(a) + tanh(a)*3", {0.43}, 0},
        {"asinh(a) + acosh(a + 1) + atanh(a) + erf(a) + erfc(a)*3 + gamma(a) + lgamma(a)*2", {0.43}, 0},
        {"lgamma(-a) + gamma(a + 12) / 1e8", {0.43}, 0},
        {"abs(-a) + sign(a)*a + floor(a) + ceil(a) + round(a) + trunc(a) + isnan(a) + -a*+2", {0.43}, 0},
        {"square(a) + 2*copysign(a, x) + 3*copysign(a, -x) + remainder(a, x) + remainder(x, a)", {0.43}, 0.2},
        {"a^2*(a - x)^2/a", {0.43}, 0.2}};
    for (const Formula& formula : formulas) {
        const Model model = buildModel(formula.text);
        ASSERT_EQ(model.names.size(), formula.parameters.size()) << formula.text;
        Workspace space = model.program.workspace();
        valueOf(model, formula.parameters, formula.x, space);
        model.program.backward(1, space);
        for (std::size_t i = 0; i < model.names.size(); ++i) {
            const double wanted = difference(model, formula.parameters, i, formula.x);
            EXPECT_NEAR(*model.program.derivative(i, space), wanted, 1e-8 * (1.0 + std::fabs(wanted)))
                << formula.text << " by " << model.names[i];
        }
    }
}

TEST(FitDerivatives, ignoreTheBranchThatIsNotTaken) {
    const Model model = buildModel("x > 0 ? a*x : log(a*x)");
    Workspace space = model.program.workspace();
    const std::vector<double> points{2.0, -1.0};
    const double a = 3.0;
    model.program.evaluate(points.data(), 2, &a, space);
    model.program.backward(2, space);
    EXPECT_EQ(model.program.derivative(0, space)[0], 2.0);
}

TEST(FitDerivatives, showInWhichParametersAFunctionIsLinear) {
    const auto linear = [](const std::string& text) {
        const Model model = buildModel(text);
        return linearAmong(model.program, std::vector<bool>(model.names.size(), true));
    };
    EXPECT_EQ(linear("gauss + pol1"), (std::vector<bool>{true, false, false, true, true}));
    EXPECT_EQ(linear("a*b*x"), (std::vector<bool>{true, false}));
    EXPECT_EQ(linear("a*x/b - c"), (std::vector<bool>{true, false, true}));
    EXPECT_EQ(linear("x > 1 ? a : -b"), (std::vector<bool>{true, true}));
}

}  // namespace
}  // namespace velmorak::fitting
