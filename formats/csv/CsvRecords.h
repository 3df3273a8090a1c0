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

/// How the fields of a text file are told apart.
struct CsvForm {
    char delimiter = ',';      ///< A blank: any number of blanks and tabulators.
    std::string comment = {};  ///< Lines that begin with it are left out; empty: there are none.
};

struct CsvField {
    std::string_view text;
    bool isQuoted = false;
};

/// Takes a text file, packed or not, apart, record by record. A field in double quotes may hold delimiters, line ends,
/// and quotes, which are doubled. Blanks around other fields are left out, and so are empty lines. Lines end as on
/// Unix, Windows or old Macs. One thread at a time.
class CsvRecords {
public:
    /// More fields in a record are refused.
    static constexpr std::size_t maxFields = std::size_t{1} << 20U;

    /// @param context outlives this.
    /// @throws Failure if the file cannot be opened, or is in UTF-16 or UTF-32.
    CsvRecords(const std::filesystem::path& file, CsvForm form, const RunContext& context);

    /// @param fields valid until the next call.
    /// @return false at the end of the file.
    /// @throws Failure if the file cannot be read. Stopped when the run is to end.
    bool next(std::vector<CsvField>& fields);
    /// Line that the last record began on, counted from 1.
    std::uint64_t line() const { return recordLine; }
    /// Empty, or what is wrong with the last record.
    const std::string& complaint() const { return problem; }
    /// Part of the file that has been read.
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
    std::size_t place = 0;  ///< Where the next record begins in the buffer.
    bool isAtEnd = false;   ///< The buffer holds the rest of the file.
    bool isOfMac = false;   ///< Lines end with a carriage return alone.
    std::uint64_t nextLine = 1;
    std::uint64_t recordLine = 0;
    std::string problem;
    std::deque<std::string> unescaped;
};

}  // namespace velmorak
