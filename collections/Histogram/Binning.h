#pragma once

#include <velmorak/Axis.h>
#include <velmorak/Kind.h>

namespace velmorak {

/// Limit for the bins of an axis: no picture shows as many, and a mistyped number must not exhaust the memory.
inline constexpr double maxBins = 1000000;

/// Ascending numbers separated by blanks or commas, at least two.
/// @param input name of the input, for messages.
/// @throws Failure if a word is not a finite number, there are fewer than two, or they do not ascend.
std::vector<double> edgesIn(const std::string& text, const std::string& input = "edges");

/// The text holds nothing but blanks and commas.
bool isBlank(const std::string& text);

/// The axis described by the inputs "edges" or else "bins", "low" and "high", each with the prefix before its name.
/// @throws Failure if they describe no axis.
Axis axisFrom(const Arguments& arguments, const std::string& prefix = "");

/// The inputs that axisFrom reads.
/// @param expression name of the input whose unit the edges have.
std::vector<InputSpec> axisInputs(const std::string& expression, const std::string& prefix = "");

/// The choice between a given range and one that is found while the table is read.
InputSpec rangeInput();
/// The range is automatic, and no edges are given.
/// @throws Failure if there are more bins than an automatic range can have.
bool isRangeAutomatic(const Arguments& arguments);

/// @return why the edges cannot be used; empty if they can. Empty edges are valid: bins, low and high then apply.
std::string edgesRefusal(const std::string& text);

/// The inputs for the title of an object and of one of its axes, which is named after an expression.
InputSpec titleInput();
InputSpec axisTitleInput(const std::string& name, const std::string& expression);

}  // namespace velmorak
