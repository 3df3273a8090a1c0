#pragma once

#include <velmorak/ChunkSize.h>
#include <velmorak/Kind.h>
#include <velmorak/short/Columns.h>
#include <velmorak/short/RowArguments.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace velmorak {

namespace shortkinds {

/// The tail of a tuple.
template <typename Tuple>
struct Rest;
template <typename First, typename... Others>
struct Rest<std::tuple<First, Others...>> {
    using Type = std::tuple<Others...>;
};

/// Rows whose values a function computes from their number. The columns are made on all threads.
template <typename Call, typename Columns, typename Result>
class ComputedRows : public TableReader {
public:
    ComputedRows(std::uint64_t rows, const std::vector<ColumnDescription>& about, Call call)
        : total(rows), columns(schemaOf<Columns>(about)), call(std::move(call)) {}

    const Schema& schema() const override { return columns; }
    bool next(Chunk& chunk) override {
        chunk = {};
        chunk.number = number;
        chunk.firstRow = done;
        chunk.rows = static_cast<std::size_t>(std::min<std::uint64_t>(total - done, rowsInChunk(columns)));
        number += chunk.rows > 0 ? 1 : 0;
        done += chunk.rows;
        return chunk.rows > 0;
    }
    void complete(Chunk& chunk) const override {
        Columns made(chunk.rows);
        for (std::size_t row = 0; row < chunk.rows; ++row) {
            made.set(row, Values<Result>::tie(call(chunk.firstRow + row)));
        }
        chunk.columns.clear();
        std::move(made).appendTo(chunk.columns, chunk.rows);
    }
    std::optional<double> fraction() const override {
        return total == 0 ? 1.0 : static_cast<double>(done) / static_cast<double>(total);
    }

private:
    std::uint64_t total;
    Schema columns;
    Call call;
    std::uint64_t done = 0;
    std::uint64_t number = 0;
};

template <typename Function>
class ComputedSource : public Described<Source> {
public:
    using Constants = typename Rest<typename Signature<Function>::Arguments>::Type;
    using Result = std::remove_cvref_t<typename Signature<Function>::Result>;
    using Columns = ColumnMakers<ValueTypes<Result>>;
    static constexpr std::size_t inputCount = std::tuple_size_v<Constants>;

    ComputedSource(KindDescription about, std::vector<InputDescription> inputs, std::vector<ColumnDescription> columns,
                   Function function)
        : Described(std::move(about)),
          inputs(std::move(inputs)),
          columns(std::move(columns)),
          function(std::move(function)) {}

    Ports ports(const ValueTexts& /*values*/) const override {
        Ports ports;
        ports.inputs = {{.name = "rows",
                         .description = "Number of rows.",
                         .type = ValueType::Number,
                         .value = "1000",
                         .minimum = 0,
                         .maximum = 0x1p53,
                         .isInteger = true}};
        forEachPosition<inputCount>([&](auto position) {
            using Type = std::tuple_element_t<position, Constants>;
            ports.inputs.push_back(constantInput<Type>(inputs[position]));
        });
        ports.outputs = {{.name = "table", .description = "The rows.", .type = ValueType::Table}};
        return ports;
    }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& /*context*/) const override {
        const auto rows = static_cast<std::uint64_t>(arguments.integer("rows"));
        return [&]<std::size_t... i>(std::index_sequence<i...>)->std::unique_ptr<TableReader> {
            auto constants =
                std::make_tuple(constantOf<std::tuple_element_t<i, Constants>>(arguments, inputs[i].name)...);
            auto call = [function = function, constants = std::move(constants)](std::uint64_t row) {
                return function(row, std::get<i>(constants)...);
            };
            return std::make_unique<ComputedRows<decltype(call), Columns, Result>>(rows, columns, std::move(call));
        }
        (std::make_index_sequence<inputCount>());
    }
    bool tellsColumns() const override { return true; }

private:
    std::vector<InputDescription> inputs;
    std::vector<ColumnDescription> columns;
    Function function;
};

}  // namespace shortkinds

}  // namespace velmorak
