#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak {

class RunContext;

/// @return whether a file name contains *, ? or [, so that it may be a pattern.
bool isPattern(std::string_view name);

/// Finds the regular files that match a pattern: * and ? match any characters and one character of a name, [a-z] one of
/// a set, and a folder called ** any number of folders, also none. None of them matches a leading dot, and ** does not
/// follow links to folders.
/// @param folder that a relative pattern begins at.
/// @return the names relative to the folder, or absolute if the pattern is; sorted by code point.
/// @throws Failure if a folder cannot be read, Stopped.
std::vector<std::string> glob(const std::filesystem::path& folder, std::string_view pattern, const RunContext& context);

/// @return the names of the regular files in a folder, but not in its folders, without hidden ones; sorted by code
///         point.
/// @throws Failure if the folder cannot be read, Stopped.
std::vector<std::string> filesInFolder(const std::filesystem::path& folder, const RunContext& context);

}  // namespace velmorak
