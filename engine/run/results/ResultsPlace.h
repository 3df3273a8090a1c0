#pragma once

#include "run/plan/Pipeline.h"

#include <string>
#include <string_view>

namespace velmorak {

/// Prefix of the names of incomplete files; the process id and a hyphen follow.
inline constexpr std::string_view temporaryMark = ".velmorak-";

/// @return empty, or why the results folder is not used: a link in place of the document's folder may lead anywhere, so
///         the user has to name it explicitly.
std::string whyNoResultsFolder(const Pipeline& pipeline);

/// Removes incomplete files of programs that crashed or were killed.
void removeLeftovers(const Pipeline& pipeline);

}  // namespace velmorak
