#pragma once

#include <velmorak/FileFormat.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// Arrays of NumPy: .npy files, and .npz archives of them. See docs/numpy.md.
namespace velmorak {

/// Whether a file begins like one.
bool isNumpy(const FileStart& start);

/// @throws Failure if the file cannot be read or is damaged.
std::vector<FileObject> listNumpy(const std::filesystem::path& file);

/// Opens an array, or all arrays of an archive that have as many rows as the first.
/// @param object  name of an array in an archive; empty for the only one, or for all of them.
/// @param columns names of the columns to provide, in this order; empty for all that can be read.
/// @throws Failure also if there is no such array or column, with the existing ones, and for a column that cannot be
///         read, with the reason.
std::unique_ptr<TableReader> openNumpyTable(const std::filesystem::path& file, const std::string& object,
                                            const std::vector<std::string>& columns, RunContext& context);

}  // namespace velmorak
