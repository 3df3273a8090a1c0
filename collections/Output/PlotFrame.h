#pragma once

#include <velmorak/Histogram1D.h>

#include <string>
#include <vector>

namespace velmorak {

/// What the user chose for one picture.
struct PlotStyle {
    std::string baseName;  ///< Of all files of the picture, without folder and ending.
    std::string title;
    std::string xLabel;
    std::string yLabel;
    bool hasLogX = false;
    bool hasLogY = false;
    bool hasLegend = false;
    bool hasStatistics = false;
};

/// What the axes show, in the units of the axes.
struct PlotFrame {
    double xLow = 0.0;
    double xHigh = 1.0;
    double yLow = 0.0;
    double yHigh = 1.0;
};

/// The axes around all histograms, with room for the legend above them.
/// @throws Failure if a logarithmic x axis has nothing above 0 to show.
PlotFrame frameOf(const std::vector<HistogramPtr>& histograms, const PlotStyle& style);

}  // namespace velmorak
