#pragma once

#include <filesystem>
#include <string>

namespace velmorak {

/// Why a file cannot be read from its beginning to its end: a pipe or a terminal keeps the reader waiting, and a device
/// need not end. Asked before the file is opened, because the opening of a pipe waits already.
/// @return a sentence that names the file and what it is, "run.fifo is not a regular file (a FIFO)"; empty for a
/// regular
///         file, and for one that is not there or cannot be looked at, which its opening says better.
std::string whyNotRegular(const std::filesystem::path& file);

/// @throws Failure with that sentence.
void requireRegular(const std::filesystem::path& file);

}  // namespace velmorak
