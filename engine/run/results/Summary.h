#pragma once

#include "run/RunListener.h"

#include <optional>
#include <string>

namespace velmorak {

/// @return the final line of a plug-in: Histogram1D "mass": 2000 rows, 0.01 s. Empty for one that was not requested.
std::string summaryLine(const PipelineNode& node, const NodeReport& report);

/// @return the line about files of an earlier run that this one did not make again.
std::string formerText(const Pipeline& pipeline, const std::vector<FormerFile>& missing);

/// @return the progress line of a pass: Reading "events": 40 %, 2000 rows, 1000 rows/s, 3 s left. The time left appears
///         when at least a hundredth is done.
std::string progressText(const ProgressNow& progress);

/// @return nothing while too little is done for an estimate.
std::optional<double> secondsLeft(const ProgressNow& progress);

}  // namespace velmorak
