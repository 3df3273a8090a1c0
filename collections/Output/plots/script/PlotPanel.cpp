#include "Output/plots/script/PlotPanel.h"

#include <velmorak/ElementaryFunctions.h>
#include <velmorak/Failure.h>
#include <velmorak/FunctionValues.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorak {

namespace {

constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();

/// The object that others are compared with: the stack, the one that the user names, a function, or the second.
const PlotSeries& referenceOf(const PlotContents& contents) {
    for (const PlotSeries& series : contents.series) {
        if (series.look.isReference && !series.isStacked()) {
            return series;
        }
    }
    if (contents.stack) {
        return *contents.stack;
    }
    for (const PlotSeries& series : contents.series) {
        if (series.function) {
            return series;
        }
    }
    if (contents.series.size() < 2) {
        throw Failure("panel", "there is nothing to compare with: wire a second object, or a function");
    }
    return contents.series[1];
}

double errorOf(const PlotPoint& point, bool isUpwards) {
    const double error = isUpwards ? point.yHigh - point.y : point.y - point.yLow;
    return std::isfinite(error) ? error : 0.0;
}

/// Gives for each point of an object the point of the reference.
class Reference {
public:
    explicit Reference(const PlotSeries& series);

    /// @throws Failure, with the input of the object, if it has other bins.
    void check(const PlotSeries& other) const;

    PlotPoint at(std::size_t position, const PlotPoint& point) const;

private:
    const PlotSeries& series;
    std::optional<FunctionValues> values;
};

Reference::Reference(const PlotSeries& series) : series(series) {
    if (series.function) {
        values.emplace(*series.function);
    }
}

void Reference::check(const PlotSeries& other) const {
    const bool isAlike =
        series.function || (other.edges == series.edges && other.points.size() == series.points.size());
    if (!isAlike) {
        throw Failure(other.input,
                      "cannot be compared in the lower panel, because it has other bins than \"" + series.label + "\"");
    }
}

PlotPoint Reference::at(std::size_t position, const PlotPoint& point) const {
    if (!values) {
        return series.points[position];
    }
    const double value = (*values)(point.x);
    return {.x = point.x, .xLow = point.xLow, .xHigh = point.xHigh, .y = value, .yLow = value, .yHigh = value};
}

PlotPoint compared(PanelKind kind, const PlotPoint& own, const PlotPoint& other) {
    PlotPoint result{
        .x = own.x, .xLow = own.xLow, .xHigh = own.xHigh, .y = noNumber, .yLow = noNumber, .yHigh = noNumber};
    const double difference = own.y - other.y;
    if (kind == PanelKind::Pull) {
        // The error that points from the object to the reference.
        const double ownError = errorOf(own, difference < 0.0);
        const double otherError = errorOf(other, difference > 0.0);
        const double error = std::sqrt(ownError * ownError + otherError * otherError);
        result.y = result.yLow = result.yHigh = error > 0.0 ? difference / error : noNumber;
        return result;
    }
    const bool isRatio = kind == PanelKind::Ratio;
    const double scale = isRatio ? 1.0 / other.y : 1.0;
    if (!std::isfinite(scale)) {
        return result;
    }
    result.y = isRatio ? own.y * scale : difference;
    result.yLow = result.y - errorOf(own, false) * std::abs(scale);
    result.yHigh = result.y + errorOf(own, true) * std::abs(scale);
    return result;
}

std::vector<PlotPoint> bandOf(PanelKind kind, const PlotSeries& reference) {
    std::vector<PlotPoint> band;
    if (kind == PanelKind::Pull || reference.function) {
        return band;
    }
    const double level = kind == PanelKind::Ratio ? 1.0 : 0.0;
    for (const PlotPoint& point : reference.points) {
        const double scale = kind == PanelKind::Ratio ? 1.0 / std::abs(point.y) : 1.0;
        PlotPoint one = point;
        const bool isThere = std::isfinite(scale);
        one.y = level;
        one.yLow = isThere ? level - errorOf(point, false) * scale : level;
        one.yHigh = isThere ? level + errorOf(point, true) * scale : level;
        band.push_back(one);
    }
    return band;
}

/// 1, 2 or 5 times a power of ten that is not less.
double niceAbove(double value) {
    double power = elementary::powerOfTen(static_cast<int>(std::floor(elementary::log10(value))));
    for (const double digit : {1.0, 2.0, 5.0, 10.0}) {
        if (digit * power >= value * (1.0 - 1e-9)) {
            return digit * power;
        }
    }
    return 10.0 * power;
}

/// The distance from the level that 95 of 100 comparisons keep; 0 if there are none.
double usualDistance(const PlotPanel& panel, const PlotFrame& frame) {
    std::vector<double> distances;
    for (const PanelSeries& series : panel.series) {
        for (const PlotPoint& point : series.points) {
            if (std::isfinite(point.y) && frame.x.contains(point.x)) {
                distances.push_back(std::abs(point.y - panel.level));
            }
        }
    }
    if (distances.empty()) {
        return 0.0;
    }
    constexpr double usual = 0.95;
    std::sort(distances.begin(), distances.end());
    const double place = usual * static_cast<double>(distances.size());
    return distances[std::min(distances.size() - 1, static_cast<std::size_t>(place))];
}

PlotSpan spanOf(const PlotPanel& panel, const PlotFrame& frame, const PlotStyle& style) {
    constexpr double roomAbove = 1.15;
    constexpr double minPull = 3.0;
    constexpr double maxRatio = 1.0;
    const double usual = usualDistance(panel, frame);
    double reach = usual > 0.0 ? niceAbove(roomAbove * usual) : 1.0;
    if (panel.kind == PanelKind::Pull) {
        reach = std::max(minPull, std::ceil(usual) + 1.0);
    }
    if (panel.kind == PanelKind::Ratio) {
        reach = std::max(0.02, reach);
    }
    PlotSpan span{.low = panel.level - reach, .high = panel.level + reach};
    if (panel.kind == PanelKind::Ratio && reach > maxRatio) {
        span.low = 0.0;
    }
    // A little more, so that the labels at the ends have room.
    span.low -= panel.kind == PanelKind::Ratio && span.low == 0.0 ? 0.0 : 0.1 * reach;
    span.high += 0.1 * reach;
    span.low = style.panelRange.low.value_or(span.low);
    span.high = style.panelRange.high.value_or(span.high);
    if (!(span.low < span.high)) {
        throw Failure("panelrange", "the range is empty");
    }
    return span;
}

}  // namespace

