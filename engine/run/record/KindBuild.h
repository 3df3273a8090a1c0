#pragma once

#include <velmorak/Ports.h>

#include <string>

namespace velmorak {

/// Identifies the build of a kind's code: changes when its shared object, or the library itself, is built from other
/// sources. Part of cache keys.
std::string buildOf(const Kind& kind);

/// Identifies the build of the library.
std::string buildOfLibrary();

/// A sum of buildOf, as hexadecimal digits.
std::string buildTextOf(const Kind& kind);

}  // namespace velmorak
