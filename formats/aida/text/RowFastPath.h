#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <velmorak/Table.h>

namespace velmorak::io {

/// A column of a tuple in which each row has one value.
struct PlainColumn {
    ColumnType type = ColumnType::Real;
    bool isSingleCharacter = false;
};

/// Bytes beyond the end of a text that PlainRows may look at. They must be zero.
inline constexpr std::size_t plainRowsMargin = 32;

/// Rows of a tuple as nearly every program writes them: <row> with an <entry value="..."/> for each column, blanks, and
/// nothing else. Any other byte ends the scan before the row that it stands in, which is then for a parser of all XML:
/// another element or attribute, a reference, a comment, a byte beyond ASCII, an entry too many or too few, a value
/// that the column cannot hold. Threads: one at a time.
class PlainRows {
public:
    explicit PlainRows(const std::vector<PlainColumn>& columns);

    /// Scans from where a row, or blanks before one, may begin. What was scanned before is gone.
    /// @param text followed by plainRowsMargin bytes of zero.
    void scan(const char* text, std::size_t size);
    void clear();

    std::size_t count() const { return rowCount; }
    /// The first count() values of each are those of the rows; what follows has no meaning.
    const std::vector<Column>& columns() const { return values; }
    /// Bytes of the text that the rows take up, with the blanks before, between and behind them.
    std::size_t bytes() const { return byteCount; }
    /// Line ends in these bytes.
    std::uint64_t lines() const { return lineCount; }

private:
    /// Where the value of the next row goes, as the column's type is.
    struct Target {
        PlainColumn column;
        double* reals = nullptr;
        std::int64_t* integers = nullptr;
        std::uint8_t* booleans = nullptr;
        std::string* texts = nullptr;
    };

    void makeRoom(std::size_t size);
    const char* scanRow(const char* text);
    const char* scanEntry(const char* text, const Target& target);
    const char* scanValue(const char* text, const Target& target);

    std::vector<Column> values;
    std::vector<Target> targets;
    std::size_t room = 0;  ///< Rows that fit into the columns.
    std::size_t rowCount = 0;
    std::size_t byteCount = 0;
    std::uint64_t lineCount = 0;
    std::uint64_t linesSeen = 0;  ///< Those of the row that is being scanned too.
};

}  // namespace velmorak::io
