#include <velmorak/Expression.h>
#include <velmorak/Failure.h>
#include <velmorak/Fit.h>
#include <velmorak/FunctionValues.h>

#include <gmock/gmock.h>

#include <cmath>

#include "expression/Kernels.h"
#include "expression/Program.h"
#include "fit/Model.h"

namespace velmorak::fitting {
namespace {

const std::vector<double> points{-1.7, -0.3, 0.0, 0.4, 1.0, 2.6};

bool isForLists(const std::string& name) {
    return name == "sum" || name == "count" || name == "any" || name == "all";
}

/// A call with as many arguments as the function takes, which are numbers or, for a choice, a condition first.
std::string callOf(const std::string& name) {
    const expression::Function& function = *expression::findFunction(name);
    const std::string first = function.rule == expression::Rule::Choice ? "x > 0.1" : "x";
    const std::vector<std::string> arguments{first, "0.7", "0.2"};
    std::string text = name + "(";
    for (std::size_t i = 0; i < function.arguments; ++i) {
        text += (i == 0 ? "" : ", ") + arguments[i];
    }
    return text + ")";
}

Column::Reals valuesInTable(const std::string& text) {
    const Schema schema({{.name = "x"}});
    Chunk chunk;
    chunk.rows = points.size();
    auto column = std::make_shared<Column>();
    column->values = points;
    chunk.columns = {column};
    return asReals(Expression(text, schema).evaluate(chunk))->reals();
}

Column::Reals valuesInFit(const std::string& text) {
    const Model model = buildModel(text);
    Workspace space = model.program.workspace();
    const double* const values = model.program.evaluate(points.data(), points.size(), nullptr, space);
    return {values, values + points.size()};
}

/// Vectorised functions of a table may differ by one unit in the last place.
void expectSame(const Column::Reals& actual, const Column::Reals& expected, const std::string& text) {
    for (std::size_t i = 0; i < points.size(); ++i) {
        const bool areSame = actual[i] == expected[i] || (std::isnan(actual[i]) && std::isnan(expected[i])) ||
                             std::fabs(actual[i] - expected[i]) <= 4e-16 * std::fabs(expected[i]);
        EXPECT_TRUE(areSame) << text << " at " << points[i] << ": " << actual[i] << " instead of " << expected[i];
    }
}

TEST(FitFunctions, areThoseOfTablesButForLists) {
    for (const std::string& name : expression::functionNames()) {
        if (isForLists(name)) {
            EXPECT_THROW(buildModel(name + "(x)"), Failure) << name;
        } else {
            expectSame(valuesInFit(callOf(name)), valuesInTable(callOf(name)), name);
        }
    }
}

TEST(FitFunctions, areWrittenIntoTheFormulaOfAFittedFunction) {
    for (const std::string& name : expression::functionNames()) {
        if (isForLists(name) || expression::findFunction(name)->rule == expression::Rule::Test) {
            continue;
        }
        const FunctionObject function = FitModel("p + " + callOf(name)).function({0.0});
        expectSame(FunctionValues(function)(points), valuesInTable(callOf(name)), function.codelet);
    }
}

TEST(FitFunctions, haveTheConstantsOfTables) {
    for (const char* const name : {"pi", "e", "inf", "nan"}) {
        ASSERT_TRUE(expression::isConstant(name)) << name;
        expectSame(valuesInFit(name), valuesInTable(std::string("x*0 + ") + name), name);
        const FunctionObject function = FitModel(std::string("p + ") + name).function({0.0});
        expectSame(FunctionValues(function)(points), valuesInTable(std::string("x*0 + ") + name), function.codelet);
    }
}

}  // namespace
}  // namespace velmorak::fitting
