#pragma once

#include "PlotFrame.h"

namespace velmorak {

/// A picture as gnuplot draws it. All files stand in one folder and begin with the base name.
struct PlotFiles {
    std::string script;
    std::string data;
};

/// @param contents takes the samples of curves and what the user should know.
/// @throws Failure, with the input, where the contents cannot be shown.
PlotFiles plotFiles(PlotContents& contents, const PlotStyle& style);

/// The numbers of the picture: for each series a block with its outline and one with its points; or the cells of a map.
std::string plotData(const PlotContents& contents, const PlotFrame& frame);

/// Ranges, tics and titles of the axes.
std::string plotAxes(const PlotContents& contents, const PlotFrame& frame, const PlotStyle& style);

}  // namespace velmorak
