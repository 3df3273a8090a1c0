#pragma once

#include <velmorak/RunRecord.h>

#include <string>

namespace velmorak {

/// Draws the boxes and wires of a pipeline where they stand on the canvas, as SVG that can stand in a page. Of a box
/// the ports are shown that are wired. What failed has a red frame, what was not run a dashed one.
std::string drawnPipeline(const RunRecord& record);

}  // namespace velmorak
