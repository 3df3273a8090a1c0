#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak {

class RunContext;

/// @return whether a file name contains *, ? or [, so that it may be a pattern.
bool isPattern(std::string_view name);

/// @return whether there is a folder of that name; links are followed.
bool isFolder(const std::filesystem::path& path);

/// Finds the files that match a pattern: * and ? match any characters and one character of a name, [a-z] one of
/// a set, and a folder called ** any number of folders, also none; at the end, ** matches every file below. None of
/// them matches a leading dot, and ** does not follow links to folders. Whatever is not a folder is a file, so that a
/// broken link is not left out in silence.
/// @param folder that a relative pattern begins at, as RunContext::locate takes it; empty for the document's.
/// @return the names relative to the folder, or absolute if the pattern is; sorted by code point.
/// @throws Failure if a folder cannot be read, Stopped.
std::vector<std::string> glob(const std::string& folder, std::string_view pattern, const RunContext& context);

}  // namespace velmorak
