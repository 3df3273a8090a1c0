#pragma once

#include "Output/plots/script/PlotStyle.h"

#include <functional>

/// The input values of a Plot.
namespace velmorak {

/// @return why the value cannot be used; empty if it can.
std::string plotRefusal(const std::string& input, const std::string& value);

/// The text of an input; empty for one that is not shown.
using PlotValue = std::function<std::string(const std::string& input)>;

/// @return the style that the values describe, with a look for each object; its base name is empty.
/// @throws Failure, with the input, for a value that cannot be used.
PlotStyle plotStyleOf(const PlotValue& valueOf, std::size_t objects);

/// @return why the two ends of a range cannot be used; empty if they can.
std::string rangeRefusal(const std::string& text);
/// @return the ends given by a valid text.
PlotRange rangeIn(const std::string& text);

/// @param file value of the input "file".
/// @return the name of the picture's files in the results folder, without extension.
std::string pictureName(const std::string& file, const std::string& plugin);

}  // namespace velmorak
