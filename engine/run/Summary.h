#pragma once

#include "Pipeline.h"
#include "Runner.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace velmorak {

/// @param takesRows a table comes into the plug-in.
/// @return the line that ends the report of a plug-in: Histogram1D "mass": 2000 rows, 0.01 s. Empty for one that was
///         not asked for.
std::string summaryLine(const PipelineNode& node, const NodeReport& report, bool takesRows);

/// @param fraction part of the work done, 0 to 1, where it is known.
/// @return the line of progress of a table that passes: Reading "events": 40 %, 2000 rows, 1000 rows/s, 3 s left. The
///         time left is said when at least a hundredth is done.
std::string progressText(const std::string& plugin, std::uint64_t rows, std::optional<double> fraction,
                         std::chrono::duration<double> elapsed);

}  // namespace velmorak
