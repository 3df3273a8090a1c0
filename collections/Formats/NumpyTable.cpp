#include "kinds.h"

#include "FormatTable.h"

#include <numpy/NumpyFile.h>

namespace velmorak {
namespace {

class NumpyFormat : public FileFormat {
public:
    std::string name() const override { return "NumPy"; }
    std::string description() const override { return "a NumPy file"; }
    std::string tableKind() const override { return "NumpyTable"; }
    Recognition recognise(const FileStart& start) const override;
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& /*context*/) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                  const std::vector<std::string>& columns) const override;
};

Recognition NumpyFormat::recognise(const FileStart& start) const {
    return isNumpy(start) ? Recognition::Certain : Recognition::No;
}

std::vector<FileObject> NumpyFormat::objects(const std::filesystem::path& file, RunContext& /*context*/) const {
    return listNumpy(file);
}

std::shared_ptr<const FileOpener> NumpyFormat::tableOpener(const std::string& object,
                                                           const std::vector<std::string>& columns) const {
    return openerFor(openNumpyTable, object, columns);
}

constexpr const char* notes = R"(Records, and arrays with one or two dimensions; see [NumPy files](../numpy.md).

An array without records has a column `value`, in an archive one with the name of the array. With two dimensions, it has a
column for each position in the second: `c1`, `c2` and so on, in an archive `NAME_1`, `NAME_2`. A field of records that
is an array is a list column. Arrays of an archive that are read together must have the same number of rows.

Times are seconds since 1970-01-01, time differences seconds; a missing one is NaN. A complex number is two columns,
`NAME.real` and `NAME.imag`. An unsigned 64-bit integer that is too large for a signed one becomes negative.)";

}  // namespace

std::unique_ptr<Kind> makeNumpyTable() {
    return makeFormatTable({.name = "NumpyTable",
                            .summary = "Reads arrays or records from NumPy files.",
                            .notes = notes,
                            .files = "NumPy file, .npy or .npz",
                            .object = "Name of an array in an archive (.npz). Empty: the only one, or all arrays of "
                                      "the archive side by side."},
                           makeNumpyFormat());
}

std::unique_ptr<FileFormat> makeNumpyFormat() {
    return std::make_unique<NumpyFormat>();
}

}  // namespace velmorak
