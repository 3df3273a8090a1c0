#pragma once

#include "csv/CsvPieces.h"

#include <vector>

namespace velmorak {

/// Reads the records of a file one by one.
/// Threads: one at a time.
class CsvStream {
public:
    /// As CsvPieces.
    CsvStream(const std::filesystem::path& file, CsvEncoding encoding, const CsvForm& form, const RunContext& context)
        : pieces(file, encoding, form, context), form(&form), records({}, form) {}

    /// @param fields valid until the next call.
    /// @return false at the end of the file.
    /// @throws as CsvPieces::next.
    bool next(std::vector<CsvField>& fields);
    /// Continues with a piece that has been cut from the file already.
    void takePiece(CsvPiece given);
    /// What follows. Only before the first next, or after takePiece.
    CsvPieces& rest() { return pieces; }
    /// As CsvPieces, for the next record.
    std::optional<CsvPlace> place() const;
    void seek(const CsvPlace& place);
    const CsvRecords& record() const { return records; }
    std::uint64_t line() const { return records.line(); }
    const std::string& complaint() const { return records.complaint(); }
    double fraction() const { return pieces.fraction(); }

private:
    CsvPieces pieces;
    const CsvForm* form;
    CsvPiece piece;
    CsvRecords records;
    std::size_t recordsInPiece = 64;  ///< Often only the first records are read.
};

}  // namespace velmorak
