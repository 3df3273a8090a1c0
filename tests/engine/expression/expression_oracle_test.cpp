#include "RandomColumns.h"

#include <velmorak/Expression.h>

#include <gtest/gtest.h>
#include <muParser.h>

#include <array>
#include <bit>
#include <cmath>
#include <iostream>
#include <limits>
#include <memory>
#include <random>
#include <sstream>

namespace velmorak {
namespace {

constexpr double maxUlps = 2.0;

/// Doubles in their order, from one to the next; both zeros are 0.
std::int64_t ordinal(double value) {
    const auto bits = std::bit_cast<std::int64_t>(value);
    return bits < 0 ? std::numeric_limits<std::int64_t>::min() - bits : bits;
}

double ulpsBetween(double a, double b) {
    std::int64_t ulps = 0;
    if (isSame(a, b)) {
        return 0.0;
    }
    if (std::isnan(a) || std::isnan(b) || __builtin_sub_overflow(ordinal(a), ordinal(b), &ulps)) {
        return std::numeric_limits<double>::infinity();
    }
    return std::fabs(static_cast<double>(ulps));
}

/// A function as both sides compute it. muParser is given ours, after each value has been compared with its own: an
/// expression then agrees to the last bit if all else in it does, and each step to 2 ulp.
class Step {
public:
    Step(std::string ours, const std::string& theirs, std::size_t arguments)
        : name(std::move(ours)), expression(name, Schema({{"x"}, {"y"}})) {
        parser.DefineVar("x", &values[0]);
        parser.DefineVar("y", &values[1]);
        parser.SetExpr(theirs);
        isBinary = arguments == 2;
    }

    static double one(void* step, double x) { return static_cast<Step*>(step)->of(x, 0.0); }
    static double two(void* step, double x, double y) { return static_cast<Step*>(step)->of(x, y); }

    /// What was worse than allowed; empty when nothing was.
    const std::string& complaint() const { return wrong; }
    double worst() const { return farthest; }
    const std::string& text() const { return name; }
    bool takesTwo() const { return isBinary; }

private:
    double of(double x, double y) {
        values = {x, y};
        const double theirs = parser.Eval();
        const double ours = expression.evaluate(chunkOf({{x}, {y}}))->reals()[0];
        const double ulps = ulpsBetween(ours, theirs);
        // Its abs of 0 is -0.
        const bool hasOtherZero = name != "abs(x)" && ours == 0.0 && theirs == 0.0 && !isSame(ours, theirs);
        farthest = std::max(farthest, ulps);
        if (ulps > maxUlps || hasOtherZero) {
            std::ostringstream text;
            text.precision(17);
            text << name << " of " << x << ", " << y << " is " << ours << ", by muParser " << theirs;
            wrong = text.str();
        }
        return ours;
    }

    std::string name;
    Expression expression;
    mu::Parser parser;
    std::array<double, 2> values{};
    bool isBinary = false;
    std::string wrong;
    double farthest = 0.0;
};

// Not asinh, acosh, atanh and log2: the other side computes them by formulas that lose digits. Not min, max and sign:
// the other side takes NaN for a number there.
constexpr std::array functions{"sin",  "cos",  "tan",   "asin", "acos", "atan", "sinh",
                               "cosh", "tanh", "log10", "exp",  "sqrt", "abs",  "log"};

std::vector<std::unique_ptr<Step>> allSteps() {
    std::vector<std::unique_ptr<Step>> steps;
    for (const std::string function : functions) {
        const std::string theirs = function == "log" ? "ln(x)" : function + "(x)";
        steps.push_back(std::make_unique<Step>(function + "(x)", theirs, 1));
    }
    steps.push_back(std::make_unique<Step>("x^y", "x^y", 2));
    steps.push_back(std::make_unique<Step>("atan2(x, y)", "atan2(x, y)", 2));
    steps.push_back(std::make_unique<Step>("x^2", "x^2", 1));
    return steps;
}

/// An expression as each side writes it.
struct Pair {
    std::string ours;
    std::string theirs;
};

/// Writes expressions that both languages read and mean the same by.
class Writer {
public:
    explicit Writer(std::mt19937_64& source) : random(source) {}

