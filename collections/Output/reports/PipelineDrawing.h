#pragma once

#include <velmorak/RunRecord.h>

#include <string>

namespace velmorak {

/// Draws the boxes and wires of a pipeline at their positions on the canvas, as SVG for embedding in a page. Only wired
/// ports are shown. Plug-ins that failed have a red frame, those that did not run a dashed one.
std::string drawnPipeline(const RunRecord& record);

}  // namespace velmorak
