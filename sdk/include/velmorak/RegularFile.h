#pragma once

#include <filesystem>
#include <string>

namespace velmorak {

/// Checks that a file can be read from beginning to end: reading a pipe or a terminal may block, and a device may never
/// end. Call it before opening the file, because opening a pipe may block as well.
/// @return an error message such as "run.fifo is not a regular file (a FIFO)"; empty for a regular file, and for one
///         that is missing or inaccessible, for which opening it gives a better message.
std::string whyNotRegular(const std::filesystem::path& file);

/// @throws Failure with that message.
void requireRegular(const std::filesystem::path& file);

}  // namespace velmorak
