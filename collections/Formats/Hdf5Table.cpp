#include "kinds.h"

#include "FormatTable.h"

#include <hdf5/Hdf5File.h>

namespace velmorak {
namespace {

constexpr const char* hdf5Notes = R"(See [HDF5 files](../hdf5.md). `object` is one of

- a dataset with one dimension: a column `value`, or one for each member of its compound type;
- a dataset with two dimensions: a column for each position in the second, called `c1`, `c2` and so on, or as an
  attribute `columns`, `column_names`, `names` or `fields` says;
- a group with several datasets of the same length: a column for each of them; one with two dimensions is a list column;
- a frame that pandas has written, in its fixed or its table format.

Lists of variable length and arrays in compound types are list columns. The attribute `units` or `unit` of a dataset is the
unit of its columns.)";

}  // namespace

std::unique_ptr<Kind> makeHdf5Table() {
    return makeFormatTable(
        {.name = "Hdf5Table",
         .summary = "Reads a dataset, or a group of equally long ones, from HDF5 files.",
         .notes = hdf5Notes,
         .files = "HDF5 file",
         .object = "Path of the dataset, group or frame in the file, for example run1/events. Empty: "
                   "the only table in the file."},
        makeHdf5Format());
}

std::unique_ptr<FileFormat> makeHdf5Format() {
    return makeTableFormat({.name = "HDF5",
                            .description = "an HDF5 file",
                            .kind = "Hdf5Table",
                            .hasSignature = isHdf5,
                            .list = [](const std::filesystem::path& file, RunContext&) { return listHdf5(file); },
                            .open = openHdf5Table});
}

}  // namespace velmorak
