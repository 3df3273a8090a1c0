#pragma once

#include "Output/plots/axes/PlotFrame.h"

namespace velmorak {

/// Traces lines of equal height through the centres of the cells, straight within each square of four centres, at the
/// labelled tics of the scale of heights. Empty cells count as 0 in a histogram, and end the lines in a profile.
void traceContours(PlotContents& contents, const PlotFrame& frame, const PlotStyle& style);

}  // namespace velmorak
