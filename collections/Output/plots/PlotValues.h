#pragma once

#include "PlotStyle.h"

#include <velmorak/Kind.h>

#include <functional>

/// The input values of a Plot.
namespace velmorak {

/// The inputs that every Plot shows.
std::vector<InputSpec> plotValueInputs();

/// Appends the inputs that depend on values: those for a lower panel, lines, regions, text, size and looks if they are
/// asked for or have values of their own, and the second and further objects.
void addFurtherInputs(Ports& ports, const InputSpec& object, const ValueTexts& values);

/// The inputs that are shown with the value "yes" of advanced, as a table in Markdown.
std::string advancedInputsAsTable();

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

/// The file name without the extension of a picture.
std::string withoutPictureEnding(const std::string& file);

}  // namespace velmorak
