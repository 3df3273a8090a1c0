#pragma once

#include <filesystem>
#include <string>

namespace velmorak {

/// Reads a small file of the program's own, such as a record or a plan.
/// @param title what the file is, for messages: the record "run.json".
/// @throws Failure if it cannot be opened, or is not a regular file.
std::string contentOf(const std::filesystem::path& file, const std::string& title);

}  // namespace velmorak
