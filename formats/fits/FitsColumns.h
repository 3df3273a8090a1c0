#pragma once

#include "fits/Unit.h"

#include <velmorak/FileFormat.h>

#include <cstdint>
#include <string>
#include <vector>

namespace velmorak::fits {

/// A column of a table, or of the pixels of an image.
struct FitsColumn {
    enum class Kind {
        Real,
        Integer,
        Unsigned,  ///< Of 64 bits.
        Boolean,
        Text,
        Position,  ///< Of a pixel, along the axis `number`.
        Pixel,     ///< The value of a pixel.
    };

    FileColumn about;
    Kind kind = Kind::Real;
    int number = 1;           ///< Of the column, or of the axis, from 1.
    std::uint64_t count = 1;  ///< Values in each row.
    bool isVariable = false;  ///< Each row has a number of values of its own.
    bool hasMissing = false;  ///< Some number marks missing values.
    int width = 0;            ///< Of a text: its characters.
};

/// The columns of the unit that the file is at. Called under the lock. @throws Failure.
std::vector<FitsColumn> columnsOf(fitsfile* file, const Unit& unit, const std::string& place);

/// Reads rows of a column of the unit that the file is at. Called under the lock.
/// @throws Failure with the file and the row if they are damaged.
Column readRows(fitsfile* file, const Unit& unit, const FitsColumn& column, std::uint64_t first, std::size_t rows,
                const std::string& place);

}  // namespace velmorak::fits