PlotPanel panelOf(const PlotContents& contents, const PlotFrame& frame, const PlotStyle& style) {
    PlotPanel panel{.kind = style.panel, .title = {}, .series = {}, .band = {}, .span = {}};
    if (!panel.isDrawn()) {
        return panel;
    }
    if (contents.isPlane()) {
        throw Failure("panel", "objects of two quantities have no lower panel");
    }
    panel.title = panel.kind == PanelKind::Ratio ? "Ratio" : panel.kind == PanelKind::Pull ? "Pull" : "Difference";
    panel.level = panel.kind == PanelKind::Ratio ? 1.0 : 0.0;
    const PlotSeries& given = referenceOf(contents);
    const Reference reference(given);
    for (const PlotSeries& series : contents.series) {
        if (&series == &given || series.function || series.isStacked()) {
            continue;
        }
        reference.check(series);
        PanelSeries compare{.source = &series, .points = {}};
        for (std::size_t i = 0; i < series.points.size(); ++i) {
            // An empty bin is not a measurement.
            const PlotPoint& point = series.points[i];
            const bool isEmpty = series.isHistogram && point.y == 0.0 && point.yLow == point.yHigh;
            const PlotPoint other = isEmpty ? PlotPoint{.y = noNumber} : reference.at(i, point);
            compare.points.push_back(compared(panel.kind, point, other));
        }
        panel.series.push_back(std::move(compare));
    }
    if (panel.series.empty()) {
        throw Failure("panel", "there is nothing to compare with \"" + given.label + "\"");
    }
    panel.band = bandOf(panel.kind, given);
    panel.span = spanOf(panel, frame, style);
    return panel;
}

}  // namespace velmorak
