#pragma once

#include "csv/CsvRecords.h"

#include <velmorak/Kind.h>

#include <map>

namespace velmorak {

/// What the fields of a column are read as.
struct CsvColumn {
    std::string name;
    ColumnType type = ColumnType::Real;
};

/// Reads one field into the end of a column. A missing one becomes NaN or an empty text.
/// @return false, with the column unchanged, when the text is no value of the column's type.
bool appendField(const CsvField& field, const std::string& missing, Column& column);

/// Types by the names of their columns, written as name: type, separated by commas, semicolons or line ends.
/// @throws Failure for the input "types".
std::map<std::string, ColumnType> csvTypesIn(const std::string& text);

/// Narrowest type of all the values that it was shown: integer, real, boolean or text.
class TypeGuess {
public:
    void see(const CsvField& field, const std::string& missing);
    ColumnType type() const;

private:
    bool isInteger = true;
    bool isReal = true;
    bool isBoolean = true;
    bool isMissing = false;
    bool isSeen = false;
};

}  // namespace velmorak
