#pragma once

#include "PlotStyle.h"

#include <velmorak/Kind.h>

#include <functional>

/// The input values of a Plot.
namespace velmorak {

std::vector<InputSpec> plotValueInputs();

/// @return why the value cannot be used; empty if it can.
std::string plotRefusal(const std::string& input, const std::string& value);

/// The text of an input.
using PlotValue = std::function<std::string(const std::string& input)>;

/// @return the style that the values describe, with a look for each object; its base name is empty.
/// @throws Failure, with the input, for a value that cannot be used.
PlotStyle plotStyleOf(const PlotValue& valueOf, std::size_t objects);

/// Appends the inputs of the second and further objects: object2, look2, object3, look3 ...
void addObjectInputs(Ports& ports, const InputSpec& object, std::size_t count);

/// @return why the two ends of a range cannot be used; empty if they can.
std::string rangeRefusal(const std::string& text);
/// @return the ends given by a valid text.
PlotRange rangeIn(const std::string& text);

/// The file name without the extension of a picture.
std::string withoutPictureEnding(const std::string& file);

}  // namespace velmorak