    Pair real(int depth) {
        if (depth == 0) {
            return same(pick(leaves));
        }
        switch (random() % 8) {
            case 0:
                return joined({same("("), real(depth - 1), same(")")});
            case 1:
            case 2: {
                const std::size_t which = random() % functions.size();
                return joined(
                    {{functions[which], "step" + std::to_string(which)}, same("("), real(depth - 1), same(")")});
            }
            case 3:
                return joined({same("("), truth(depth - 1), same(" ? "), real(depth - 1), same(" : "), real(depth - 1),
                               same(")")});
            case 4:
                return joined({same("(-"), same(pick(leaves)), same(")")});
            case 5:
                return power(depth);
            default:
                return joined({same("("), real(depth - 1), same(pick(operators)), real(depth - 1),
                               same(pick(operators)), same(pick(leaves)), same(")")});
        }
    }

private:
    /// muParser has no way to take our power for its own sign of it.
    Pair power(int depth) {
        const Pair base = real(depth - 1);
        if (random() % 3 == 0) {
            return joined({{"(", "step16("}, base, {"^2)", ")"}});
        }
        const bool isAngle = random() % 3 == 0;
        return joined({{isAngle ? "atan2(" : "(", isAngle ? "step15(" : "step14("},
                       base,
                       {isAngle ? ", " : " ^ ", ", "},
                       real(depth - 1),
                       same(")")});
    }

    Pair truth(int depth) {
        if (depth == 0 || random() % 3 != 0) {
            return joined({same("("), real(depth), same(pick(comparisons)), real(depth), same(")")});
        }
        return joined(
            {same("("), truth(depth - 1), same(random() % 2 == 0 ? " && " : " || "), truth(depth - 1), same(")")});
    }

    static Pair same(const std::string& text) { return {text, text}; }

    static Pair joined(std::initializer_list<Pair> parts) {
        Pair whole;
        for (const Pair& part : parts) {
            whole.ours += part.ours;
            whole.theirs += part.theirs;
        }
        return whole;
    }

    template <std::size_t count>
    std::string pick(const std::array<const char*, count>& all) {
        return all[random() % count];
    }

    static constexpr std::array leaves{"x", "y", "z", "x", "y", "z", "1.5", "0.25", "3.0", "1e-3", "7e5", "1e308"};
    static constexpr std::array operators{" + ", " - ", " * ", " / "};
    static constexpr std::array comparisons{" < ", " <= ", " > ", " >= ", " == ", " != "};

