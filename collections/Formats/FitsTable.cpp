#include "kinds.h"

#include "FormatTable.h"

#include <fits/FitsFile.h>

namespace velmorak {
namespace {

constexpr const char* notes =
    R"(See [FITS files](../fits.md). Binary and ASCII tables have a column for each of theirs, with its
unit; a vector, also one of variable length, is a list column. An image has the columns `x`, `y` and `value`: the
position of a pixel, counted from 1, and its value.

Scaled numbers (`TSCAL`, `TZERO`, `BSCALE`, `BZERO`) are read with their scale. A missing value is NaN; an integer column that
says which number marks one (`TNULL`) is read as real.)";

}  // namespace

std::unique_ptr<Kind> makeFitsTable() {
    return makeFormatTable(
        {.name = "FitsTable",
         .summary = "Reads a table, or the pixels of an image, from FITS files.",
         .notes = notes,
         .files = "FITS file",
         .object = "Name (EXTNAME) of the table or image in the file, or its number from 1. Empty: the "
                   "only table, or the only image."},
        makeFitsFormat());
}

std::unique_ptr<FileFormat> makeFitsFormat() {
    return makeTableFormat({.name = "FITS",
                            .description = "a FITS file",
                            .kind = "FitsTable",
                            .hasSignature = isFits,
                            .list = [](const std::filesystem::path& file, RunContext&) { return listFits(file); },
                            .open = openFitsTable});
}

}  // namespace velmorak
