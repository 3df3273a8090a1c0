#include "velmorak/Expression.h"

#include <gtest/gtest.h>
#include <muParser.h>

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace velmorak {
namespace {

/// Writes expressions that both languages read and mean the same by.
class Writer {
public:
    explicit Writer(std::uint64_t seed) : random(seed) {}

    std::string real(int depth) {
        if (depth == 0)
            return leaf();
        switch (random() % 6) {
            case 0:
                return "(" + real(depth - 1) + ")";
            case 1:
                return pick(functions) + "(" + real(depth - 1) + ")";
            case 2:
                return "(" + truth(depth - 1) + " ? " + real(depth - 1) + " : " + real(depth - 1) + ")";
            case 3:
                return "(-" + leaf() + ")";
            default:
                return "(" + real(depth - 1) + pick(operators) + real(depth - 1) + pick(operators) + leaf() + ")";
        }
    }

    std::string truth(int depth) {
        if (depth == 0 || random() % 3 != 0)
            return "(" + real(depth) + pick(comparisons) + real(depth) + ")";
        return "(" + truth(depth - 1) + (random() % 2 == 0 ? " && " : " || ") + truth(depth - 1) + ")";
    }

private:
    template <std::size_t count>
    std::string pick(const std::array<const char*, count>& all) {
        return all[random() % count];
    }

    std::string leaf() { return pick(leaves); }

    static constexpr std::array leaves{"x", "y", "z", "1.5", "0.25", "3.0", "1e-3", "7e5"};
    static constexpr std::array operators{" + ", " - ", " * ", " / ", "^"};
    static constexpr std::array comparisons{" < ", " <= ", " > ", " >= ", " == ", " != "};
    // Not asinh, acosh, atanh, log2 and abs: the other side computes them by formulas that lose digits, and
    // abs(0) is -0 there.
    static constexpr std::array functions{"sin",  "cos",  "tan",  "asin",  "acos", "atan",
                                          "sinh", "cosh", "tanh", "log10", "exp",  "sqrt"};

    std::mt19937_64 random;
};

bool isSame(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

std::vector<std::array<double, 3>> points() {
    std::vector<std::array<double, 3>> all;
    const double infinity = std::numeric_limits<double>::infinity();
    const std::array special{0.0, -0.0, 1.0, -1.0, infinity, -infinity, std::nan(""), 5e-324, 1.7e308, 0.5};
    std::mt19937_64 random(99);
    for (std::size_t i = 0; i < 6; ++i)
        all.push_back({special[random() % 10], special[random() % 10], special[random() % 10]});
    std::normal_distribution<double> normal(0.0, 3.0);
    for (std::size_t i = 0; i < 6; ++i)
        all.push_back({normal(random), normal(random), normal(random)});
    return all;
}

TEST(Expression, givesWhatMuParserGives) {
    const Schema schema({{"x"}, {"y"}, {"z"}});
    const auto rows = points();
    Chunk chunk;
    chunk.rows = rows.size();
    for (std::size_t column = 0; column < 3; ++column) {
        Column::Reals values;
        for (const auto& row : rows)
            values.push_back(row[column]);
        chunk.columns.push_back(std::make_shared<Column>(Column{values, {}}));
    }
    std::array<double, 3> variables{};
    mu::Parser parser;
    parser.EnableOptimizer(false);
    parser.DefineVar("x", &variables[0]);
    parser.DefineVar("y", &variables[1]);
    parser.DefineVar("z", &variables[2]);
    Writer writer(4711);
    for (int round = 0; round < 20'000; ++round) {
        const std::string text = writer.real(1 + round % 4);
        const ColumnPtr ours = Expression(text, schema).evaluate(chunk);
        parser.SetExpr(text);
        for (std::size_t row = 0; row < rows.size(); ++row) {
            variables = rows[row];
            const double theirs = parser.Eval();
            ASSERT_TRUE(isSame(ours->reals()[row], theirs))
                << text << " in row " << row << ": " << ours->reals()[row] << ", muParser: " << theirs;
        }
    }
}

}  // namespace
}  // namespace velmorak
