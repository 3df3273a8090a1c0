#pragma once

#include <velmorak/FileFormat.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// Tables and images of FITS files. See docs/fits.md.
namespace velmorak {

/// Whether a file begins like one.
bool isFits(const FileStart& start);

/// @throws Failure if the file cannot be read.
std::vector<FileObject> listFits(const std::filesystem::path& file);

/// Opens a binary or ASCII table, or an image as a table of its pixels.
/// @param object  name of a unit (EXTNAME) or its number from 1; empty for the only table, or the only image if there
///                is no table.
/// @param columns names of the columns to provide, in this order; empty for all that can be read.
/// @throws Failure also if there is no such unit or column, with the existing ones, and for a column that cannot be
///         read, with the reason.
std::unique_ptr<TableReader> openFitsTable(const std::filesystem::path& file, const std::string& object,
                                           const std::vector<std::string>& columns, RunContext& context);

}  // namespace velmorak
