#pragma once

#include "csv/CsvRecords.h"
#include "csv/CsvText.h"

#include <velmorak/Failure.h>
#include <velmorak/Run.h>

#include <memory>
#include <optional>

namespace velmorak {

/// Consecutive records of a file, and the lines between them.
struct CsvPiece {
    std::shared_ptr<const char[]> owner;
    std::string_view text;
    std::size_t records = 0;
    std::uint64_t line = 1;  ///< Number of its first line.
};

/// Where a record, or a line that is none, begins in a file.
struct CsvPlace {
    std::uint64_t byte = 0;
    std::uint64_t line = 1;
};

/// Cuts a text file into pieces at the ends of records, without parsing them. A line end in quotes ends no record.
/// Threads: one at a time.
class CsvPieces {
public:
    /// @param form and context outlive this.
    /// @throws as CsvText.
    CsvPieces(const std::filesystem::path& file, CsvEncoding encoding, const CsvForm& form, const RunContext& context);

    /// Bytes at the beginning of the file. To be called before next.
    std::string_view head() const { return in.head(); }
    /// @param maxBytes no record begins after so many bytes of the piece.
    /// @return a piece without records at the end of the file.
    /// @throws Failure if the file cannot be read, once all records before have been returned. Stopped.
    CsvPiece next(std::size_t maxRecords, std::size_t maxBytes);
    /// Where the next piece begins; nothing if a file cannot be read from there, because it is compressed, for example.
    std::optional<CsvPlace> place() const;
    /// Goes to a place of this file, or of another reader of the file.
    /// @throws Failure if the file ends before, or no line begins there.
    void seek(const CsvPlace& place);
    /// Part of the file that has been read, 0 to 1.
    double fraction() const { return in.fraction(); }

private:
    std::size_t passPlainLines(std::size_t maxRecords, std::size_t maxBytes);
    bool passRecord(bool hasRecords, std::size_t maxBytes);
    bool passLine();
    bool mayBeginRecord(char first) const;
    bool hasQuoteBefore(std::size_t lineEnd);
    bool refill();
    void makeRoom(std::size_t wanted);

    void requireLineEnd();

    CsvText in;
    const CsvForm* form;
    const RunContext* run;
    CsvRecords records;
    std::shared_ptr<char[]> buffer;
    std::size_t capacity = 0;
    std::size_t begin = 0;      ///< Of the piece being cut.
    std::size_t at = 0;         ///< End of its records so far.
    std::size_t end = 0;        ///< Of the bytes read.
    std::size_t nextQuote = 0;  ///< Of the first quote from at on, or a place before which there is none.
    std::size_t lastPiece = 0;  ///< Bytes of the piece before.
    std::uint64_t line = 1;     ///< At the place at.
    std::uint64_t beginLine = 1;
    bool isAtEnd = false;
    bool isRecord = false;          ///< What passLine passed.
    std::optional<Failure> damage;  ///< Thrown after the records.
};

}  // namespace velmorak
