#pragma once

#include "expression/Kernels.h"

#include <memory>
#include <string>

/// Kernels that make texts, and those that search them.
namespace velmorak::expression {

/// Texts to texts in lower or upper case, by the simple case mappings of Unicode. Bytes that are not UTF-8 stay.
bool lowerTexts(const KernelArgs& args);
bool upperTexts(const KernelArgs& args);

/// A text, the position of its first character from 0, negative from the end, and a number of characters, to that part
/// of the text.
bool partsOfTexts(const KernelArgs& args);

/// Seconds since 1970 to the texts of dates, as by dateText; NaN to an empty text.
bool datesAsTexts(const KernelArgs& args);

/// @return a regular expression of RE2, compiled.
/// @throws std::invalid_argument if it is invalid.
std::shared_ptr<const void> compiledPattern(const std::string& pattern);

/// Texts and compiled patterns to whether the pattern is found anywhere in the text.
bool searchTexts(const KernelArgs& args);

}  // namespace velmorak::expression
