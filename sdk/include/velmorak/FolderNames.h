#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak {

/// Matches a name with a pattern of the shell: * and ? stand for any characters and for one, [a-z] for one of a set,
/// [!a-z] for one that is not in it; none of them matches a leading dot. Characters are code points of UTF-8, in any
/// locale; there is no escape character, but [*] stands for a star.
bool matchesPattern(std::string_view name, std::string_view pattern);

/// Lists the names in a folder that match a pattern.
/// @return the names sorted by code point; none if there is no such folder.
/// @throws Failure with the reason of the system if the folder cannot be read.
std::vector<std::string> namesInFolder(const std::filesystem::path& folder, const std::string& pattern);

}  // namespace velmorak
