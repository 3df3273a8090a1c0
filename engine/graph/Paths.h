#pragma once

#include <filesystem>
#include <string>

namespace velmorak {

/// Content of a document's file. Says what it waits for where the file system does not answer.
/// @throws DocumentError when it cannot be read, is no regular file, does not answer, or is too large for a document
/// (64 MiB).
std::string readWholeFile(const std::filesystem::path& file);

/// The folder that the analysis library's shared object lies in, without links; empty when unknown.
std::filesystem::path libraryFolder();

/// Absolute and without links as far as it exists; the path itself where that cannot be found out.
std::filesystem::path resolved(const std::filesystem::path& path);

}  // namespace velmorak
