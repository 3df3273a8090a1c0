#pragma once

#include <velmorak/Collection.h>
#include <velmorak/Kind.h>
#include <velmorak/short/Columns.h>
#include <velmorak/short/RowArguments.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

namespace shortkinds {

/// What a row-wise kind is made of, shared by its operations.
template <typename Function>
struct RowFunction {
    using Arguments = RowArguments<typename Signature<Function>::Arguments>;
    using Result = std::remove_cvref_t<typename Signature<Function>::Result>;
    using Columns = ColumnMakers<ValueTypes<Result>>;
    static constexpr bool mayDrop = MayBeAbsent<Result>::value;

    std::vector<InputDescription> inputs;
    std::vector<ColumnDescription> columns;
    Function function;
};

template <typename Function>
class RowFunctionOperation : public RowOperation {
public:
    using Parts = RowFunction<Function>;

    RowFunctionOperation(const Parts& parts, const velmorak::Arguments& arguments, const Schema& columns)
        : function(parts.function), parameters(parts.inputs, arguments, columns), result(columns) {
        for (const ColumnDescription& column : parts.columns) {
            if (columns.find(column.name)) {
                throw Failure("table", "the table already has a column \"" + column.name +
                                           "\"; leave it out or rename it before this plug-in");
            }
        }
        Parts::Columns::addTo(result, parts.columns);
    }

    const Schema& schema() const override { return result; }

    Chunk apply(const Chunk& chunk) const override {
        typename Parts::Columns made(chunk.rows);
        Chunk out = chunk;
        if constexpr (Parts::mayDrop) {
            fillKept(chunk, made, out);
        } else {
            parameters.forEachRow(chunk, [&](std::size_t row, const auto&... values) {
                made.set(row, Values<typename Parts::Result>::tie(function(values...)));
            });
        }
        std::move(made).appendTo(out.columns, out.rows);
        return out;
    }

private:
    void fillKept(const Chunk& chunk, typename Parts::Columns& made, Chunk& out) const {
        using Present = typename MayBeAbsent<typename Parts::Result>::Present;
        std::vector<std::uint8_t> keep(chunk.rows);
        out.rows = 0;
        parameters.forEachRow(chunk, [&](std::size_t row, const auto&... values) {
            if (auto result = function(values...)) {
                made.set(out.rows++, Values<Present>::tie(std::move(*result)));
                keep[row] = 1;
            }
        });
        if (out.rows < chunk.rows) {
            for (ColumnPtr& column : out.columns) {
                column = column ? keepRows(*column, keep) : nullptr;
            }
        }
    }

    const Function function;
    const typename Parts::Arguments parameters;
    Schema result;
};

template <typename Function>
class RowFunctionKind : public Described<velmorak::RowWise> {
public:
    RowFunctionKind(KindDescription about, RowFunction<Function> parts)
        : Described(std::move(about)), parts(std::move(parts)) {}

    Ports ports(const ValueTexts& /*values*/) const override {
        Ports ports;
        ports.inputs = {{.name = "table", .description = "Rows to work on.", .type = ValueType::Table}};
        RowFunction<Function>::Arguments::addInputs(parts.inputs, ports.inputs);
        ports.outputs = {{.name = "table", .description = description(), .type = ValueType::Table}};
        return ports;
    }
    std::string refusal(const std::string& input, const std::string& value) const override {
        return RowFunction<Function>::Arguments::refusal(parts.inputs, input, value);
    }
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& /*context*/) const override {
        return std::make_unique<RowFunctionOperation<Function>>(parts, arguments, schema);
    }

private:
    std::string description() const {
        std::string names;
        for (const ColumnDescription& column : parts.columns) {
            names += (names.empty() ? "" : ", ") + column.name;
        }
        return "The table with the new columns " + names + ".";
    }

    RowFunction<Function> parts;
};

}  // namespace shortkinds

/// Registers a kind that adds columns to a table: in each row, the values that a function returns. The function is
/// called on several threads at once, so it changes nothing outside itself.
/// @param inputs one for each parameter of the function. The type of the parameter says what it is: an expression of
///               columns (double, std::int64_t, bool, std::string_view, std::span<const double> for a list), or a value
///               for all rows (Constant).
/// @param columns one for each value that the function returns: a number, bool, std::string or std::vector<double>, or
///                a std::array, std::pair or std::tuple of them. A function that returns a std::optional drops the rows
///                for which there is nothing in it.
template <std::size_t inputCount, std::size_t columnCount, typename Function>
void rowWise(Registry& registry, KindDescription about, const InputDescription (&inputs)[inputCount],
             const ColumnDescription (&columns)[columnCount], Function function) {
    using Parts = shortkinds::RowFunction<Function>;
    static_assert(inputCount == Parts::Arguments::count, "describe one input for each parameter of the function");
    static_assert(columnCount == Parts::Columns::count, "describe one column for each value that the function returns");
    registry.add(std::make_unique<shortkinds::RowFunctionKind<Function>>(
        std::move(about),
        Parts{{std::begin(inputs), std::end(inputs)}, {std::begin(columns), std::end(columns)}, std::move(function)}));
}

}  // namespace velmorak
