#include "ColumnarTables.h"

#include "WrittenColumns.h"
#include "shared/WrittenFile.h"

#include <parquet/write/ParquetRows.h>

#include <fstream>
#include <utility>

namespace velmorak {
namespace {

/// A file of bytes that is being written. Nothing is on disk before the first call; without complete() it is removed.
class OutputFile {
public:
    /// @param context outlives this.
    OutputFile(std::string name, RunContext& context) : name(std::move(name)), context(context) {}

    void write(const std::string& bytes);
    void complete();

private:
    void check(bool isWritten) const;

    std::string name;
    RunContext& context;
    std::unique_ptr<ResultFile> file;
    std::ofstream out;
};

void OutputFile::write(const std::string& bytes) {
    if (!file) {
        file = context.beginResult(name);
        out.open(file->path(), std::ios::binary);
    }
    check(static_cast<bool>(out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()))));
}

void OutputFile::complete() {
    out.close();
    check(static_cast<bool>(out));
    file->keep();
}

void OutputFile::check(bool isWritten) const {
    if (!isWritten) {
        throw Failure("\"" + name + "\" cannot be written");
    }
}

class ParquetWriting : public Accumulation, public ColumnFile {
public:
    ParquetWriting(const std::string& fileName, Schema schema, RunContext& context);

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<WrittenColumns>(*this); }
    void finish(AccumulatorState& state, Results&) override;

private:
    const Schema& schema() const override { return types; }
    void append(const std::vector<ColumnPtr>& columns, std::size_t count) const override;

    const Schema types;
    /// Take the rows of the states, which the run merges one at a time.
    mutable OutputFile file;
    mutable parquet::ParquetRows rows;
};

ParquetWriting::ParquetWriting(const std::string& fileName, Schema schema, RunContext& context)
    : types(std::move(schema)),
      file(fileName, context),
      rows(types, [this](const std::string& bytes) { file.write(bytes); }) {}

void ParquetWriting::append(const std::vector<ColumnPtr>& columns, std::size_t count) const {
    rows.append(columns, count);
}

void ParquetWriting::finish(AccumulatorState& state, Results&) {
    static_cast<WrittenColumns&>(state).handOver();
    rows.finish();
    file.complete();
}

/// Writes a table as a Parquet file. It is streamed, so it may be larger than memory.
class ParquetWriterKind : public Accumulator {
public:
    std::string name() const override { return "ParquetWriter"; }
    std::string summary() const override { return "Writes a table as a Parquet file."; }
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

std::string ParquetWriterKind::notes() const {
    return R"(`ParquetTable` reads every value back to the last bit. Reals are written as `DOUBLE`, integers as `INT64`, booleans as
`BOOLEAN`, texts as `STRING`, lists as `LIST`; no value is missing: NaN stays NaN. Columns whose values repeat are written with a
dictionary; all are compressed with zstd and have checksums, and smallest and largest values for each row group of 131,072 rows.
The file has the same bytes for any number of threads. See [Parquet files](../parquet.md).)";
}

Ports ParquetWriterKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {
        {.name = "table", .description = "Table to write.", .type = ValueType::Table},
        writtenFileInput(".parquet"),
    };
    return ports;
}

std::unique_ptr<Accumulation> ParquetWriterKind::prepare(const Arguments& arguments, const Schema* schema,
                                                         RunContext& context) const {
    if (!schema || schema->size() == 0) {
        throw Failure("table", schema ? "the table has no columns" : "nothing is wired");
    }
    return std::make_unique<ParquetWriting>(writtenFileName(arguments, context, ".parquet"), *schema, context);
}

}  // namespace

std::unique_ptr<Kind> makeParquetWriter() {
    return std::make_unique<ParquetWriterKind>();
}

}  // namespace velmorak
