#include "kinds.h"

#include "FormatTable.h"

#include <numpy/NumpyFile.h>

namespace velmorak {
namespace {

constexpr const char* numpyNotes = R"(Records, and arrays with one or two dimensions; see [NumPy files](../numpy.md).

An array without records has a column `value`, in an archive one with the name of the array. With two dimensions, it has a
column for each position in the second: `c1`, `c2` and so on, in an archive `NAME_1`, `NAME_2`. A field of records that
is an array is a list column. Arrays of an archive that are read together must have the same number of rows.

Times are seconds since 1970-01-01, time differences seconds; a missing one is NaN. A complex number is two columns,
`NAME.real` and `NAME.imag`. An unsigned 64-bit integer that is too large for a signed one becomes negative.)";

}  // namespace

std::unique_ptr<Kind> makeNumpyTable() {
    return makeFormatTable({.name = "NumpyTable",
                            .summary = "Reads arrays or records from NumPy files.",
                            .notes = numpyNotes,
                            .files = "NumPy file, .npy or .npz",
                            .object = "Name of an array in an archive (.npz). Empty: the only one, or all arrays of "
                                      "the archive side by side."},
                           makeNumpyFormat());
}

std::unique_ptr<FileFormat> makeNumpyFormat() {
    return makeTableFormat({.name = "NumPy",
                            .description = "a NumPy file",
                            .kind = "NumpyTable",
                            .hasSignature = isNumpy,
                            .list = [](const std::filesystem::path& file, RunContext&) { return listNumpy(file); },
                            .open = openNumpyTable});
}

}  // namespace velmorak
