#include <velmorak/Expression.h>
#include <velmorak/Failure.h>
#include <velmorak/Fit.h>
#include <velmorak/FunctionValues.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>

#include "expression/Kernels.h"
#include "fit/Model.h"

// The functions and constants of the one table, in each place where a user writes an expression.

namespace velmorak::fitting {
namespace {

using expression::Function;
using expression::Rule;
using testing::HasSubstr;

constexpr double inf = std::numeric_limits<double>::infinity();
const std::vector<double> points{-1.7, -0.3, 0.0, 0.4, 1.0, 2.6, 1e300, inf, -inf, std::nan("")};

/// A place for expressions of x and y. The text has X for the variable.
struct ExpressionUse {
    std::string name;
    std::string variable;
    std::function<std::vector<double>(const std::string& text)> values;  ///< At the points.
};

constexpr double y = 0.7;

std::string replaced(std::string text, const std::string& variable) {
    for (std::size_t at = text.find('X'); at != std::string::npos; at = text.find('X', at + variable.size())) {
        text.replace(at, 1, variable);
    }
    return text;
}

Chunk chunkOf(const std::vector<Column::Reals>& columns) {
    Chunk chunk;
    chunk.rows = columns.empty() ? 1 : columns.front().size();
    for (const Column::Reals& values : columns) {
        chunk.columns.push_back(std::make_shared<Column>(Column{values, {}}));
    }
    return chunk;
}

std::vector<double> inColumn(const std::string& text) {
    const Expression expression(text, Schema({{.name = "x"}, {.name = "y"}}));
    return asReals(expression.evaluate(chunkOf({points, Column::Reals(points.size(), y)})))->reals();
}

std::vector<double> inNumbers(const std::string& text) {
    std::vector<double> values;
    for (const double x : points) {
        const Expression expression(text, Schema(), {{"x", x}, {"y", y}});
        values.push_back(asReals(expression.evaluate(chunkOf({})))->reals().front());
    }
    return values;
}

std::vector<double> inModel(const std::string& text) {
    const Model model = buildModel(text);
    Workspace space = model.program.workspace();
    const double* const values = model.program.evaluate(points.data(), points.size(), &y, space);
    return {values, values + points.size()};
}

std::vector<double> inFunction(const std::string& codelet) {
    FunctionObject function;
    function.codelet = "codelet:f:verbatim:jel : 1 : " + codelet + " : y : null";
    function.parameters = {{"y", y}};
    return FunctionValues(function)(points);
}

std::vector<double> inFittedFunction(const std::string& text) {
    const FitModel model(text);
    return FunctionValues(model.function(std::vector<double>(model.parameters().size(), y)))(points);
}

std::vector<ExpressionUse> allUses() {
    return {{"a column", "x", inColumn},
            {"numbers", "x", inNumbers},
            {"a model", "x", inModel},
            {"a function on a plot", "x[0]", inFunction},
            {"a fitted function on a plot", "x", inFittedFunction}};
}

std::vector<const Function*> writtenFunctions() {
    std::vector<const Function*> written;
    for (const Function& function : expression::allFunctions()) {
        // A function of texts has no place where there are only numbers.
        if (!function.documentation.subject.empty() && function.rule != Rule::Texts) {
            written.push_back(&function);
        }
    }
    return written;
}

/// A call of x and y with as many arguments as the function takes.
std::string callOf(const Function& function) {
    const std::string first = function.rule == Rule::Choice ? "X > 0.1" : "X";
    const std::vector<std::string> arguments{first, "y", "0.2"};
    std::string text = std::string(function.name) + "(";
    for (std::size_t i = 0; i < function.arguments; ++i) {
        text += (i == 0 ? "" : ", ") + arguments[i];
    }
    return text + ")";
}

void expectSameEverywhere(const std::string& text) {
    const std::vector<double> expected = inColumn(replaced(text, "x"));
    for (const ExpressionUse& place : allUses()) {
        const std::vector<double> values = place.values(replaced(text, place.variable));
        for (std::size_t i = 0; i < points.size(); ++i) {
            const bool isSame = std::bit_cast<std::uint64_t>(values[i]) == std::bit_cast<std::uint64_t>(expected[i]) ||
                                (std::isnan(values[i]) && std::isnan(expected[i]));
            EXPECT_TRUE(isSame) << text << " in " << place.name << " at " << points[i] << ": " << values[i]
                                << " instead of " << expected[i];
        }
    }
}

TEST(Language, hasEveryFunctionInEveryPlaceWithTheSameBits) {
    for (const Function* const function : writtenFunctions()) {
        expectSameEverywhere(callOf(*function));
        expectSameEverywhere("y*" + callOf(*function) + " + X");
    }
}

TEST(Language, hasEveryFunctionInTheConditionsOfEveryPlace) {
    for (const Function* const function : writtenFunctions()) {
        expectSameEverywhere(callOf(*function) + " > 0.3");
        expectSameEverywhere("if(not (" + callOf(*function) + " <= 0.3 or X == y), X, -y)");
    }
}

TEST(Language, hasEveryOperatorInEveryPlaceWithTheSameBits) {
    for (const char* text : {"X + y",
                             "X - y",
                             "X*y",
                             "X/y",
                             "X % y",
                             "-X",
                             "+X",
                             "X^y",
                             "y**X",
                             "X^2",
                             "y^-X",
                             "X == y",
                             "X != y",
                             "X < y",
                             "X <= y",
                             "X > y",
                             "X >= y",
                             "X > 0 && X < y",
                             "X > 0 || X < -y",
                             "!(X > 0)",
                             "X > 0 ? X : y",
                             "X > 0 ? 1 : 2",
                             "(X > 0) + (X > 1)*2",
                             "-(X > 0)",
                             "2.0 % ((X > 0) + 1)",
                             "(7 % 4)*X",
                             "-0.0*X",
                             "1/(X*0 + -0.0)",
                             "X > 0 ? 2.0 : 3"}) {
        expectSameEverywhere(text);
    }
}

TEST(Language, hasEveryConstantInEveryPlace) {
    for (const expression::Constant& constant : expression::allConstants()) {
        const std::string name(constant.name);
        const double value = inColumn("x*0 + " + name)[0];
        EXPECT_TRUE(value == constant.value || (std::isnan(value) && std::isnan(constant.value))) << name;
        for (const std::string& text : {name, "X*" + name, "y + " + name, "X < " + name, "max(X, " + name + ")"}) {
            expectSameEverywhere(text);
        }
    }
}

std::string refusalIn(const ExpressionUse& place, const std::string& text) {
    try {
        place.values(replaced(text, place.variable));
        return "";
    } catch (const Failure& failure) {
        return failure.what();
    }
}

TEST(Language, refusesInEveryPlaceWithTheSameSentence) {
    const std::vector<std::pair<std::string, std::string>> refused{
        {"if(max(X - 500, 0), y, 1)",
         "expected a condition, but this is a value of type real; compare it with something"},
        {"X && y", "expected a condition, but this is a value of type real; compare it with something"},
        {"!X", "expected a condition, but this is a value of type real; compare it with something"},
        {"sum(X)", "\"sum\" of one argument needs a list column, but this is a value of type real"},
        {"max(X)", "\"max\" takes two values or more, or one list column"},
        {"any(X > 0)", "\"any\" of one argument needs a list column, but this is a value of type boolean"},
        {"count(X, y)", "\"count\" takes one list column"},
        {"y[0]", "only a list can be indexed, but this is a value of type real"},
        {"X*'b'", "\"*\" does not take a value of type text"},
        {"X < 'b'", "a text and a number cannot be combined here"},
        {"9223372036854775807 + 1 + X", "no integer can hold a result"},
        {"X + 1 % (X > 1e9)", "no integer can hold a result"},
        {"nosuch(X)", "there is no function \"nosuch\""},
        {"X +", "the expression ends too early; a value is missing"},
        {"X < y < 1", "comparisons do not chain"}};
    for (const auto& [text, reason] : refused) {
        for (const ExpressionUse& place : allUses()) {
            EXPECT_THAT(refusalIn(place, text), HasSubstr(reason)) << text << " in " << place.name;
        }
    }
}

/// What a place makes of a text: values, or the sentence of a refusal without the place.
struct Outcome {
    std::vector<std::uint64_t> bits;
    std::string sentence;
};

Outcome outcomeIn(const ExpressionUse& place, const std::string& text) {
    Outcome outcome;
    try {
        for (const double value : place.values(replaced(text, place.variable))) {
            outcome.bits.push_back(std::isnan(value) ? 0 : std::bit_cast<std::uint64_t>(value));
        }
    } catch (const Failure& failure) {
        const std::string whole = failure.what();
        outcome.sentence = whole.substr(0, whole.find('\n'));
    }
    return outcome;
}

/// @param usage such as "deltaPhi(phi1, phi2)".
std::string callOf(const expression::NamedForm& form) {
    std::string text = std::string(form.name) + "(X";
    const auto arguments = std::count(form.usage.begin(), form.usage.end(), ',');
    for (std::ptrdiff_t i = 0; i < arguments; ++i) {
        text += i == 0 ? ", y" : ", 0." + std::to_string(i);
    }
    return text + ")";
}

TEST(Language, hasOrRefusesComposedFunctionsAndThoseOfListsAlikeInEveryPlace) {
    for (const auto& forms : {expression::kinematicForms(), expression::missingForms(), expression::listForms()}) {
        for (const expression::NamedForm& form : forms) {
            if (form.name == "concat") {
                continue;  // Makes a list of numbers; see below.
            }
            const std::string text = "y + " + callOf(form);
            const Outcome expected = outcomeIn(allUses().front(), text);
            for (const ExpressionUse& place : allUses()) {
                const Outcome outcome = outcomeIn(place, text);
                EXPECT_EQ(outcome.bits, expected.bits) << text << " in " << place.name;
                EXPECT_THAT(outcome.sentence, HasSubstr(expected.sentence)) << text << " in " << place.name;
            }
        }
    }
}

TEST(Language, refusesFunctionsOfTextsForNumbersInEveryPlaceWithTheSameSentence) {
    int compared = 0;
    for (const Function& function : expression::allFunctions()) {
        if (function.rule != Rule::Texts || function.takes[0] != ColumnType::Text) {
            continue;
        }
        const std::string text = callOf(function);
        const std::string expected = outcomeIn(allUses().front(), text).sentence;
        EXPECT_THAT(expected, HasSubstr("does not take a value of type real")) << text;
        for (const ExpressionUse& place : allUses()) {
            EXPECT_THAT(outcomeIn(place, text).sentence, HasSubstr(expected)) << text << " in " << place.name;
            ++compared;
        }
    }
    EXPECT_GE(compared, 40);
}

TEST(Language, hasTextsAndListsInAModelOnlyWhereTheyAreConstant) {
    for (const char* text :
         {"a*(if(x > 3, 'a', 'b') == 'a')", "a*length(if(x > 3, 'a', 'bcd'))", "a + isMissing(if(x > 3, '', 'b'))"}) {
        EXPECT_THAT(refusalIn({"", "x", inModel}, text), HasSubstr("the model of a fit has no texts")) << text;
    }
    for (const char* text : {"concat(x, a)", "a*sum(concat(x, 1))", "a*concat(x, b)[0]", "gauss(x, concat(a, b), 1, 2)",
                             "count(pairs(concat(x, a)))*a", "a*first(concat(1, 2), 0)", "a + concat(1, 2)"}) {
        EXPECT_THAT(refusalIn({"", "x", inModel}, text), HasSubstr("the model of a fit has no lists")) << text;
    }
    EXPECT_EQ(refusalIn({"", "x", inModel}, "y*length('abc') + isMissing('') + ('a' < 'b')"), "");
}

TEST(Language, refusesAModelOfConstantsWithoutAResultBeforeItIsFitted) {
    for (const char* text : {"a + (9223372036854775807 + 1)", "a + 9223372036854775807*2", "a + 7 % (3 - 3)"}) {
        EXPECT_THROW(buildModel(text), Failure) << text;
    }
    EXPECT_NO_THROW(buildModel("a + 9223372036854775807.0 + 1"));
}

TEST(Language, refusesAWrongNumberOfArgumentsInEveryPlaceWithTheSameSentence) {
    for (const Function* const function : writtenFunctions()) {
        const std::string count = function->takesMore        ? "two values or more, or one list column"
                                  : function->arguments == 1 ? "one value"
                                  : function->arguments == 2 ? "two values"
                                                             : "three values";
        const std::string name(function->name);
        for (const ExpressionUse& place : allUses()) {
            EXPECT_THAT(refusalIn(place, "y + " + name + "()"), HasSubstr("\"" + name + "\" takes " + count));
        }
    }
}

/// Values of the arguments at which a function has a derivative; the first one that it is defined at counts.
const std::vector<std::vector<double>> samples{{0.43, 0.71, 0.2},  {1.9, 0.83, 2.2},   {-0.37, 1.3, 0.6},
                                               {3.7, -1.21, -0.4}, {-2.41, 2.0, 1.45}, {0.052, 3.3, -2.0}};

std::string callOfParameters(const Function& function) {
    const std::vector<std::string> names{function.rule == Rule::Choice ? "x > 0" : "a", "b", "c"};
    std::string text = std::string(function.name) + "(";
    for (std::size_t i = 0; i < function.arguments; ++i) {
        text += (i == 0 ? "" : ", ") + names[i];
    }
    return text + ") + 0*a";
}

/// Differences of four steps, extrapolated to step 0: an error of the order of the step to the power of 8.
double difference(const Model& model, std::vector<double> parameters, std::size_t i, double x) {
    Workspace space = model.program.workspace();
    const double at = parameters[i];
    double slopes[4];
    for (int level = 0; level < 4; ++level) {
        const double step = 0.008 / (1 << level);
        parameters[i] = at + step;
        const double above = *model.program.evaluate(&x, 1, parameters.data(), space);
        parameters[i] = at - step;
        slopes[level] = (above - *model.program.evaluate(&x, 1, parameters.data(), space)) / (2.0 * step);
    }
    for (int order = 1; order < 4; ++order) {
        const double factor = 1 << (2 * order);
        for (int level = 0; level < 4 - order; ++level) {
            slopes[level] = (factor * slopes[level + 1] - slopes[level]) / (factor - 1.0);
        }
    }
    return slopes[0];
}

int comparedDerivatives(const Function& function, double x) {
    const Model model = buildModel(callOfParameters(function));
    Workspace space = model.program.workspace();
    int compared = 0;
    for (std::vector<double> parameters : samples) {
        parameters.resize(model.names.size());
        const double value = *model.program.evaluate(&x, 1, parameters.data(), space);
        model.program.backward(1, space);
        for (std::size_t i = 0; std::isfinite(value) && i < model.names.size(); ++i) {
            const double expected = difference(model, parameters, i, x);
            const double derivative = *model.program.derivative(i, space);
            if (std::isnan(expected)) {  // Negative numbers have powers only for whole exponents.
                EXPECT_TRUE(std::isnan(derivative)) << function.name;
                continue;
            }
            EXPECT_NEAR(derivative, expected, 1e-10 * (1.0 + std::fabs(expected)))
                << function.name << " by " << model.names[i] << " at " << parameters[0];
            ++compared;
        }
    }
    return compared;
}

TEST(Language, hasTheDerivativeOfEveryFunction) {
    for (const Function* const function : writtenFunctions()) {
        if (function->rule == Rule::Test) {
            EXPECT_FALSE(function->reverse) << function->name;
            continue;
        }
        ASSERT_TRUE(function->reverse) << function->name;
        for (const double x : {-1.0, 1.0}) {
            EXPECT_GE(comparedDerivatives(*function, x), 2) << function->name;
        }
    }
}

}  // namespace
}  // namespace velmorak::fitting
