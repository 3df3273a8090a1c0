#pragma once

#include "run/plan/Pipeline.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace velmorak {

/// Prefix of the names of incomplete files; the process id and a hyphen follow.
inline constexpr std::string_view temporaryMark = ".velmorak-";

/// @return empty, or why the results folder is not used: a link in place of the document's folder may lead anywhere, so
///         the user has to name it explicitly.
std::string whyNoResultsFolder(const Pipeline& pipeline);

/// @return whether a path is the folder or below it; links are not resolved.
bool isBelow(const std::filesystem::path& path, const std::filesystem::path& folder);

/// Removes incomplete files of programs that crashed or were killed.
void removeLeftovers(const Pipeline& pipeline);

}  // namespace velmorak
