#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velmorak {

enum class LegendPlace { None, Automatic, TopLeft, TopRight, BottomLeft, BottomRight };
enum class HistogramStyle { Automatic, Steps, Points };
enum class StatisticsDisplay { None, Automatic, Always };

/// Ends of an axis, in its unit; an end that is not set follows the contents.
struct PlotRange {
    std::optional<double> low;
    std::optional<double> high;
};

/// User settings of one axis.
struct PlotAxis {
    std::string title;
    PlotRange range;
    bool hasLog = false;
};

/// User settings of one picture.
struct PlotStyle {
    std::string baseName;              ///< Of all files of the picture, without folder and extension.
    std::vector<std::string> formats;  ///< Extensions of the pictures: "png", "svg", "pdf".
    std::string title;
    PlotAxis x;
    PlotAxis y;
    PlotAxis z;
    std::vector<std::string>
        labels;  ///< For the legend, in the order of the objects; an empty one means the object's title.
    LegendPlace legend = LegendPlace::Automatic;
    HistogramStyle histograms = HistogramStyle::Automatic;
    StatisticsDisplay statistics = StatisticsDisplay::Automatic;
};

}  // namespace velmorak
