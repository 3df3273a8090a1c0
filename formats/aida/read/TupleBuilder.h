#pragma once

#include "aida/read/AidaColumns.h"
#include "aida/text/RowFastPath.h"

#include <string>
#include <unordered_map>
#include <vector>

#include <velmorak/ChunkSize.h>

namespace velmorak::io {

/// Makes columns of the entries of a tuple, as they come from its file: row by row, each value a text.
/// A nested column of one column is a list column of its name, one of several is a list column for each, "trk.px".
/// Rows within nested rows make lists, too, of all that are in one row of the tuple: "trk.hits.x". Which of them belong
/// together, two more lists say: "trk.hits.count", how many hits each track has, and "trk.hits.row", which of the
/// tracks each hit is in, counted from 0.
class TupleBuilder {
public:
    explicit TupleBuilder(const std::vector<AidaColumn>& columns);

    const Schema& schema() const { return allColumns; }
    const std::vector<AidaColumn>& columns() const { return header; }
    /// Sentences about columns that cannot be taken as they are.
    const std::vector<std::string>& warnings() const { return sentences; }

    /// The next entry of the row, or of the nested row.
    /// @return false when the text is no value of the column's type; problem() says why.
    bool entry(const char* value);
    /// The next entry is not there: its default takes the place.
    void missingEntry();
    void beginNested();
    /// @return false when there are too many in one row; problem() says so.
    bool endNestedRow();
    void endNested();
    void endRow();

    /// The columns, where each row has one value in each; else none.
    std::vector<PlainColumn> plainColumns() const;
    /// @return how many of the rows from the first on still go into the chunk.
    std::size_t roomFor(const PlainRows& rows, std::size_t first) const;
    /// Appends complete rows of such columns. Called between rows.
    void appendRows(const PlainRows& rows, std::size_t first, std::size_t count);

    const std::string& problem() const { return reason; }
    /// Entries were seen beyond the last column.
    bool hasExtraEntries() const { return hasExtra; }

    /// Complete rows that have not been taken.
    std::size_t rows() const { return rowCount; }
    /// They are a whole chunk: in number, or because their texts and lists are large.
    bool isFull() const { return rowCount >= maxRows || bytes >= maxChunkBytes; }
    /// Moves the complete rows out; the builder begins anew.
    std::vector<ColumnPtr> take();

private:
    struct Slot {
        Column column;
        bool isSingleCharacter = false;
        double realDefault = 0.0;
        std::int64_t integerDefault = 0;
        std::string textDefault;
    };
    /// A column of the file: where its values go.
    struct Item {
        static constexpr std::size_t none = ~std::size_t{0};
        std::size_t slot = none;
        bool isNested = false;
        std::vector<Item> children;
        std::size_t countSlot = none;  ///< Of rows within nested rows.
        std::size_t rowSlot = none;
        std::int64_t rows = 0;  ///< Of a nested column, in the row of the tuple that is being read.
    };
    /// Nested rows that are being read.
    struct Level {
        Item* item = nullptr;  ///< Null where rows are told that belong to no column.
        std::size_t position = 0;
        std::int64_t rows = 0;
    };

    Item addColumn(const AidaColumn& column);
    Item addNested(const AidaColumn& column, const std::string& name, std::size_t depth);
    std::size_t addCounter(const std::string& name);
    void note(std::string sentence);
    std::string uniqueName(const std::string& given);
    std::size_t addSlot(const AidaColumn& column, const std::string& name, bool isList);
    bool put(Slot& slot, const char* value);
    static void putDefault(Slot& slot);
    Item* nextItem();
    void countRows(const Item& item, std::int64_t rows);
    static void restart(std::vector<Item>& items);
    void dropIncompleteRow();
    void weighRow();

    std::vector<AidaColumn> header;
    Schema allColumns;
    std::vector<Slot> slots;
    std::vector<Item> items;
    std::size_t nameBytes = 0;
    std::vector<ColumnInfo> infos;                   ///< Of the columns so far, while they are found.
    std::unordered_map<std::string, int> timesUsed;  ///< Names, with the last number that one was given.
    std::vector<std::string> sentences;
    std::string reason;
    bool hasExtra = false;
    std::size_t nestedValues = 0;  ///< In the nested column that is being read.
    std::vector<Level> levels;     ///< From the outermost to the one that is being read.
    std::size_t position = 0;      ///< Of the next entry in the row.
    std::size_t rowCount = 0;
    std::size_t maxRows = 0;           ///< In a chunk.
    std::size_t rowBytes = 0;          ///< Of a row without its texts and lists.
    std::vector<std::size_t> unequal;  ///< Slots whose values are texts, or lists.
    std::size_t bytes = 0;             ///< Of the complete rows.
};

/// @return false when the text is no value of the type. Blanks around it do not matter; an integer may be written with
///         an exponent or a zero fraction, a boolean as 0 or 1.
bool readInteger(std::string_view text, std::int64_t& value);
bool readBoolean(std::string_view text, std::uint8_t& value);

}  // namespace velmorak::io
