#pragma once

#include "Output/plots/contents/PlotBoxes.h"
#include "Output/plots/contents/PlotData.h"

#include <string>

/// The plot commands of a picture: its layers from back to front, and the legend.
namespace velmorak {

/// @return "plot ..." for the series in the upper frame, with the entries of the legend.
std::string seriesCommand(const PlotContents& contents, const PlotData& data, const PlotBoxes& boxes,
                          const PlotFrame& frame);

/// @return "plot ..." for the lower panel.
std::string panelCommand(const PlotContents& contents, const PlotData& data, const PlotPanel& panel,
                         const PlotFrame& frame);

/// @return "plot ..." for colours and contours, with the entries of the legend.
std::string mapCommand(const PlotContents& contents, const PlotData& data, const PlotBoxes& boxes,
                       const PlotFrame& frame, const PlotStyle& style);

}  // namespace velmorak
