#pragma once

#include <velmorak/Ports.h>

#include <string>

namespace velmorak {

/// Whether values of the type can be written as text; any other comes only by wire.
bool hasTextForm(ValueType type);

/// Whether the input has a value that can be typed; other inputs need a wire.
bool takesText(const InputSpec& spec);

/// Checks a text against the type, limits and choices of an input. The one rule for values that a user sets, that a
/// document holds and that come by wire: NaN is a number, but lies within no limits and is not a whole number.
/// @return empty, or the end of a sentence without full stop: "11" is above 10, the largest value allowed.
std::string typeError(const InputSpec& spec, const std::string& value);

}  // namespace velmorak
