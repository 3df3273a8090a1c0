#pragma once

#include <velmorak/Kind.h>

/// Inputs whose number is a value: "histogram", "histogram2", "histogram3", ... The first one stands where the kind
/// puts it, the others come last, so that no port changes its place.
namespace velmorak {

inline constexpr std::size_t maxNumbered = 16;

/// "histogram" for the first one, "histogram2" for the second.
std::string numberedName(const std::string& name, std::size_t position);

/// How many there are when the value reads as text: at least 1, at most maxNumbered.
std::size_t numberedCount(const ValueTexts& values, const std::string& countInput);

/// Appends the second and further ones, each like the first but for its name.
void addNumbered(Ports& ports, const InputSpec& first, std::size_t count);

/// Names of all of them in one run.
/// @throws Failure if the number came by wire: it decides which inputs there are.
std::vector<std::string> numberedInputs(const Arguments& arguments, const std::string& countInput,
                                        const std::string& name);

/// The value that says how many there are.
InputSpec countInput(const std::string& name, const std::string& description);

/// The plug-in's name as the name of a file: whatever separates folders becomes "_".
std::string asFileName(const std::string& pluginName);

}  // namespace velmorak
