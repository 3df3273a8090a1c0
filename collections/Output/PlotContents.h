#pragma once

#include "PlotStyle.h"

#include <velmorak/FunctionObject.h>
#include <velmorak/Histogram1D.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

/// An object that goes into a picture.
struct PlotObject {
    std::string input;  ///< By which it came, for messages.
    std::string maker;  ///< The plug-in that made it.
    DataObjectPtr object;
};

/// One line of the statistics box: what it is, and how much.
using StatisticsRow = std::array<std::string, 2>;

/// A value with the ends of its bars, in the units of the axes.
struct PlotPoint {
    double x = 0.0;
    double xLow = 0.0;
    double xHigh = 0.0;
    double y = 0.0;
    double yLow = 0.0;
    double yHigh = 0.0;
};

/// What is drawn of one object over one quantity.
struct PlotSeries {
    enum class SeriesStyle { Steps, Points, Curve };
    SeriesStyle look = SeriesStyle::Steps;
    bool isHistogram = false;
    std::string label;
    std::vector<double> edges;                       ///< Of bins.
    std::vector<PlotPoint> points;                   ///< Of bins one for each, in order. Of a curve its samples.
    std::shared_ptr<const FunctionObject> function;  ///< Of a curve.
    std::vector<StatisticsRow> statistics;
};

/// What is drawn of one object over two quantities: colours.
struct PlotMap {
    std::vector<double> xEdges;
    std::vector<double> yEdges;
    std::vector<double> values;  ///< Cells next to each other along x; NaN where nothing is drawn.
    std::string statistics;      ///< One line.
    bool isCount = false;        ///< The colours begin at 0.
};

/// All that is drawn in one frame: series, or one map.
struct PlotContents {
    std::vector<PlotSeries> series;
    std::optional<PlotMap> map;
    std::string title;  ///< Titles as the objects have them.
    std::string xTitle;
    std::string yTitle;
    std::string zTitle;
    std::vector<std::string> warnings;

    bool hasCurve() const;
};

/// @throws Failure, with the input, for what cannot be drawn, or not in one frame with the others.
PlotContents plotContents(const std::vector<PlotObject>& objects, const PlotStyle& style);

}  // namespace velmorak
