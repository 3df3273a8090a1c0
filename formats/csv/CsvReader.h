#pragma once

#include "csv/CsvLayout.h"
#include "csv/CsvRepairs.h"
#include "csv/CsvRowReader.h"
#include "csv/CsvStream.h"
#include "csv/Geant4Header.h"

#include <velmorak/Parts.h>

#include <set>

namespace velmorak {

struct CsvOptions {
    std::filesystem::path file;
    CsvForm form;
    bool hasHeader = true;
    bool isSkipping = false;  ///< Skip rows that cannot be read, instead of failing.
    std::string missing;      ///< Text of a missing value, besides an empty field.
    std::map<std::string, ColumnType> types;
    std::set<std::string> dates = {};  ///< Columns of type real whose texts are dates.
    std::size_t rowsToInfer = 10000;   ///< Rows that the types are inferred from.
    bool ignoresOtherTypes = false;    ///< Types of columns that the file does not have are not an error.
    bool readsColumnsOnly = false;     ///< Nobody will ask for rows.
    bool readsInOrder = false;         ///< Rows before a bad one are kept, even if they are in the same chunk.
    CsvEncoding encoding = CsvEncoding::Automatic;
    bool hasUnits = false;  ///< The record after the header holds the units of the columns.
    char decimal = '.';
    char thousands = '\0';
};

/// @throws Failure that names the file and the line.
[[noreturn]] void failAtLine(const CsvOptions& options, std::uint64_t line, const std::string& complaint);

/// Reads a text file as a table. The file is cut at the ends of records from front to back; chunks are parsed in
/// complete, so that several threads may do it.
class CsvReader : public TableReader, public SeekableReader {
public:
    /// Infers types that are not given from the first rows; a column of integers becomes real if a later row needs it.
    /// @param context outlives this.
    /// @throws Failure if the file cannot be opened or its first record cannot be read.
    CsvReader(CsvOptions csvOptions, RunContext& context);
    ~CsvReader() override;

    const Schema& schema() const override { return columns; }
    /// Columns whose type was inferred without any value.
    const std::set<std::string>& columnsWithoutValues() const { return unseen; }
    void selectColumns(const std::vector<bool>& needed) override;
    bool next(Chunk& chunk) override;
    void complete(Chunk& chunk) const override;
    std::optional<double> fraction() const override { return stream.fraction(); }
    /// The byte and the line of the next record, in files that are neither compressed nor converted.
    std::optional<std::string> bookmark() const override;
    void seek(std::uint64_t file, const ChunkStart& start) override;

private:
    struct Sample;

    void checkNotation() const;
    void readFirstRecords(Sample& sample);
    void readHeader(CsvRecords& records, Sample& sample);
    void readUnits(CsvRecords& records, Sample& sample);
    void lookAtRows(Sample& sample);
    void lookAtRows(CsvStream& first, Sample& sample);
    void widenIntegers(Sample& sample) const;
    void takeHeader();
    void findColumns();
    void addColumns(const Sample& sample);
    void addColumnsOf(const Geant4Header& given);
    void checkTypes() const;
    std::size_t recordsBeforeRows() const;

    CsvOptions options;
    RunContext& context;
    CsvLayout layout;
    CsvStream stream;
    std::optional<Geant4Header> header;  ///< That says everything about the columns.
    Schema columns;
    std::set<std::string> unseen;
    std::vector<CsvField> fields;
    CsvChunkLimits limits;
    CsvRepairs repairs;
    CsvRowReader rows;
    bool isInOrder;
};

}  // namespace velmorak