    std::mt19937_64& random;
};

TEST(Expression, givesWhatMuParserGivesTo2UlpAStep) {
    std::cout << "seed " << seed() << " (VELMORAK_SEED)\n";
    std::mt19937_64 random(seed());
    const auto steps = allSteps();
    std::array<double, 3> variables{};
    mu::Parser parser;
    parser.EnableOptimizer(false);
    for (std::size_t i = 0; i < 3; ++i) {
        parser.DefineVar(std::string(1, static_cast<char>('x' + i)), &variables[i]);
    }
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (const std::string name = "step" + std::to_string(i); steps[i]->takesTwo()) {
            parser.DefineFunUserData(name, Step::two, steps[i].get(), false);
        } else {
            parser.DefineFunUserData(name, Step::one, steps[i].get(), false);
        }
    }
    const Schema schema({{"x"}, {"y"}, {"z"}});
    Writer writer(random);
    std::vector<Column::Reals> columns;
    for (int round = 0; round < 100'000; ++round) {
        if (round % 10 == 0) {
            columns = randomColumns(random);
        }
        const Pair text = writer.real(1 + round % 4);
        const ColumnPtr ours = Expression(text.ours, schema).evaluate(chunkOf(columns));
        parser.SetExpr(text.theirs);
        for (std::size_t row = 0; row < rowCount; ++row) {
            variables = {columns[0][row], columns[1][row], columns[2][row]};
            const double theirs = parser.Eval();
            ASSERT_TRUE(isSame(ours->reals()[row], theirs))
                << text.ours << " for " << variables[0] << ", " << variables[1] << ", " << variables[2] << ": "
                << ours->reals()[row] << ", muParser: " << theirs;
        }
    }
    for (const auto& step : steps) {
        EXPECT_EQ(step->complaint(), "");
        std::cout << step->text() << ": at most " << step->worst() << " ulp\n";
    }
}

/// The same values as lists of x and y with a z for each, and as a row of each value.
struct Twins {
    Chunk lists;
    Chunk rows;
};

Twins randomTwins(std::mt19937_64& random, std::size_t rows) {
    std::vector<Column::Reals> flat(3);
    Column::Reals single;
    std::vector<std::uint64_t> offsets{0};
    for (std::size_t row = 0; row < rows; ++row) {
        single.push_back(randomValue(random));
        offsets.push_back(offsets.back() + (random() % 3 == 0 ? 0 : random() % 7));
        for (std::uint64_t at = offsets[row]; at < offsets[row + 1]; ++at) {
            flat[0].push_back(randomValue(random));
            flat[1].push_back(randomValue(random));
            flat[2].push_back(single.back());
        }
    }
    Twins twins{chunkOf({flat[0], flat[1], single}), chunkOf(flat)};
    twins.lists.rows = rows;
    for (std::size_t i = 0; i < 2; ++i) {
        twins.lists.columns[i] = std::make_shared<Column>(Column{flat[i], offsets});
    }
    return twins;
}

TEST(ExpressionList, givesWhatARowOfEachValueGives) {
    std::mt19937_64 random(seed());
    const Schema lists({{"x", ColumnType::Real, true}, {"y", ColumnType::Real, true}, {"z"}});
    const Schema rows({{"x"}, {"y"}, {"z"}});
    Writer writer(random);
    Twins twins;
    int compared = 0;
    for (int round = 0; round < 5'000; ++round) {
        if (round % 50 == 0) {
            twins = randomTwins(random, round % 1000 == 0 ? 3000 : 40);
        }
        const std::string text = writer.real(1 + round % 4).ours;
        const Expression expression(text, lists);
        if (!expression.isList()) {
            continue;
        }
        const ColumnPtr ours = expression.evaluate(twins.lists);
        const ColumnPtr expected = Expression(text, rows).evaluate(twins.rows);
        ASSERT_EQ(ours->offsets, twins.lists.columns[0]->offsets);
        for (std::size_t i = 0; i < expected->valueCount(); ++i) {
            ASSERT_TRUE(isSame(ours->reals()[i], expected->reals()[i])) << text << ", value " << i;
        }
        ++compared;
    }
    EXPECT_GT(compared, 2'000);
}

/// Each row alone, in each place of four, and among others: the last few rows of a block have no way of their own.
TEST(Expression, hasTheSameBitsForAFunctionInWhateverPlaceARowStands) {
    std::mt19937_64 random(seed());
    const Schema schema({{"x"}, {"y"}});
    for (const char* text : {"exp(x)", "log(x)", "x^y", "hypot(x, y)", "sqrt(x)", "sin(x)", "lgamma(x)", "asinh(x)",
                             "x * y - x / y", "x < y", "x != y", "x >= y && !(x == y)", "abs(-x)", "x^2"}) {
        const Expression expression(text, schema);
        Column::Reals x(1029);
        Column::Reals y(1029);
        for (std::size_t row = 0; row < x.size(); ++row) {
            x[row] = randomValue(random);
            y[row] = randomValue(random);
        }
        const ColumnPtr whole = asReals(expression.evaluate(chunkOf({x, y})));
        for (std::size_t row = 0; row < x.size(); ++row) {
            ASSERT_TRUE(
                isSame(asReals(expression.evaluate(chunkOf({{x[row]}, {y[row]}})))->reals()[0], whole->reals()[row]))
                << text << " of " << x[row] << ", " << y[row] << " in row " << row;
        }
    }
}

}  // namespace
}  // namespace velmorak
