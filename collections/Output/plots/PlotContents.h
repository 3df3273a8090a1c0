#pragma once

#include "PlotStyle.h"

#include <velmorak/FunctionObject.h>
#include <velmorak/Histogram.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

/// An object to draw.
struct PlotObject {
    std::string input;  ///< Its input, for messages.
    std::string maker;  ///< Name of the plug-in that made it.
    DataObjectPtr object;
};

/// One line of the statistics box: label and value.
using StatisticsRow = std::array<std::string, 2>;

/// A value with the ends of its error bars, in the units of the axes.
struct PlotPoint {
    double x = 0.0;
    double xLow = 0.0;
    double xHigh = 0.0;
    double y = 0.0;
    double yLow = 0.0;
    double yHigh = 0.0;
};

/// Drawing of a one-dimensional object.
struct PlotSeries {
    enum class SeriesStyle { Steps, Points, Curve };
    SeriesStyle style = SeriesStyle::Steps;
    bool isHistogram = false;
    std::string label;
    std::vector<double> edges;                       ///< Bin edges.
    std::vector<PlotPoint> points;                   ///< One for each bin, in order; the samples of a curve.
    std::shared_ptr<const FunctionObject> function;  ///< Of a curve.
    std::vector<StatisticsRow> statistics;
};

/// Drawing of a two-dimensional object: colours.
struct PlotMap {
    std::vector<double> xEdges;
    std::vector<double> yEdges;
    std::vector<double> values;  ///< Cells, x fastest; NaN for those not drawn.
    std::string statistics;      ///< One line.
    bool isCount = false;        ///< The colour scale begins at 0.
};

/// Contents of a plot: series, or one map.
struct PlotContents {
    std::vector<PlotSeries> series;
    std::optional<PlotMap> map;
    std::string title;  ///< The objects' titles.
    std::string xTitle;
    std::string yTitle;
    std::string zTitle;
    std::vector<std::string> categories;  ///< Names at 0, 1, 2 ... of the horizontal axis; usually empty.
    bool isPartial = false;               ///< An object lacks rows.
    std::vector<std::string> notes;       ///< Lines below the picture: what is missing.
    std::vector<std::string> warnings;

    bool hasCurve() const;
};

/// @throws Failure, with the input, for an object that cannot be drawn, or not together with the others.
PlotContents plotContents(const std::vector<PlotObject>& objects, const PlotStyle& style);

}  // namespace velmorak
