#include "Output/plots/contents/PlotContents.h"

#include "Output/plots/contents/PlotStatistics.h"
#include "Output/plots/script/PlotStack.h"
#include "Output/plots/script/SeriesStyles.h"
#include "Output/plots/text/PlotText.h"

#include <velmorak/DataObjects.h>
#include <velmorak/Dates.h>
#include <velmorak/Failure.h>
#include <velmorak/Histogram.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorak {

namespace {

constexpr double notThere = std::numeric_limits<double>::quiet_NaN();

/// The unit in brackets at the end of an axis title; empty if there is none.
std::string unitIn(const std::string& axisTitle) {
    const std::size_t open = axisTitle.rfind('[');
    if (open == std::string::npos || !axisTitle.ends_with(']')) {
        return {};
    }
    return axisTitle.substr(open + 1, axisTitle.size() - open - 2);
}

bool isOfCounts(const BinSums& sums) {
    return sums.w == static_cast<double>(sums.entries) && sums.ww == sums.w;
}

/// Title for the heights of a histogram; with the bin width if all bins are equal and have a unit.
std::string heightTitle(const BinSums& sums, const Axis& axis, const std::string& xTitle) {
    const std::string quantity = !isOfCounts(sums) ? "Sum of weights" : "Entries";
    const std::string given = unitIn(xTitle);
    const std::string unit = given == dateUnit ? "s" : given;
    if (!axis.isRegular() || unit.empty()) {
        return quantity + " / bin";
    }
    const std::string width = roundedOrWhole(axis.width(0));
    return quantity + " / " + (width == "1" ? unit : "(" + width + " " + unit + ")");
}

bool hasConverged(const FunctionObject& function) {
    return std::none_of(function.annotation.begin(), function.annotation.end(), [](const AnnotationItem& item) {
        return item.key == "status" && item.value == "not converged";
    });
}

/// Nothing of it can be seen. A histogram without entries is a line at 0.
bool isBlank(const PlotSeries& series) {
    return !series.function && std::all_of(series.points.begin(), series.points.end(), [&](const PlotPoint& point) {
        return !std::isfinite(point.y) || (series.isHistogram && point.y == 0.0 && point.yLow == point.yHigh);
    });
}

/// Each bin holds one whole number.
bool isOfIntegers(const Axis& axis) {
    return axis.isRegular() && axis.width(0) == 1.0 && std::trunc(axis.center(0)) == axis.center(0);
}

/// Collects objects of all classes for one picture.
class Collector {
public:
    explicit Collector(const PlotStyle& style) : style(style) {}

    void add(const PlotObject& object);

    PlotContents finish();

private:
    void addObject(const PlotObject& object, const FunctionObject& function);

    void addObject(const PlotObject& object, const Histogram1D& histogram);

    void setHeightTitle(const Histogram1D& histogram);

    void addObject(const PlotObject& object, const Profile1D& profile);

    void addObject(const PlotObject& object, const Points& points);

    void addObject(const PlotObject& object, const Histogram2D& histogram);

    void addObject(const PlotObject& object, const Profile2D& profile);

    /// @param valueOf value of a cell; empty if the cell stays white.
    template <typename ValueOf>
    void addMap(const PlotObject& object, const Grid<2>& grid, std::string statistics, bool isCount,
                const ValueOf& valueOf) {
        PlotMap map{.xEdges = grid.axis(0).edges(),
                    .yEdges = grid.axis(1).edges(),
                    .values = {},
                    .statistics = std::move(statistics),
                    .isCount = isCount};
        std::size_t strange = 0;
        for (std::size_t j = 1; j <= grid.axis(1).bins(); ++j) {
            for (std::size_t i = 1; i <= grid.axis(0).bins(); ++i) {
                const std::optional<double> value = valueOf(grid.cell({i, j}));
                const bool isStrange = value && !std::isfinite(*value);
                strange += isStrange ? 1 : 0;
                map.values.push_back(value && !isStrange ? *value : notThere);
            }
        }
        warn(object, strange, "bins");
        keepMap(object, std::move(map));
        take(contents.xTitle, grid.axis(0).title);
        take(contents.yTitle, grid.axis(1).title);
    }

