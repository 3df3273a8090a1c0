#pragma once

#include <velmorak/PackedFile.h>

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
/// and quotes, which are doubled. Blanks around other fields are left out, and so are empty lines. One thread at a
/// time.
class CsvRecords {
public:
    /// @throws Failure if the file cannot be opened.
    CsvRecords(const std::filesystem::path& file, CsvForm form);

    /// @param fields valid until the next call.
    /// @return false at the end of the file.
    /// @throws Failure if the file cannot be read.
    bool next(std::vector<CsvField>& fields);
    /// Line that the last record began on, counted from 1.
    std::uint64_t line() const { return recordLine; }
    /// Empty, or what is wrong with the last record's quotes.
    const std::string& complaint() const { return problem; }
    /// Part of the file that has been read.
    double fraction() const { return in.fraction(); }

private:
    enum class Step { More, End, Short };

    bool refill();
    bool skipLine();
    Step readRecord(std::vector<CsvField>& fields);
    Step readField(std::size_t& at, std::vector<CsvField>& fields);
    Step readQuoted(std::size_t& at, std::vector<CsvField>& fields);
    std::size_t pastBlanks(std::size_t at) const;
    bool isBlank(char c) const { return c == ' ' || (c == '\t' && form.delimiter != '\t'); }

    CsvForm form;
    std::string name;
    PackedFile in;
    std::string buffer;
    std::size_t place = 0;  ///< Where the next record begins in the buffer.
    bool isAtEnd = false;   ///< The buffer holds the rest of the file.
    std::uint64_t nextLine = 1;
    std::uint64_t recordLine = 0;
    std::string problem;
    std::deque<std::string> unescaped;
};

}  // namespace velmorak
