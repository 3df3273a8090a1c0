#pragma once

#include <filesystem>
#include <iosfwd>

namespace velmorak {
class FileFormats;
}
class StopOnSignal;

/// Prints the contents of a file: objects, with columns and rows for tables and a line for others.
/// @param isJson prints one JSON object instead of lines for people.
/// @throws velmorak::Failure if the file cannot be read or has no known format; velmorak::Stopped.
void printContent(const std::filesystem::path& file, const velmorak::FileFormats& formats, bool isJson,
                  StopOnSignal& signals, std::ostream& stream);
