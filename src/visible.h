#pragma once

#include <string>

/// @return a file name or another text of others as it may stand in a line of standard output or error: control
/// characters, line ends, marks that turn the direction of writing, and bytes that are not UTF-8 become escapes; what
/// is longer than any file name is shortened.
std::string visible(const std::string& text);
