#pragma once

#include "csv/CsvTypes.h"

#include <set>

namespace velmorak {

struct CsvOptions {
    std::filesystem::path file;
    CsvForm form;
    bool hasHeader = true;
    bool isSkipping = false;  ///< Skip rows that cannot be read, instead of failing.
    std::string missing;      ///< Text of a missing value, besides an empty field.
    std::map<std::string, ColumnType> types;
    std::size_t rowsToInfer = 10000;  ///< Rows that the types are inferred from.
    bool ignoresOtherTypes = false;   ///< Types of columns that the file does not have are no mistake.
};

class CsvReader : public TableReader {
public:
    /// Infers types that are not given from the first rows.
    /// @param runContext outlives this.
    /// @throws Failure if the file cannot be opened or its first record cannot be read.
    CsvReader(CsvOptions csvOptions, RunContext& runContext);
    ~CsvReader() override;

    const Schema& schema() const override { return columns; }
    /// Columns whose type was inferred without any value.
    const std::set<std::string>& columnsWithoutValues() const { return unseen; }
    bool next(Chunk& chunk) override;
    std::optional<double> fraction() const override { return records.fraction(); }

private:
    std::vector<std::string> readHeader(CsvRecords& from);
    void findColumns();
    void lookAtRows(CsvRecords& sample, std::vector<TypeGuess>& guesses);
    bool isFull(const std::vector<Column>& target, std::size_t rows);
    bool readRow(std::vector<Column>& target, std::size_t& rows);
    CsvField withUtf8(const CsvField& field, ColumnType type);
    std::string complaintAbout(std::vector<Column>& target);
    void reportSkipped();

    CsvOptions options;
    RunContext& context;
    CsvRecords records;
    Schema columns;
    std::set<std::string> unseen;
    std::vector<CsvField> fields;
    std::optional<Failure> failure;  ///< Thrown after the rows.
    std::vector<std::size_t> textColumns;
    std::size_t maxRows = 0;      ///< In a chunk.
    std::size_t rowBytes = 0;     ///< Of a row without its texts.
    std::size_t rowsCounted = 0;  ///< Rows of the current chunk that are counted in textBytes.
    std::size_t textBytes = 0;    ///< In these rows.
    std::uint64_t recordsSeen = 0;
    std::uint64_t skippedRows = 0;
    std::uint64_t firstRepaired = 0;  ///< Line of the first text that is not UTF-8; 0 for none.
    std::string repaired;
    std::string firstComplaint;
};

}  // namespace velmorak
