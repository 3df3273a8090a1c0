#pragma once

#include <velmorak/Run.h>

#include <filesystem>
#include <string>

namespace velmorak {

/// Runs gnuplot on a script in its folder, without a shell and without the user's start file.
/// @param script path of the script relative to the folder; must not begin with "-".
/// @throws Failure if gnuplot is not installed or fails, with its message; Stopped.
void runGnuplot(const std::filesystem::path& folder, const std::string& script, const RunContext& context);

}  // namespace velmorak
