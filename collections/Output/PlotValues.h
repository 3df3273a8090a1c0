#pragma once

#include "PlotStyle.h"

#include <velmorak/Kind.h>

/// The values of a Plot: what the user may choose of a picture.
namespace velmorak {

std::vector<InputSpec> plotValueInputs();

/// @return an empty text, or why no picture could use the value.
std::string plotRefusal(const std::string& input, const std::string& value);

/// @return what the values say; the base name stays empty.
/// @throws Failure, with the input, for a value that cannot be used.
PlotStyle plotStyleOf(const Arguments& arguments);

/// Of the two ends of a range. @return an empty text, or why they cannot be used.
std::string rangeRefusal(const std::string& text);
/// @return the ends in a text that is not refused.
PlotRange rangeIn(const std::string& text);

/// The file's name without the ending of a picture.
std::string withoutPictureEnding(const std::string& file);

}  // namespace velmorak
