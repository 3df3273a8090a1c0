#pragma once

#include <velmorak/FileFormat.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// HDF5 files: datasets and groups of them as tables. See docs/hdf5.md.
namespace velmorak {

/// Whether a file begins like one; the bytes of another program may come before its signature.
bool isHdf5(const FileStart& start);

/// @throws Failure if the file cannot be read.
std::vector<FileObject> listHdf5(const std::filesystem::path& file);

/// Opens a dataset, a group of equally long ones, or a frame of pandas. Numbers in chunks that are packed with gzip,
/// shuffled, or not packed at all are unpacked on the threads that complete the chunks.
/// @param object  path; empty for the only table of the file.
/// @param columns names of the columns to provide, in this order; empty for all that can be read.
/// @throws Failure also if there is no such object or column, with the existing ones, and for a column that cannot be
///         read, with the reason.
std::unique_ptr<TableReader> openHdf5Table(const std::filesystem::path& file, const std::string& object,
                                           const std::vector<std::string>& columns, RunContext& context);

}  // namespace velmorak
