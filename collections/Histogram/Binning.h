#pragma once

#include <velmorak/Histogram1D.h>
#include <velmorak/Run.h>

namespace velmorak {

/// Most bins that an axis may have: a picture shows fewer, and a mistyped number must not fill the memory.
inline constexpr double maxBins = 1000000;

/// Edges written as numbers separated by blanks or commas.
/// @throws Failure if a word is no number, or there are fewer than two, or they do not ascend.
Axis axisFromEdges(const std::string& text);

/// The axis that the inputs "edges", or else "bins", "low" and "high" describe.
/// @throws Failure if they describe none.
Axis axisFrom(const Arguments& arguments);

/// @return an empty text, or why the edges cannot be used. Empty edges are no mistake: bins, low and high hold then.
std::string edgesRefusal(const std::string& text);

}  // namespace velmorak
