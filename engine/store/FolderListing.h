#pragma once

#include "store/FileContent.h"

#include <filesystem>
#include <optional>
#include <string>

/// The names in a folder that match a pattern, as something that a result depends on like the content of a file.
namespace velmorak {

/// @return a name for the listing, which no file can have: the folder and the pattern with U+0000 between them.
std::string folderListing(const std::filesystem::path& folder, const std::string& pattern);

bool isFolderListing(const NamedFile& file);

/// @return for messages: the list of files "run_*.csv" in "/data".
std::string titleOfListing(const std::string& listing);

/// @return the digest of the names; none if the folder cannot be read.
std::optional<Digest> contentOfListing(const std::string& listing);

}  // namespace velmorak
