#pragma once

#include "store/FileContent.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The names in a folder that match a pattern, as something that a result depends on like the content of a file.
namespace velmorak {

/// @param folder as the document names it.
/// @return a name for the listing, which no file can have: the folder and the pattern with U+0000 between them.
std::string folderListing(const std::string& folder, const std::string& pattern);

bool isFolderListing(const NamedFile& file);

/// @return the folder as the document names it.
std::string folderOfListing(const std::string& listing);

/// @return for messages: the list of files "run_*.csv" in "data".
std::string titleOfListing(const std::string& listing);

Digest digestOfNames(const std::vector<std::string>& names);

/// @param folder where the listing's folder is now.
/// @return the digest of the names; none if the folder cannot be read.
std::optional<Digest> contentOfListing(const std::string& listing, const std::filesystem::path& folder);

}  // namespace velmorak
