#pragma once

#include "Pipeline.h"
#include "Runner.h"

#include <string>

namespace velmorak {

/// @param takesRows a table comes into the plug-in.
/// @return the line that ends the report of a plug-in: Histogram1D "mass": 2000 rows, 0.01 s. Empty for one that was
///         not asked for.
std::string summaryLine(const PipelineNode& node, const NodeReport& report, bool takesRows);

}  // namespace velmorak
