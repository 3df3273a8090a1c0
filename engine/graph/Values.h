#pragma once

#include <velmorak/Kind.h>

#include <string>

namespace velmorak {

/// The input can be written down as a text, and does not need a wire.
bool takesText(const InputSpec& spec);

/// Why a value cannot be used.
/// @param kind asked last; null for an unknown kind, which takes everything.
/// @return an empty text when it can, else the end of a sentence, without full stop.
std::string refusalOf(const Kind* kind, const InputSpec& spec, const std::string& value);

/// Ports as the kind tells them, with names once on each side.
/// @throws std::exception, whatever the kind throws.
Ports portsOf(const Kind& kind, const ValueTexts& values);

/// As portsOf.
/// @return an empty text, or why the kind cannot tell them, with ports unchanged.
std::string tryPorts(const Kind& kind, const ValueTexts& values, Ports& ports);

}  // namespace velmorak
