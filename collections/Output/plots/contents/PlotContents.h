#pragma once

#include "Output/plots/script/PlotStyle.h"

#include <velmorak/FunctionObject.h>
#include <velmorak/Value.h>

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
    enum class SeriesStyle { Steps, Filled, Stacked, Line, Band, Points, Curve };
    SeriesStyle style = SeriesStyle::Steps;
    bool isHistogram = false;
    bool isCounts = false;    ///< A histogram whose heights are numbers of entries.
    bool isRegular = false;   ///< All its bins are equally wide.
    bool isIntegers = false;  ///< Its bins are centred at whole numbers, one each.
    std::string input;        ///< Of the object, for messages.
    std::string label;
    ObjectLook look;
    std::vector<double> edges;                       ///< Bin edges.
    std::vector<PlotPoint> points;                   ///< One for each bin, in order; the samples of a curve.
    std::vector<PlotPoint> beyond;                   ///< Samples of a fitted curve outside of the range of the fit.
    std::shared_ptr<const FunctionObject> function;  ///< Of a curve.
    std::vector<StatisticsRow> statistics;

    bool isStacked() const { return style == SeriesStyle::Stacked; }
};

/// Drawing of a two-dimensional object: colours.
struct PlotMap {
    std::vector<double> xEdges;
    std::vector<double> yEdges;
    std::vector<double> values;  ///< Cells, x fastest; NaN for those not drawn.
    std::string statistics;      ///< One line.
    bool isCount = false;        ///< The colour scale begins at 0.
};

/// A line from one point to another, at a height.
struct ContourLine {
    double x1 = 0.0;
    double y1 = 0.0;
    double x2 = 0.0;
    double y2 = 0.0;
    double height = 0.0;
};

/// Drawing of a two-dimensional object: lines of equal height.
struct PlotContour {
    PlotMap grid;
    std::string label;
    ObjectLook look;
    std::vector<ContourLine> lines;
};

/// Contents of a plot: series, or a map, contours or both.
struct PlotContents {
    std::vector<PlotSeries> series;
    std::optional<PlotMap> map;
    std::vector<PlotContour> contours;
    std::optional<PlotSeries> stack;  ///< The sum of the stacked histograms, with its errors.
    std::string title;                ///< The objects' titles.
    std::string xTitle;
    std::string yTitle;
    std::string zTitle;
    std::vector<std::string> categories;  ///< Names at 0, 1, 2 ... of the horizontal axis; usually empty.
    bool isPartial = false;               ///< An object lacks rows.
    std::vector<std::string> notes;       ///< Lines below the picture about data that is missing.
    std::vector<std::string> warnings;

    bool hasCurve() const;
    bool isPlane() const { return map.has_value() || !contours.empty(); }
    /// The map, or the first grid of contours. Call only if isPlane().
    const PlotMap& plane() const { return map ? *map : contours.front().grid; }
};

/// @param objects no lists.
/// @throws Failure, with the input, for an object that cannot be drawn, or not together with the others.
PlotContents plotContents(const std::vector<PlotObject>& objects, const PlotStyle& style);

}  // namespace velmorak
