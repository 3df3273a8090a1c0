#pragma once

#include "aida/read/TupleLayout.h"
#include "aida/text/RowFastPath.h"

#include <string>
#include <vector>

#include <velmorak/ChunkSize.h>

namespace velmorak::io {

/// Makes columns from the entries of a tuple as they come from its file: row by row, each value a text.
class TupleBuilder {
public:
    explicit TupleBuilder(const std::vector<AidaColumn>& columns);

    const Schema& schema() const { return tableSchema; }
    const std::vector<AidaColumn>& columns() const { return header; }
    /// About columns that cannot be taken as they are.
    const std::vector<std::string>& warnings() const { return sentences; }

    /// Passes over the values of other columns, except for texts and lists, on whose size the chunks depend.
    /// @param needed by column of the schema.
    void selectColumns(const std::vector<bool>& needed);

    /// The next entry of the row, or of the nested row.
    /// @return false if the text is not a value of the column's type; problem() says why.
    bool entry(const char* value);
    /// The next entry is missing: the column gets its default.
    void missingEntry();
    void beginNested();
    /// @return false if one row has too many; problem() says so.
    bool endNestedRow();
    void endNested();
    void endRow();

    /// The columns if each row has one value in each; else none.
    std::vector<PlainColumn> plainColumns() const;
    /// @return how many of the rows, from the first on, still fit into the chunk.
    std::size_t roomFor(const RowFastPath& rows, std::size_t first) const;
    /// Appends complete rows. Must be called between rows.
    void appendRows(const RowFastPath& rows, std::size_t first, std::size_t count);

    const std::string& problem() const { return reason; }
    /// Entries were seen beyond the last column.
    bool hasExtraEntries() const { return hasExtra; }

    /// Complete rows that have not been taken.
    std::size_t rows() const { return rowCount; }
    /// The complete rows make a chunk: by their number, or because their texts and lists are large.
    bool isFull() const { return rowCount >= maxRows || bytes >= maxChunkBytes; }
    /// Moves the complete rows out; the builder is then empty. A column that was passed over is null.
    std::vector<ColumnPtr> take();

private:
    /// Nested rows that are being read.
    struct Level {
        TupleItem* item = nullptr;  ///< Null for rows that belong to no column.
        std::size_t position = 0;
        std::int64_t rows = 0;
    };

    TupleBuilder(std::vector<AidaColumn> columns, TupleLayout layout);

    bool put(TupleSlot& slot, const char* value);
    static void putDefault(TupleSlot& slot);
    TupleItem* nextItem();
    void countRows(const TupleItem& item, std::int64_t rows);
    static void resetRows(std::vector<TupleItem>& items);
    void dropIncompleteRow();
    void countBytesOfRow();

    std::vector<AidaColumn> header;
    Schema tableSchema;
    std::vector<TupleSlot> slots;
    std::vector<TupleItem> items;
    std::vector<std::string> sentences;
    std::string reason;
    bool hasExtra = false;
    std::size_t nestedValues = 0;  ///< In the nested column that is being read.
    std::vector<Level> levels;     ///< From the outermost to the one that is being read.
    std::size_t position = 0;      ///< Of the next entry in the row.
    std::size_t rowCount = 0;
    std::size_t maxRows = 0;                 ///< In a chunk.
    std::size_t rowBytes = 0;                ///< Of a row without its texts and lists.
    std::vector<std::size_t> variableSlots;  ///< Slots of texts or lists, whose rows differ in size.
    std::size_t bytes = 0;                   ///< Of the complete rows.
};

}  // namespace velmorak::io
