#include "Target.h"

#include <velmorak/Expression.h>
#include <velmorak/Failure.h>

#include <cstring>
#include <limits>

// An expression over columns of every type. It gives a row the same value, to the last bit, whether the row is
// alone or among others.

namespace velmorak::fuzz {
namespace {

template <typename Values>
ColumnPtr column(Values values, std::vector<std::uint64_t> offsets = {}) {
    return std::make_shared<const Column>(Column{std::move(values), std::move(offsets)});
}

Schema schema() {
    return Schema({{"x"},
                   {"y"},
                   {"n", ColumnType::Integer},
                   {"m", ColumnType::Integer},
                   {"flag", ColumnType::Boolean},
                   {"tag", ColumnType::Text},
                   {"px", ColumnType::Real, true},
                   {"q", ColumnType::Integer, true},
                   {"ok", ColumnType::Boolean, true},
                   {"label", ColumnType::Text, true}});
}

Chunk table() {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    const std::vector<std::uint64_t> ends{0, 2, 2, 3, 6, 7};
    Chunk chunk;
    chunk.rows = 5;
    chunk.columns = {column(Column::Reals{1.5, -0.0, nan, infinity, -1e308}),
                     column(Column::Reals{2.0, 0.0, 1e-320, -infinity, 3.0}),
                     column(Column::Integers{0, -1, least, most, 7}),
                     column(Column::Integers{2, 3, -1, 0, 64}),
                     column(Column::Booleans{1, 0, 1, 0, 1}),
                     column(Column::Texts{"", "a", "é", "b c", "a"}),
                     column(Column::Reals{1.0, -2.0, nan, 0.5, 1e300, -0.0, infinity}, ends),
                     column(Column::Integers{1, -1, least, 0, 5, 3, most}, ends),
                     column(Column::Booleans{1, 0, 1, 1, 1, 0, 0}, ends),
                     column(Column::Texts{"e", "mu", "", "tau", "e", "é", "x"}, ends)};
    return chunk;
}

Chunk rowOf(const Chunk& chunk, std::size_t row) {
    std::vector<std::uint8_t> keep(chunk.rows, 0);
    keep[row] = 1;
    Chunk single;
    single.firstRow = row;
    single.rows = 1;
    for (const ColumnPtr& column : chunk.columns) {
        single.columns.push_back(keepRows(*column, keep));
    }
    return single;
}

ColumnPtr evaluated(const Expression& expression, const Chunk& chunk) {
    try {
        return expression.evaluate(chunk);
    } catch (const Failure&) {
        return nullptr;
    }
}

bool isSame(const Column& a, const Column& b) {
    if (a.type() != b.type() || a.offsets != b.offsets || a.valueCount() != b.valueCount()) {
        return false;
    }
    if (a.type() != ColumnType::Real) {
        return a.values == b.values;
    }
    return a.valueCount() == 0 || std::memcmp(a.reals().data(), b.reals().data(), a.valueCount() * sizeof(double)) == 0;
}

void evaluateEachWay(const Expression& expression) {
    const Chunk chunk = table();
    const ColumnPtr whole = evaluated(expression, chunk);
    bool isFailing = false;
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        const ColumnPtr alone = evaluated(expression, rowOf(chunk, row));
        isFailing = isFailing || alone == nullptr;
        if (!whole || !alone) {
            continue;
        }
        require(alone->type() == expression.type() && alone->isList() == expression.isList(),
                "a value has the type that was announced");
        std::vector<std::uint8_t> keep(chunk.rows, 0);
        keep[row] = 1;
        require(isSame(*keepRows(*whole, keep), *alone), "a row has the same value alone and among others");
    }
    require(isFailing == (whole == nullptr), "rows fail together where one of them fails alone");
}

void read(std::string_view text) {
    std::vector<std::string> names;
    const std::string refusal = expressionRefusal(text);
    try {
        names = namesIn(text);
        evaluateEachWay(Expression(text, schema(), {{"cut", 0.25}}));
    } catch (const Failure&) {
    }
    require(refusal.empty() || names.empty(), "an expression that is refused has no names");
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velmorak::fuzz::read(velmorak::fuzz::textOf(data, size));
    return 0;
}
