#pragma once

#include "run/ValueCheck.h"

#include <velmorak/Kind.h>

#include <string>

namespace velmorak {

/// Why a value cannot be used.
/// @param kind consulted last; null for an unknown kind, which accepts every value.
/// @return empty for a usable value, else the end of a sentence, without full stop.
std::string valueError(const Kind* kind, const InputSpec& spec, const std::string& value);

/// The ports that the kind lists, without repeated names.
/// @throws what the kind throws; std::runtime_error for an invalid port name.
Ports portsOf(const Kind& kind, const ValueTexts& values);

/// As portsOf.
/// @return empty, or why the kind cannot list its ports; ports are then unchanged.
std::string tryPorts(const Kind& kind, const ValueTexts& values, Ports& ports);

}  // namespace velmorak
