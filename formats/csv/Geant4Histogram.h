#pragma once

#include <velmorak/Run.h>
#include <velmorak/Value.h>

#include <filesystem>

namespace velmorak {

/// Reads a histogram of one to three dimensions, or a profile of one or two, from a text file that Geant4's analysis
/// manager has written, with all its sums.
/// @throws Failure for the input "file" if that is impossible.
DataObjectPtr readGeant4Histogram(const std::filesystem::path& file, RunContext& context);

}  // namespace velmorak
