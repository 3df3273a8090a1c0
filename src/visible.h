#pragma once

#include <string>

/// Makes an untrusted text, such as a file name, safe to print on one line of a terminal.
/// @return the text with control characters, line ends, bidirectional formatting characters and invalid UTF-8 escaped,
///         truncated if it is longer than any file name.
std::string visible(const std::string& text);
