#pragma once

#include <velmorak/Histogram1D.h>
#include <velmorak/Kind.h>

namespace velmorak {

/// Most bins that an axis may have: a picture shows fewer, and a mistyped number must not fill the memory.
inline constexpr double maxBins = 1000000;

/// Ascending numbers separated by blanks or commas, at least two.
/// @param input name for the messages.
/// @throws Failure if a word is no finite number, or there are fewer than two, or they do not ascend.
std::vector<double> edgesIn(const std::string& text, const std::string& input = "edges");

/// No word stands in the text.
bool isBlank(const std::string& text);

/// The axis that the inputs "edges", or else "bins", "low" and "high" describe; each with the prefix before its name.
/// @throws Failure if they describe none.
Axis axisFrom(const Arguments& arguments, const std::string& prefix = "");

/// The inputs that axisFrom reads.
/// @param expression name of the input whose unit the edges have.
std::vector<InputSpec> axisInputs(const std::string& expression, const std::string& prefix = "");

/// The choice between a given range and one that is found while the table passes.
InputSpec rangeInput();
/// The range is to be found, and no edges are given.
/// @throws Failure if there are more bins than such a range can have.
bool isRangeAutomatic(const Arguments& arguments);

/// @return an empty text, or why the edges cannot be used. Empty edges are no mistake: bins, low and high hold then.
std::string edgesRefusal(const std::string& text);

/// The inputs for the title of an object and of one of its axes, which is named after an expression.
InputSpec titleInput();
InputSpec axisTitleInput(const std::string& name, const std::string& expression);

}  // namespace velmorak
