#pragma once

#include <cstdint>
#include <deque>
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

/// Splits text into records and fields. A field in double quotes may contain delimiters, line ends, and quotes, which
/// are doubled. Blanks around other fields and empty lines are ignored. Lines end as on Unix or Windows.
/// Threads: one at a time.
class CsvRecords {
public:
    /// Limit for the fields of a record.
    static constexpr std::size_t maxFields = std::size_t{1} << 20U;
    enum class Found { Record, End, Short };

    /// @param form outlives this. @param nextLine number of the first line.
    CsvRecords(std::string_view text, const CsvForm& form, std::uint64_t nextLine = 1)
        : form(&form), text(text), nextLine(nextLine) {}

    /// @param fields valid until the next call, as long as the text.
    /// @return Record, or End if there are no more.
    Found next(std::vector<CsvField>& fields);
    /// Passes a record, and lines before it that are none.
    /// @param isAll the text does not go on; otherwise, the result is Short if the record does not end in the text.
    Found skip(bool isAll);
    /// Continues at another place of the same text, or of a longer one.
    void seek(std::string_view longer, std::size_t position, std::uint64_t line);

    std::size_t position() const { return place; }
    /// Line that the last record began on.
    std::uint64_t line() const { return recordLine; }
    /// Line that the next record begins on, or a line before that is not a record.
    std::uint64_t lineAfter() const { return nextLine; }
    /// The error in the last record; empty if there is none.
    const std::string& complaint() const { return problem; }

private:
    enum class Step { More, End, Short };

    Found find(std::vector<CsvField>* fields);
    bool skipLine(Found& found);
    bool hasZeroByte() const;
    Step readRecord(std::vector<CsvField>* fields);
    Step readField(std::size_t& at, std::vector<CsvField>* fields);
    void readUnquoted(std::size_t& at, std::vector<CsvField>* fields) const;
    bool readQuoted(std::size_t& at, std::vector<CsvField>* fields);
    std::size_t closingQuote(std::size_t begin, bool& hasQuotes) const;
    void keepQuoted(std::string_view raw, bool hasQuotes, std::vector<CsvField>& fields);
    void passRest(std::size_t& at);
    std::size_t pastBlanks(std::size_t at) const;
    bool isBlank(char c) const { return c == ' ' || (c == '\t' && form->delimiter != '\t'); }

    const CsvForm* form;
    std::string_view text;
    bool isWhole = true;
    std::size_t place = 0;        ///< Of the next record.
    std::size_t recordPlace = 0;  ///< Of the last one.
    std::uint64_t nextLine;
    std::uint64_t recordLine = 0;
    std::string problem;
    std::deque<std::string> unescaped;
};

}  // namespace velmorak
