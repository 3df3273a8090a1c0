#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velmorak {

enum class LegendPlace { None, Automatic, TopLeft, TopRight, BottomLeft, BottomRight };
enum class HistogramLook { Automatic, Steps, Points };
enum class StatisticsLook { None, Automatic, Always };

/// Ends of an axis, in its unit; what is not set follows what is drawn.
struct PlotRange {
    std::optional<double> low;
    std::optional<double> high;
};

/// What the user chose for one axis.
struct PlotAxis {
    std::string title;
    PlotRange range;
    bool hasLog = false;
};

/// What the user chose for one picture.
struct PlotStyle {
    std::string baseName;              ///< Of all files of the picture, without folder and ending.
    std::vector<std::string> formats;  ///< Endings of the pictures: "png", "svg", "pdf".
    std::string title;
    PlotAxis x;
    PlotAxis y;
    PlotAxis z;
    std::vector<std::string> labels;  ///< In the legend, by the objects' order; an empty one is the object's own.
    LegendPlace legend = LegendPlace::Automatic;
    HistogramLook look = HistogramLook::Automatic;
    StatisticsLook statistics = StatisticsLook::Automatic;
};

}  // namespace velmorak
