#pragma once

#include "run/Pipeline.h"

#include <string>
#include <string_view>

namespace velmorak {

/// With which the name of a file begins that is not complete; the number of its program follows, and a hyphen.
inline constexpr std::string_view temporaryMark = ".velmorak-";

/// @return empty, or why nothing is written to the results folder: a link in place of the document's own folder may
///         lead anywhere, and only who names it says that he means it.
std::string whyNoResultsFolder(const Pipeline& pipeline);

/// Removes what programs that have crashed or were killed left of files that were not complete.
void removeLeftovers(const Pipeline& pipeline);

}  // namespace velmorak
