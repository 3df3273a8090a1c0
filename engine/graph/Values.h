#pragma once

#include <velmorak/Kind.h>

#include <string>

namespace velmorak {

/// The input can be written down as a text, and does not need a wire.
bool takesText(const InputSpec& spec);

/// Why a value is none of the input's type, or outside its limits or choices; see refusalOf.
std::string typeRefusal(const InputSpec& spec, const std::string& value);

/// Why a value cannot be used.
/// @param kind asked last; null for an unknown kind, which takes everything.
/// @return an empty text when it can, else the end of a sentence, without full stop.
std::string refusalOf(const Kind* kind, const InputSpec& spec, const std::string& value);

/// Ports as the kind tells them, with names once on each side.
/// @throws whatever the kind throws; std::runtime_error for a port whose name is none.
Ports portsOf(const Kind& kind, const ValueTexts& values);

/// As portsOf.
/// @return an empty text, or why the kind cannot tell them, with ports unchanged.
std::string tryPorts(const Kind& kind, const ValueTexts& values, Ports& ports);

}  // namespace velmorak
