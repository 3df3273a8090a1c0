#pragma once

#include <velmorak/Ports.h>

#include <string>

namespace velmorak {

/// Which build of the code a kind is: it changes when the shared object that the kind lies in, or the library itself,
/// is built from other sources.
std::string buildOf(const Kind& kind);

}  // namespace velmorak
