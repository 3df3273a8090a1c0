#pragma once

#include "shared/WrittenFile.h"

#include <velmorak/Kind.h>

/// Inputs whose number is an input value: "histogram", "histogram2", "histogram3", ... The kind places the first one;
/// the others come last, so that no port changes its position.
namespace velmorak {

inline constexpr std::size_t maxNumbered = 16;

/// Names: "histogram" for the first one, "histogram2" for the second.
std::string numberedName(const std::string& name, std::size_t position);

/// Number of inputs for the value as text: at least 1, at most maxNumbered.
std::size_t numberedCount(const ValueTexts& values, const std::string& countInput);

/// Appends the second and further ones, each like the first except for its name.
void addNumbered(Ports& ports, const InputSpec& first, std::size_t count);

/// Names of all inputs in a run.
/// @throws Failure if the number is wired: it determines the inputs.
std::vector<std::string> numberedInputs(const Arguments& arguments, const std::string& countInput,
                                        const std::string& name);

/// The input for the number of inputs.
InputSpec countInput(const std::string& name, const std::string& description);

}  // namespace velmorak
