#pragma once

#include "csv/CsvRecords.h"

#include <velmorak/Kind.h>

#include <map>
#include <set>

namespace velmorak {

/// How values are written.
struct CsvNotation {
    std::string missing = {};       ///< Text of a missing value, besides an empty field.
    char decimal = '.';             ///< Between the integer part of a number and its fraction.
    char thousands = '\0';          ///< Between groups of three digits; zero for none.
    bool hasQuotedNumbers = false;  ///< Numbers may be in quotes.
    char vectorSeparator = ';';     ///< Between the values of a list.

    /// Numbers are as std::from_chars reads them.
    bool isPlain() const;
};

/// Types of columns that a user gives.
struct CsvTypes {
    std::map<std::string, ColumnType> types;
    std::set<std::string> dates;  ///< Columns of type real whose texts are dates and times.
};

bool isMissing(const CsvField& field, const CsvNotation& notation);

/// Reads a field into a row of a column, which has values of that row. A missing value becomes NaN or an empty text.
/// @return false if the text is not a value of the column's type.
bool storeField(const CsvField& field, const CsvNotation& notation, Column& column, std::size_t row);
/// As storeField, for dates and times of ISO 8601.
bool storeDate(const CsvField& field, const CsvNotation& notation, Column& column, std::size_t row);
/// Appends the values of a list, which are separated by CsvNotation::vectorSeparator, and its end.
bool appendList(const CsvField& field, const CsvNotation& notation, Column& column);

/// Parses types of columns, written as name: type, separated by commas, semicolons or line ends.
/// @throws Failure for the input "types".
CsvTypes csvTypesIn(const std::string& text);

/// Infers the narrowest type that holds all values seen so far: integer, real, boolean or text.
class TypeGuess {
public:
    void see(const CsvField& field, const CsvNotation& notation);
    ColumnType type() const;
    /// @return false if all fields were missing values.
    bool hasValue() const { return isSeen; }

private:
    bool isInteger = true;
    bool isReal = true;
    bool isBoolean = true;
    bool hasMissing = false;
    bool isSeen = false;
};

}  // namespace velmorak
