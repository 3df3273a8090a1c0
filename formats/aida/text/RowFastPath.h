#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <velmorak/Table.h>

namespace velmorak::io {

/// A column of a tuple in which each row has one value.
struct PlainColumn {
    ColumnType type = ColumnType::Real;
    bool isSingleCharacter = false;
    bool isUsed = true;  ///< Otherwise its values are passed over.
};

inline constexpr std::string_view rowEnd = "</row>";

/// Bytes beyond the end of a text that RowFastPath may read. They must be zero.
inline constexpr std::size_t plainRowsMargin = 32;

/// Scans plain rows of a tuple, as nearly every program writes them: <row> with an <entry value="..."/> for each
/// column, blanks, and nothing else. Anything else ends the scan before its row, which the full XML parser must read:
/// another element or attribute, a reference, a comment, a byte beyond ASCII, an entry too many or too few, a value
/// that the column cannot hold. Threads: one at a time.
class RowFastPath {
public:
    explicit RowFastPath(const std::vector<PlainColumn>& columns);

    /// Scans from the beginning of a row, or of blanks before one. Discards the rows scanned before.
    /// @param text followed by plainRowsMargin bytes of zero.
    void scan(const char* text, std::size_t size);
    void clear();

    std::size_t count() const { return rowCount; }
    /// The first count() values of each column that is used are valid.
    const std::vector<Column>& columns() const { return values; }
    /// Bytes of the text in the rows and in the blanks before, between and after them.
    std::size_t bytes() const { return byteCount; }
    /// Line ends in these bytes.
    std::uint64_t lines() const { return lineCount; }

private:
    /// Destination of the next value, according to the column's type.
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
    std::size_t room = 0;  ///< Rows that the columns have memory for.
    std::size_t rowCount = 0;
    std::size_t byteCount = 0;
    std::uint64_t lineCount = 0;
    const char* textEnd = nullptr;
    std::uint64_t linesSeen = 0;  ///< Including those of the row that is being scanned.
};

}  // namespace velmorak::io
