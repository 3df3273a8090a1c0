#pragma once

#include <velmorak/ChunkSize.h>
#include <velmorak/Kind.h>
#include <velmorak/short/Columns.h>
#include <velmorak/short/Describe.h>
#include <velmorak/short/Signature.h>
#include <velmorak/short/Values.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace velmorak {

namespace shortkinds {

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
            throw Failure("file", "\"" + file.string() + "\" is not a file that can be read");
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

}  // namespace velmorak
