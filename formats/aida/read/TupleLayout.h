#pragma once

#include "aida/read/AidaColumns.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <velmorak/Table.h>

namespace velmorak::io {

/// A column of the table that a tuple is read into, with the values that its rows have so far.
struct TupleSlot {
    Column column;
    bool isSingleCharacter = false;
    bool isUsed = true;  ///< Otherwise its values are passed over.
    double realDefault = 0.0;
    std::int64_t integerDefault = 0;
    std::string textDefault;
};

/// A column of the file, and the slots that its values go to.
struct TupleItem {
    static constexpr std::size_t none = ~std::size_t{0};
    std::size_t slot = none;
    bool isNested = false;
    std::vector<TupleItem> children;
    std::size_t countSlot = none;  ///< Of rows within nested rows.
    std::size_t rowSlot = none;
    std::int64_t rows = 0;  ///< Of a nested column, in the row of the tuple that is being read.
};

/// How the columns of a file map to those of a table.
/// A nested column of one column becomes a list column of its name, one of several a list column for each, "trk.px".
/// Rows within nested rows become lists, too, of all that are in one row of the tuple: "trk.hits.x". Two more lists say
/// how they are grouped: "trk.hits.count", the number of hits of each track, and "trk.hits.row", the track that each
/// hit belongs to, counted from 0.
struct TupleLayout {
    Schema schema;
    std::vector<TupleSlot> slots;       ///< One for each column of the schema.
    std::vector<TupleItem> items;       ///< One for each column of the file.
    std::vector<std::string> warnings;  ///< About columns that cannot be taken as they are.
};

/// @throws Failure if the names of the columns take too much memory.
TupleLayout layoutOf(const std::vector<AidaColumn>& columns);

/// @return a column without values.
Column emptyColumn(ColumnType type, bool isList);

}  // namespace velmorak::io
