#pragma once

#include "csv/CsvTypes.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velmorak {

/// How a column is read.
struct CsvColumn {
    std::string name;
    ColumnType type = ColumnType::Real;
    bool isDate = false;
    bool isList = false;
    bool isInferred = false;  ///< The type was guessed from the first rows.
    bool isNeeded = true;
};

/// How the records of a file become rows.
struct CsvLayout {
    CsvForm form;
    CsvNotation notation;
    std::vector<CsvColumn> columns;
    std::size_t rowsToInfer = 0;
};

/// The place of the first text that is not UTF-8.
inline constexpr std::uint64_t noLine = UINT64_MAX;

/// @return bytes of a value, not counting the characters of a text.
std::size_t bytesInValue(ColumnType type);

/// @return a column without rows.
Column emptyColumn(const CsvColumn& column);

/// Adds rows to a column, or removes them.
void resizeColumn(Column& column, std::size_t rows);

/// Reads a record into a row, which the columns that are needed have already, except for lists. Texts that are not
/// UTF-8 are read as ISO-8859-1. @param repaired set to the record's line if there is one, and no earlier line is
/// there.
/// @return why the record is not a row, without file and line; empty if it is one.
std::string storeRecord(const CsvLayout& layout, const CsvRecords& record, const std::vector<CsvField>& fields,
                        std::vector<Column>& columns, std::size_t row, std::uint64_t& repaired);

}  // namespace velmorak
