#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace velmorak {

/// Lists the names in a folder that match a pattern of the shell: * and ? stand for any characters and for one, [a-z]
/// for one of a set; none of them matches a leading dot.
/// @return the names sorted by code point; none if there is no such folder.
/// @throws Failure with the reason of the system if the folder cannot be read.
std::vector<std::string> namesInFolder(const std::filesystem::path& folder, const std::string& pattern);

}  // namespace velmorak
