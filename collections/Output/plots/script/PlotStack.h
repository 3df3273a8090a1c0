#pragma once

#include "Output/plots/contents/PlotContents.h"

namespace velmorak {

/// Raises each stacked histogram by those before it, so that the last is the highest, and adds their sum with its
/// errors, if there are any.
/// @throws Failure, with the input, for histograms of different bins.
void stackUp(PlotContents& contents);

}  // namespace velmorak
