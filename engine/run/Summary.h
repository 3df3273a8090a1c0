#pragma once

#include "run/RunListener.h"

#include <optional>
#include <string>

namespace velmorak {

/// @param takesRows a table comes into the plug-in.
/// @return the line that ends the report of a plug-in: Histogram1D "mass": 2000 rows, 0.01 s. Empty for one that was
///         not asked for.
std::string summaryLine(const PipelineNode& node, const NodeReport& report, bool takesRows);

/// @return the line of progress of a table that passes: Reading "events": 40 %, 2000 rows, 1000 rows/s, 3 s left. The
///         time left is said when at least a hundredth is done.
std::string progressText(const ProgressNow& progress);

/// @return nothing while too little is done to foresee it.
std::optional<double> secondsLeft(const ProgressNow& progress);

}  // namespace velmorak
