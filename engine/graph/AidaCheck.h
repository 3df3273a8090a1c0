#pragma once

#include <string>

namespace velmorak {

/// Empty for an empty text.
std::string absolutePath(const std::string& file);

/// @return an empty text when the file can be read as AIDA, else the end of a sentence, without full stop.
std::string whyNotAida(const std::string& file);

}  // namespace velmorak
