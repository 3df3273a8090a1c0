#pragma once

#include "csv/CsvLayout.h"
#include "csv/CsvRepairs.h"
#include "csv/CsvStream.h"

#include <velmorak/Failure.h>
#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

struct CsvOptions;

/// How large the chunks of a file are. A chunk ends early where texts are long, so that such a chunk can only be found
/// by reading its rows.
struct CsvChunkLimits {
    std::size_t maxRows = 0;
    std::size_t maxBytesOfFile = 0;  ///< For a chunk that is not read in order.
    std::size_t rowBytes = 0;        ///< Of a row without its texts and lists.
    std::vector<std::size_t> textColumns{};
};

CsvChunkLimits chunkLimitsOf(const Schema& columns);

/// Reads row by row, where a bad row is skipped or ends the table, and where long texts end a chunk early.
/// Threads: one at a time.
class CsvRowReader {
public:
    /// @param options and all that follow outlive this.
    CsvRowReader(const CsvOptions& options, const CsvLayout& layout, CsvStream& stream, const Schema& columns,
                 const CsvRepairs& repairs, RunContext& context);

    /// @return false at the end of the file. @throws Failure once all rows before a bad one have been returned;
    /// Stopped.
    bool next(Chunk& chunk, const CsvChunkLimits& limits);
    bool hasFailed() const { return failure.has_value(); }
    void reportSkipped();

private:
    bool isFull(std::size_t rows, const CsvChunkLimits& limits);
    void countTexts(const CsvChunkLimits& limits);
    bool readRow(std::vector<Column>& target, std::size_t& rows, const CsvChunkLimits& limits);

    const CsvOptions& options;
    const CsvLayout& layout;
    CsvStream& stream;
    const Schema& columns;
    const CsvRepairs& repairs;
    RunContext& context;
    std::vector<CsvField> fields;
    std::optional<Failure> failure;  ///< Thrown after the rows.
    std::size_t textBytes = 0;       ///< Of the texts and lists in the rows of the current chunk.
    std::uint64_t recordsSeen = 0;
    std::uint64_t skippedRows = 0;
    std::string firstComplaint;
};

}  // namespace velmorak