    void keepMap(const PlotObject& object, PlotMap map);

    /// @return the user's settings of the object that is being added.
    ObjectLook lookHere() const { return position < style.looks.size() ? style.looks[position] : ObjectLook(); }

    std::string labelHere(const PlotObject& object) const;

    PlotSeries seriesOf(const PlotObject& object);

    void warnOfStrange(const PlotObject& object, const PlotSeries& series, const std::string& parts);

    void warn(const PlotObject& object, std::size_t strange, const std::string& parts);

    static void take(std::string& title, const std::string& found);

    void warnIfBlank();

    const PlotStyle& style;
    PlotContents contents;
    std::vector<std::string> titles;
    std::size_t position = 0;  ///< Of the object that is being added.
    bool haveOneHeight = true;
};

[[noreturn]] void refuse(const PlotObject& object) {
    throw Failure(object.input, "a three-dimensional histogram cannot be drawn; project it first");
}

bool isPartial(const DataObject& object) {
    return std::any_of(object.annotation.begin(), object.annotation.end(),
                       [](const AnnotationItem& item) { return item.key == "partial"; });
}

void Collector::add(const PlotObject& object) {
    contents.isPartial = contents.isPartial || isPartial(*object.object);
    visit(*object.object, overloaded{
                              [&](const FunctionObject& function) { addObject(object, function); },
                              [&](const Histogram3D&) { refuse(object); },
                              [&](const HistogramList&) { refuse(object); },
                              [&](const DataObject&) { refuse(object); },
                              [&](const auto& data) {
                                  addObject(object, data);
                                  titles.push_back(data.title);
                              },
                          });
    ++position;
    if (contents.isPlane() && !contents.series.empty()) {
        throw Failure(object.input,
                      "one- and two-dimensional objects cannot be drawn in the same plot; use another Plot");
    }
}

PlotContents Collector::finish() {
    // A picture of one object, with or without curves, gets the object's title.
    if (titles.size() == 1) {
        contents.title = titles.front();
    }
    if (!haveOneHeight) {
        contents.yTitle = contents.yTitle.substr(0, contents.yTitle.find(" / ")) + " / bin";
    }
    chooseStyles(contents, style);
    warnIfBlank();
    stackUp(contents);
    return std::move(contents);
}

void Collector::addObject(const PlotObject& object, const FunctionObject& function) {
    if (function.arguments.size() > 1) {
        throw Failure(object.input, "a function of more than one argument cannot be drawn");
    }
    PlotSeries series = seriesOf(object);
    series.style = PlotSeries::SeriesStyle::Curve;
    allowStyles(series, position, {ObjectStyle::Line, ObjectStyle::Filled}, "a function");
    if (!hasConverged(function)) {
        series.label += " (not converged)";
        contents.notes.push_back("\"" + object.maker + "\" did not converge: this is its last curve");
        contents.warnings.push_back(object.input + ": \"" + object.maker +
                                    "\" did not converge; its last curve is drawn");
    }
    series.statistics = statisticsOf(function);
    series.function = std::shared_ptr<const FunctionObject>(object.object, &function);
    take(contents.xTitle, series.function->arguments.empty() ? "" : series.function->arguments.front().name);
    contents.series.push_back(std::move(series));
}

void Collector::addObject(const PlotObject& object, const Histogram1D& histogram) {
    PlotSeries series = seriesOf(object);
    series.isHistogram = true;
    allowStyles(series, position,
                {ObjectStyle::Steps, ObjectStyle::Points, ObjectStyle::Line, ObjectStyle::Filled, ObjectStyle::Stacked,
                 ObjectStyle::Band},
                "a histogram of one quantity");
    series.edges = histogram.axis().edges();
    series.isRegular = histogram.axis().isRegular();
    series.isIntegers = isOfIntegers(histogram.axis());
    series.isCounts = isOfCounts(histogram.inRange());
    series.statistics = statisticsOf(histogram);
    if (!contents.series.empty() && contents.categories != histogram.axis().labels) {
        throw Failure(object.input, "histograms of different categories cannot be drawn in the same plot");
    }
    contents.categories = histogram.axis().labels;
    const Axis& axis = histogram.axis();
    for (std::size_t i = 0; i < histogram.bins(); ++i) {
        const double height = histogram.height(i);
        const double error = histogram.error(i);
        series.points.push_back({.x = axis.center(i),
                                 .xLow = axis.edges()[i],
                                 .xHigh = axis.edges()[i + 1],
                                 .y = height,
                                 .yLow = height - error,
                                 .yHigh = height + error});
    }
    warnOfStrange(object, series, "bins");
    setHeightTitle(histogram);
    contents.series.push_back(std::move(series));
}

void Collector::setHeightTitle(const Histogram1D& histogram) {
    take(contents.xTitle, histogram.axis().title);
    const std::string& xTitle = style.x.title.empty() ? contents.xTitle : style.x.title;
    const std::string title = heightTitle(histogram.inRange(), histogram.axis(), xTitle);
    haveOneHeight = haveOneHeight && (contents.yTitle.empty() || contents.yTitle == title);
    if (contents.yTitle.empty() || title.starts_with("Sum")) {
        contents.yTitle = title;
    }
}

void Collector::addObject(const PlotObject& object, const Profile1D& profile) {
    PlotSeries series = seriesOf(object);
    series.style = PlotSeries::SeriesStyle::Points;
    allowStyles(series, position, {ObjectStyle::Points, ObjectStyle::Line, ObjectStyle::Band}, "a profile");
    series.statistics = statisticsOf(profile);
    const Axis& axis = profile.grid().axis(0);
    for (std::size_t i = 0; i < axis.bins(); ++i) {
        const double height = profile.height(i + 1);
        const double error = profile.error(i + 1);
        const bool isEmpty = profile.cells()[i + 1].entries == 0 && std::isnan(height);
        if (!isEmpty) {
            series.points.push_back({.x = axis.center(i),
                                     .xLow = axis.edges()[i],
                                     .xHigh = axis.edges()[i + 1],
                                     .y = height,
                                     .yLow = height - error,
                                     .yHigh = height + error});
        }
    }
    series.edges = {axis.low(), axis.high()};
    warnOfStrange(object, series, "bins");
    take(contents.xTitle, axis.title);
    contents.series.push_back(std::move(series));
}

void Collector::addObject(const PlotObject& object, const Points& points) {
    if (points.dimension() > 2) {
        throw Failure(object.input, "points of more than two dimensions cannot be drawn");
    }
    PlotSeries series = seriesOf(object);
    series.style = PlotSeries::SeriesStyle::Points;
    allowStyles(series, position, {ObjectStyle::Points, ObjectStyle::Line, ObjectStyle::Band}, "an object of points");
    series.statistics = {{"Points", std::to_string(points.size())}};
    const std::size_t last = points.dimension() - 1;
    for (std::size_t i = 0; i < points.size(); ++i) {
        // One-dimensional points are drawn side by side.
        const auto number = static_cast<double>(i + 1);
        const Measurement x =
            last == 0 ? Measurement{.value = number, .errorPlus = 0, .errorMinus = 0} : points.measurement(i, 0);
        const Measurement y = points.measurement(i, last);
        series.points.push_back({.x = x.value,
                                 .xLow = x.value - x.errorMinus,
                                 .xHigh = x.value + x.errorPlus,
                                 .y = y.value,
                                 .yLow = y.value - y.errorMinus,
                                 .yHigh = y.value + y.errorPlus});
    }
    warnOfStrange(object, series, "points");
    const auto titleOf = [&](std::size_t direction) {
        return direction < points.axisTitles.size() ? points.axisTitles[direction] : std::string();
    };
    take(contents.xTitle, last == 0 ? "Point" : titleOf(0));
    take(contents.yTitle, titleOf(last));
    contents.series.push_back(std::move(series));
}

void Collector::addObject(const PlotObject& object, const Histogram2D& histogram) {
    addMap(object, histogram.grid(), statisticsLine(histogram), true, [&](std::size_t cell) {
        const auto& sums = histogram.cells()[cell];
        const bool isEmpty = sums.entries == 0 && sums.w == 0.0;
        return isEmpty ? std::nullopt : std::optional(sums.w);
    });
    contents.zTitle = "Entries / bin";
    const auto sums = histogram.inRange();
    if (sums.w != static_cast<double>(sums.entries) || sums.ww != sums.w) {
        contents.zTitle = "Sum of weights / bin";
    }
}

void Collector::addObject(const PlotObject& object, const Profile2D& profile) {
    addMap(object, profile.grid(), statisticsLine(profile), false, [&](std::size_t cell) {
        const bool isEmpty = profile.cells()[cell].entries == 0 && std::isnan(profile.height(cell));
        return isEmpty ? std::nullopt : std::optional(profile.height(cell));
    });
    contents.zTitle = "Mean";
}

void Collector::keepMap(const PlotObject& object, PlotMap map) {
    const ObjectLook look = lookHere();
    if (look.style == ObjectStyle::Contours) {
        contents.contours.push_back({.grid = std::move(map), .label = labelHere(object), .look = look, .lines = {}});
        return;
    }
    if (look.style != ObjectStyle::Automatic && look.style != ObjectStyle::Colours) {
        throw Failure(lookInput(position), "an object of two quantities is drawn as colours or contours");
    }
    if (contents.map) {
        throw Failure(object.input,
                      "a plot can show only one two-dimensional object as colours; give the other one the look "
                      "\"contours\", or use another Plot");
    }
    contents.map = std::move(map);
}

std::string Collector::labelHere(const PlotObject& object) const {
    const DataObject& data = *object.object;
    const std::string& own = !data.title.empty() ? data.title : !data.name.empty() ? data.name : object.maker;
    const bool isGiven = position < style.labels.size() && !style.labels[position].empty();
    return lookHere().legend.value_or(isGiven ? style.labels[position] : own);
}

PlotSeries Collector::seriesOf(const PlotObject& object) {
    PlotSeries series;
    series.input = object.input;
    series.look = lookHere();
    series.label = labelHere(object);
    return series;
}

void Collector::warnOfStrange(const PlotObject& object, const PlotSeries& series, const std::string& parts) {
    const auto isStrange = [](const PlotPoint& point) { return !std::isfinite(point.y) || !std::isfinite(point.x); };
    warn(object, static_cast<std::size_t>(std::count_if(series.points.begin(), series.points.end(), isStrange)), parts);
}

void Collector::warn(const PlotObject& object, std::size_t strange, const std::string& parts) {
    if (strange > 0) {
        contents.warnings.push_back(object.input + ": " + std::to_string(strange) + " " + parts +
                                    " are not drawn because they are infinite or NaN");
    }
}

/// A logarithmic axis without values has a warning of its own.
void Collector::warnIfBlank() {
    if ((contents.isPlane() ? style.z : style.y).hasLog) {
        return;
    }
    const bool isEmptyMap =
        contents.isPlane() && std::all_of(contents.plane().values.begin(), contents.plane().values.end(),
                                          [](double value) { return std::isnan(value); });
    if (isEmptyMap || (!contents.isPlane() && std::all_of(contents.series.begin(), contents.series.end(), isBlank))) {
        contents.warnings.emplace_back("there is nothing to draw: no object has entries or points");
    }
}

void Collector::take(std::string& title, const std::string& found) {
    if (title.empty()) {
        title = found;
    }
}

}  // namespace

bool PlotContents::hasCurve() const {
    return std::any_of(series.begin(), series.end(), [](const PlotSeries& one) { return one.function != nullptr; });
}

PlotContents plotContents(const std::vector<PlotObject>& objects, const PlotStyle& style) {
    Collector collector(style);
    for (const PlotObject& object : objects) {
        collector.add(object);
    }
    return collector.finish();
}

}  // namespace velmorak
