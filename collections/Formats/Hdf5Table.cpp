#include "kinds.h"

#include "FormatTable.h"

#include <hdf5/Hdf5File.h>

namespace velmorak {
namespace {

class Hdf5Format : public FileFormat {
public:
    std::string name() const override { return "HDF5"; }
    std::string description() const override { return "an HDF5 file"; }
    std::string tableKind() const override { return "Hdf5Table"; }
    Recognition recognise(const FileStart& start) const override;
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& /*context*/) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                  const std::vector<std::string>& columns) const override;
};

Recognition Hdf5Format::recognise(const FileStart& start) const {
    return isHdf5(start) ? Recognition::Certain : Recognition::No;
}

std::vector<FileObject> Hdf5Format::objects(const std::filesystem::path& file, RunContext& /*context*/) const {
    return listHdf5(file);
}

std::shared_ptr<const FileOpener> Hdf5Format::tableOpener(const std::string& object,
                                                          const std::vector<std::string>& columns) const {
    return openerFor(openHdf5Table, object, columns);
}

constexpr const char* notes = R"(See [HDF5 files](../hdf5.md). `object` is one of

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
         .notes = notes,
         .files = "HDF5 file",
         .object = "Path of the dataset, group or frame in the file, for example run1/events. Empty: "
                   "the only table in the file."},
        makeHdf5Format());
}

std::unique_ptr<FileFormat> makeHdf5Format() {
    return std::make_unique<Hdf5Format>();
}

}  // namespace velmorak
