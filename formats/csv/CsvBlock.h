#pragma once

#include "csv/CsvLayout.h"
#include "csv/CsvPieces.h"

namespace velmorak {

/// Parses the records of one piece into columns. Plain fields are read where they are; a record with anything else
/// (quotes, an error) is split into fields first.
class CsvBlock {
public:
    /// @param layout and piece outlive this.
    CsvBlock(const CsvLayout& layout, const CsvPiece& piece);

    /// @return the columns, null where they are not needed.
    /// @throws Failure for the input "file" about a record that is not a row. @param file its name, for the message.
    std::vector<ColumnPtr> parse(const std::string& file);
    /// Line of the first text that was not UTF-8; noLine if there was none.
    std::uint64_t repairedLine() const { return repaired; }

private:
    /// How a plain field is read, and where its values go.
    struct Step {
        enum class Kind { Skip, Real, Integer, Token };
        Kind kind = Kind::Token;
        double* reals = nullptr;
        std::int64_t* integers = nullptr;
    };

    Step stepOf(std::size_t column);
    void parseRecord(std::size_t row, const std::string& file);
    bool parsePlain(std::size_t row);
    const char* parseNumber(const Step& step, const char* place, std::size_t row, bool isLast) const;
    const char* parseToken(const char* field, std::size_t column, std::size_t row);
    const char* skipField(const char* place) const;
    const char* endOf(const char* past, bool isLast) const;

    const CsvLayout& layout;
    const CsvPiece& piece;
    const bool isPlain;  ///< Records may be read without being split first.
    const bool isAscii;
    std::vector<Column> columns;
    std::vector<Step> steps;
    const char* at;  ///< Next character.
    const char* const end;
    CsvRecords records;
    std::vector<CsvField> fields;
    std::uint64_t line;
    std::uint64_t repaired = noLine;
};

}  // namespace velmorak
