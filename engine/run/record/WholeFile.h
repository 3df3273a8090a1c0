#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace velmorak {

/// Reads a small file of the program's own, such as a record or a plan.
/// @param title what the file is, for messages: the record "run.json".
/// @throws Failure if it cannot be opened, or is not a regular file.
std::string contentOf(const std::filesystem::path& file, const std::string& title);

/// Writes a file under a temporary name, through to the device, and renames it: a reader sees the old file or the new
/// one as a whole. The next run removes a temporary file of a killed program from the results folder.
/// @throws std::system_error
void replaceFile(const std::filesystem::path& file, std::string_view text);

}  // namespace velmorak
