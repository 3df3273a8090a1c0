#include "Table/cuts/Condition.h"

#include <velmorak/Kind.h>

#include <algorithm>

namespace velmorak {

Condition::Condition(const std::string& input, const std::string& text, const Schema& schema,
                     const std::map<std::string, double>& numbers)
    : expression(text, schema, numbers) {
    if (expression.isList()) {
        throw Failure(input, "\"" + text + "\" is a list in each row; expected a single value");
    }
    if (expression.type() == ColumnType::Text) {
        throw Failure(input, "\"" + text + "\" is a text; expected a boolean or a number");
    }
}

std::vector<std::uint8_t> Condition::truthIn(const Chunk& chunk) const {
    const ColumnPtr column = expression.evaluate(chunk);
    if (column->type() == ColumnType::Boolean) {
        return column->booleans();
    }
    std::vector<std::uint8_t> truth(column->valueCount());
    if (column->type() == ColumnType::Integer) {
        std::transform(column->integers().begin(), column->integers().end(), truth.begin(),
                       [](std::int64_t value) { return static_cast<std::uint8_t>(value != 0); });
    } else {
        std::transform(column->reals().begin(), column->reals().end(), truth.begin(),
                       [](double value) { return static_cast<std::uint8_t>(value < 0.0 || value > 0.0); });
    }
    return truth;
}

std::size_t countTrue(const std::vector<std::uint8_t>& truth) {
    return static_cast<std::size_t>(std::count_if(truth.begin(), truth.end(), [](auto k) { return k != 0; }));
}

Chunk onlyRows(const Chunk& chunk, const std::vector<std::uint8_t>& keep) {
    const std::size_t kept = countTrue(keep);
    if (kept == chunk.rows) {
        return chunk;
    }
    Chunk out = chunk;
    out.rows = kept;
    for (ColumnPtr& column : out.columns) {
        column = column ? keepRows(*column, keep) : nullptr;
    }
    return out;
}

}  // namespace velmorak
