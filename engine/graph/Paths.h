#pragma once

#include <filesystem>
#include <string>

namespace velmorak {

/// Content of a document's file. Prints a message where the file system does not answer within a second.
/// @throws DocumentError when the file cannot be read, is not a regular file, does not answer for four more seconds, or
/// is larger than 64 MiB.
std::string readWholeFile(const std::filesystem::path& file);

/// The analysis library's shared object, without links; empty when unknown.
std::filesystem::path libraryFile();

/// The folder of the analysis library's shared object, without links; empty when unknown.
std::filesystem::path libraryFolder();

/// The path made absolute, with links resolved as far as it exists; the path itself where that fails.
std::filesystem::path resolved(const std::filesystem::path& path);

}  // namespace velmorak
