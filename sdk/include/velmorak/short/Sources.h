#pragma once

#include <velmorak/ChunkSize.h>
#include <velmorak/Collection.h>
#include <velmorak/Kind.h>
#include <velmorak/short/Columns.h>
#include <velmorak/short/RowArguments.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
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

template <typename Columns>
Schema schemaOf(const std::vector<ColumnDescription>& about) {
    Schema schema;
    Columns::addTo(schema, about);
    return schema;
}

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

/// Rows that an author's reader returns one after the other.
template <typename NextRow, typename Columns>
class ReadRows : public TableReader {
public:
    ReadRows(NextRow nextRow, const std::vector<ColumnDescription>& about, std::filesystem::path file,
             const RunContext& context)
        : nextRow(std::move(nextRow)), columns(schemaOf<Columns>(about)), file(std::move(file)), context(context) {}

    const Schema& schema() const override { return columns; }
    bool next(Chunk& chunk) override {
        using Present = typename MayBeAbsent<std::remove_cvref_t<decltype(nextRow())>>::Present;
        chunk = {};
        chunk.number = number;
        chunk.firstRow = done;
        const std::size_t limit = rowsInChunk(columns);
        Columns made(limit);
        while (chunk.rows < limit) {
            auto row = rowAt(done + chunk.rows);
            if (!row) {
                break;
            }
            made.set(chunk.rows++, Values<Present>::tie(std::move(*row)));
        }
        std::move(made).appendTo(chunk.columns, chunk.rows);
        number += chunk.rows > 0 ? 1 : 0;
        done += chunk.rows;
        return chunk.rows > 0;
    }

private:
    auto rowAt(std::uint64_t row) {
        if (row % 1024 == 0 && context.isStopping()) {
            throw Stopped();
        }
        try {
            return nextRow();
        } catch (const Failure& failure) {
            throw Failure("\"" + file.string() + "\", row " + std::to_string(row) + ": " + failure.what());
        }
    }

    NextRow nextRow;
    Schema columns;
    std::filesystem::path file;
    const RunContext& context;
    std::uint64_t done = 0;
    std::uint64_t number = 0;
};

template <typename Open>
class FileSource : public Described<Source> {
public:
    using NextRow = std::remove_cvref_t<typename Signature<Open>::Result>;
    using Result = MayBeAbsent<std::remove_cvref_t<typename Signature<NextRow>::Result>>;
    static_assert(Result::value, "the reader returns a std::optional: a row, or nothing at the end of the file");
    using Columns = ColumnMakers<typename Values<typename Result::Present>::Types>;

    FileSource(KindDescription about, std::vector<ColumnDescription> columns, Open opener)
        : Described(std::move(about)), columns(std::move(columns)), opener(std::move(opener)) {}

    Ports ports(const ValueTexts& /*values*/) const override {
        Ports ports;
        ports.inputs = {{.name = "file", .description = "File to read.", .type = ValueType::Text}};
        ports.outputs = {{.name = "table", .description = "The rows of the file.", .type = ValueType::Table}};
        return ports;
    }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override {
        const std::filesystem::path file = context.inputFile(arguments.text("file"));
        if (!std::filesystem::is_regular_file(file)) {
            throw Failure("file", "\"" + file.string() + "\" is no file that can be read");
        }
        return std::make_unique<ReadRows<NextRow, Columns>>(opener(file), columns, file, context);
    }
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override {
        return {context.inputFile(arguments.text("file"))};
    }
    bool tellsColumns() const override { return true; }

private:
    std::vector<ColumnDescription> columns;
    Open opener;
};

}  // namespace shortkinds

/// Registers a source whose rows a function computes. It gets the number of the row, from 0, then a value for each
/// input. It is called on several threads at once and in any order, so it changes nothing outside itself. The user
/// enters the number of rows as "rows".
/// @param columns one for each value that the function returns, as for rowWise.
template <std::size_t inputCount, std::size_t columnCount, typename Function>
void rowSource(Registry& registry, KindDescription about, const InputDescription (&inputs)[inputCount],
               const ColumnDescription (&columns)[columnCount], Function function) {
    using Kind = shortkinds::ComputedSource<Function>;
    static_assert(inputCount == Kind::inputCount, "describe one input for each parameter after the number of the row");
    static_assert(columnCount == Kind::Columns::count, "describe one column for each value that the function returns");
    registry.add(std::make_unique<Kind>(std::move(about), std::vector<InputDescription>(inputs, inputs + inputCount),
                                        std::vector<ColumnDescription>(columns, columns + columnCount),
                                        std::move(function)));
}

/// As above, for a function of the number of the row alone.
template <std::size_t columnCount, typename Function>
void rowSource(Registry& registry, KindDescription about, const ColumnDescription (&columns)[columnCount],
               Function function) {
    using Kind = shortkinds::ComputedSource<Function>;
    static_assert(Kind::inputCount == 0, "describe one input for each parameter after the number of the row");
    static_assert(columnCount == Kind::Columns::count, "describe one column for each value that the function returns");
    registry.add(std::make_unique<Kind>(std::move(about), std::vector<InputDescription>(),
                                        std::vector<ColumnDescription>(columns, columns + columnCount),
                                        std::move(function)));
}

/// Registers a source that reads a file, which the user enters as "file".
/// @param columns one for each value of a row, as for rowWise.
/// @param opener gets the path of the file and returns a function without parameters that returns the next row as a
///               std::optional, which is empty at the end. Either may throw a Failure; that of a row gets the file and
///               the row in front.
template <std::size_t columnCount, typename Open>
void fileSource(Registry& registry, KindDescription about, const ColumnDescription (&columns)[columnCount],
                Open opener) {
    using Kind = shortkinds::FileSource<Open>;
    static_assert(columnCount == Kind::Columns::count, "describe one column for each value of a row");
    registry.add(std::make_unique<Kind>(
        std::move(about), std::vector<ColumnDescription>(columns, columns + columnCount), std::move(opener)));
}

}  // namespace velmorak
