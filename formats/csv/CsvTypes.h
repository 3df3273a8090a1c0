#pragma once

#include "csv/CsvRecords.h"

#include <velmorak/Kind.h>

#include <map>

namespace velmorak {

/// Type that the fields of a column are read as.
struct CsvColumn {
    std::string name;
    ColumnType type = ColumnType::Real;
};

/// Appends one field to a column. A missing value becomes NaN or an empty text.
/// @return false, with the column unchanged, if the text is not a value of the column's type.
bool appendField(const CsvField& field, const std::string& missing, Column& column);

/// Parses types of columns, written as name: type, separated by commas, semicolons or line ends.
/// @throws Failure for the input "types".
std::map<std::string, ColumnType> csvTypesIn(const std::string& text);

/// Infers the narrowest type that holds all values seen so far: integer, real, boolean or text.
class TypeGuess {
public:
    void see(const CsvField& field, const std::string& missing);
    ColumnType type() const;
    /// @return false if all fields were missing values.
    bool hasValue() const { return isSeen; }

private:
    bool isInteger = true;
    bool isReal = true;
    bool isBoolean = true;
    bool isMissing = false;
    bool isSeen = false;
};

}  // namespace velmorak
