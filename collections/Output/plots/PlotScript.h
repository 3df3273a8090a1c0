#pragma once

#include "PlotFrame.h"

namespace velmorak {

/// Files of a picture for gnuplot, all in one folder and beginning with the base name.
struct PlotFiles {
    std::string script;
    std::string data;
};

/// @param contents receives the samples of curves and warnings for the user.
/// @throws Failure, with the input, if the contents cannot be shown.
PlotFiles plotFiles(PlotContents& contents, const PlotStyle& style);

/// The numbers of the picture: for each series a block with its outline and one with its points; or the cells of a map.
std::string plotData(const PlotContents& contents, const PlotFrame& frame);

/// Ranges, tics and titles of the axes.
std::string plotAxes(const PlotContents& contents, const PlotFrame& frame, const PlotStyle& style);

}  // namespace velmorak
