#pragma once

#include <velmorak/CompressedFile.h>
#include <velmorak/Run.h>

#include <cstdint>
#include <deque>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak {

/// Syntax of a text file.
struct CsvForm {
    char delimiter = ',';      ///< A blank: any number of spaces and tabs.
    std::string comment = {};  ///< Lines that begin with it are skipped; empty: there are no comments.
};

struct CsvField {
    std::string_view text;
    bool isQuoted = false;
};

/// Splits a text file, compressed or not, into records and fields. A field in double quotes may contain delimiters,
/// line ends, and quotes, which are doubled. Blanks around other fields and empty lines are ignored. Line ends are
/// those of Unix, Windows or old Macs. Threads: one at a time.
class CsvRecords {
public:
    /// Limit for the fields of a record.
    static constexpr std::size_t maxFields = std::size_t{1} << 20U;

    /// @param context must outlive this.
    /// @throws Failure if the file cannot be opened, or is in UTF-16 or UTF-32.
    CsvRecords(const std::filesystem::path& file, CsvForm form, const RunContext& context);

    /// @param fields valid until the next call.
    /// @return false at the end of the file.
    /// @throws Failure if the file cannot be read. Stopped if the run is stopping.
    bool next(std::vector<CsvField>& fields);
    /// Line that the last record began on, counted from 1.
    std::uint64_t line() const { return recordLine; }
    /// The error in the last record; empty if there is none.
    const std::string& complaint() const { return problem; }
    /// Part of the file that has been read, 0 to 1.
    double fraction() const { return in.fraction(); }

private:
    enum class Step { More, End, Short };

    void begin();
    bool refill();
    void makeLineEnds(std::size_t from);
    Step complete(std::size_t end);
    bool skipLine();
    Step readRecord(std::vector<CsvField>& fields);
    Step readField(std::size_t& at, std::vector<CsvField>& fields);
    Step readQuoted(std::size_t& at, std::vector<CsvField>& fields);
    std::size_t pastBlanks(std::size_t at) const;
    bool isBlank(char c) const { return c == ' ' || (c == '\t' && form.delimiter != '\t'); }

    CsvForm form;
    const RunContext* run;
    std::string name;
    CompressedFile in;
    std::string buffer;
    std::size_t place = 0;  ///< Of the next record in the buffer.
    bool isAtEnd = false;   ///< The buffer holds the rest of the file.
    bool isOfMac = false;   ///< Lines end with a carriage return alone.
    std::uint64_t nextLine = 1;
    std::uint64_t recordLine = 0;
    std::string problem;
    std::deque<std::string> unescaped;
};

}  // namespace velmorak
