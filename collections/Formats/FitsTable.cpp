#include "kinds.h"

#include "FormatTable.h"

#include <fits/FitsFile.h>

namespace velmorak {
namespace {

class FitsFormat : public FileFormat {
public:
    std::string name() const override { return "FITS"; }
    std::string description() const override { return "a FITS file"; }
    std::string tableKind() const override { return "FitsTable"; }
    Recognition recognise(const FileStart& start) const override;
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& /*context*/) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                  const std::vector<std::string>& columns) const override;
};

Recognition FitsFormat::recognise(const FileStart& start) const {
    return isFits(start) ? Recognition::Certain : Recognition::No;
}

std::vector<FileObject> FitsFormat::objects(const std::filesystem::path& file, RunContext& /*context*/) const {
    return listFits(file);
}

std::shared_ptr<const FileOpener> FitsFormat::tableOpener(const std::string& object,
                                                          const std::vector<std::string>& columns) const {
    return openerFor(openFitsTable, object, columns);
}

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
    return std::make_unique<FitsFormat>();
}

}  // namespace velmorak
