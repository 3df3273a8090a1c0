#include "Output/plots/axes/PlotFrame.h"

#include "Output/FitNotes.h"
#include "Output/plots/text/PlotText.h"

#include <velmorak/ElementaryFunctions.h>
#include <velmorak/Failure.h>
#include <velmorak/FunctionValues.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorak {

namespace {

constexpr double unlimited = std::numeric_limits<double>::infinity();

/// Beyond these, the margins around the numbers would overflow.
constexpr double maxShown = 1e300;
constexpr double minLogShown = 1e-300;

constexpr std::size_t curveSamples = 600;

/// Collects the range of numbers that an axis must show.
class Extent {
public:
    explicit Extent(bool hasLog) : hasLog(hasLog) {}

    void add(double value);
    bool isEmpty() const { return span.low > span.high; }

    PlotSpan span{.low = unlimited, .high = -unlimited};

private:
    bool hasLog;
};

void Extent::add(double value) {
    if (!std::isfinite(value) || (hasLog && value <= 0.0)) {
        return;
    }
    span.low = std::min(span.low, value);
    span.high = std::max(span.high, value);
}

/// Margins at both ends, as fractions of the span.
void widen(PlotSpan& span, bool hasLog, double below, double above) {
    const double low = positionAlong(span.low, hasLog);
    const double high = positionAlong(span.high, hasLog);
    span.low = below > 0.0 ? valueAtPosition(low - below * (high - low), hasLog) : span.low;
    span.high = above > 0.0 ? valueAtPosition(high + above * (high - low), hasLog) : span.high;
}

/// Widens an empty or single-valued span to one that can be drawn.
void open(PlotSpan& span, bool hasLog) {
    if (span.low > span.high) {
        span = hasLog ? PlotSpan{.low = 0.5, .high = 10.0} : PlotSpan{.low = 0.0, .high = 1.0};
    }
    if (!hasLog) {
        span.low = std::clamp(span.low, -maxShown, maxShown);
        span.high = std::clamp(span.high, -maxShown, maxShown);
    } else {
        span.low = std::clamp(span.low, minLogShown, maxShown);
        span.high = std::clamp(span.high, minLogShown, maxShown);
    }
    if (span.low < span.high) {
        return;
    }
    const double half = std::abs(span.low) > minLogShown ? 0.5 * std::abs(span.low) : 0.5;
    span = hasLog ? PlotSpan{.low = span.low / 3.0, .high = span.high * 3.0}
                  : PlotSpan{.low = span.low - half, .high = span.high + half};
}

/// Applies the ends that the user chose.
void choose(PlotSpan& span, const PlotAxis& axis, const std::string& name) {
    span.low = axis.range.low.value_or(span.low);
    span.high = axis.range.high.value_or(span.high);
    if (axis.hasLog && span.low <= 0.0) {
        throw Failure(name + "range", "a logarithmic axis cannot begin at " + textOf(span.low));
    }
    if (!(span.low < span.high)) {
        throw Failure(name + "range", "the range is empty: from " + textOf(span.low) + " to " + textOf(span.high));
    }
}

PlotSpan mapSpan(const std::vector<double>& edges, const PlotAxis& axis, const std::string& name) {
    Extent extent(axis.hasLog);
    for (const double edge : edges) {
        extent.add(edge);
    }
    if (extent.isEmpty() || (extent.span.low == extent.span.high && axis.hasLog)) {
        throw Failure("log" + name, "the histogram has no bin above 0, as a logarithmic axis requires");
    }
    return extent.span;
}

void addPoints(const PlotSeries& series, Extent& extent, bool& needsRoom) {
    for (const double edge : series.edges) {
        extent.add(edge);
    }
    for (const PlotPoint& point : series.points) {
        extent.add(point.x);
        extent.add(point.xLow);
        extent.add(point.xHigh);
    }
    needsRoom = needsRoom || (series.edges.empty() && !series.function);
}

/// @return the range of a function; unbounded if it has none.
PlotSpan domainOf(const FunctionObject& function) {
    PlotSpan domain{.low = -unlimited, .high = unlimited};
    if (function.arguments.size() == 1 && !function.arguments.front().ranges.empty()) {
        const FunctionObject::Range& range = function.arguments.front().ranges.front();
        domain = {.low = range.low, .high = range.high};
    }
    return domain;
}

PlotSpan spanX(const PlotContents& contents, const PlotStyle& style) {
    if (contents.isPlane()) {
        return mapSpan(contents.plane().xEdges, style.x, "x");
    }
    Extent extent(style.x.hasLog);
    bool needsRoom = false;
    for (const PlotSeries& series : contents.series) {
        addPoints(series, extent, needsRoom);
    }
    for (const PlotSeries& series : contents.series) {
        if (series.function && extent.isEmpty()) {
            const PlotSpan domain = domainOf(*series.function);
            extent.add(domain.low);
            extent.add(domain.high);
        }
    }
    const bool isHistogram =
        std::any_of(contents.series.begin(), contents.series.end(), [](const auto& one) { return one.isHistogram; });
    if (isHistogram && (extent.isEmpty() || extent.span.low == extent.span.high)) {
        throw Failure("logx", "the histogram has no bin above 0, as a logarithmic axis requires");
    }
    PlotSpan span = extent.span;
    open(span, style.x.hasLog);
    if (needsRoom) {
        widen(span, style.x.hasLog, 0.04, 0.04);
    }
    return span;
}

/// Samples that are equidistant along the axis as drawn.
std::vector<PlotPoint> samples(const FunctionObject& function, const PlotSpan& span, bool hasLog) {
    std::vector<PlotPoint> points;
    if (!(span.low < span.high)) {
        return points;
    }
    std::vector<double> places;
    const double low = positionAlong(span.low, hasLog);
    const double high = positionAlong(span.high, hasLog);
    for (std::size_t i = 0; i <= curveSamples; ++i) {
        const double part = static_cast<double>(i) / static_cast<double>(curveSamples);
        places.push_back(std::clamp(valueAtPosition(low + part * (high - low), hasLog), span.low, span.high));
    }
    const std::vector<double> values = FunctionValues(function)(places);
    for (std::size_t i = 0; i < places.size(); ++i) {
        points.push_back({.x = places[i],
                          .xLow = places[i],
                          .xHigh = places[i],
                          .y = values[i],
                          .yLow = values[i],
                          .yHigh = values[i]});
    }
    return points;
}

/// Samples a curve where its function holds; a fitted one also beyond, with a gap in between.
void sample(PlotSeries& series, const PlotSpan& x, bool hasLog) {
    const PlotSpan domain = domainOf(*series.function);
    series.points =
        samples(*series.function, {.low = std::max(x.low, domain.low), .high = std::min(x.high, domain.high)}, hasLog);
    series.beyond.clear();
    if (!fitNotesOf(*series.function).isOfFit() || series.points.empty()) {
        return;
    }
    series.beyond = samples(*series.function, {.low = x.low, .high = std::min(x.high, domain.low)}, hasLog);
    const std::vector<PlotPoint> above =
        samples(*series.function, {.low = std::max(x.low, domain.high), .high = x.high}, hasLog);
    if (!series.beyond.empty() && !above.empty()) {
        series.beyond.push_back({.y = std::numeric_limits<double>::quiet_NaN()});
    }
    series.beyond.insert(series.beyond.end(), above.begin(), above.end());
}

void sampleCurves(PlotContents& contents, const PlotFrame& frame, const PlotStyle& style) {
    for (PlotSeries& series : contents.series) {
        if (!series.function) {
            continue;
        }
        sample(series, frame.x, style.x.hasLog);
        const bool isSeen = std::any_of(series.points.begin(), series.points.end(),
                                        [](const PlotPoint& point) { return std::isfinite(point.y); });
        if (!isSeen) {
            contents.warnings.push_back("\"" + series.label + "\" is undefined in the range of the plot");
        }
    }
}

PlotSpan spanY(const PlotContents& contents, const PlotFrame& frame, const PlotStyle& style) {
    Extent extent(style.y.hasLog);
    bool standsOnGround = false;
    for (const PlotSeries& series : contents.series) {
        for (const PlotPoint& point : series.points) {
            const bool isShown = point.xHigh >= frame.x.low && point.xLow <= frame.x.high;
            if (!isShown || !std::isfinite(point.y) || (style.y.hasLog && point.y <= 0.0)) {
                continue;
            }
            extent.add(point.y);
            extent.add(point.yHigh);
            // On a logarithmic axis an error bar may extend to 0 or below; only the point counts.
            if (!style.y.hasLog) {
                extent.add(point.yLow);
            }
        }
        standsOnGround = standsOnGround || series.isHistogram;
    }
    if (standsOnGround && !style.y.hasLog) {
        extent.add(0.0);
    }
    PlotSpan span = extent.span;
    const bool isFlat = standsOnGround && !style.y.hasLog && span.low == span.high;
    if (isFlat) {
        span = {.low = 0.0, .high = 1.0};
    }
    open(span, style.y.hasLog);
    return span;
}

void frameY(PlotFrame& frame, const PlotContents& contents, const PlotStyle& style) {
    if (contents.isPlane()) {
        frame.y = mapSpan(contents.plane().yEdges, style.y, "y");
        return;
    }
    frame.y = spanY(contents, frame, style);
    if (style.y.hasLog) {
        frame.y.low = std::max(0.5 * frame.y.low, minLogShown);
    } else if (frame.y.low != 0.0) {
        widen(frame.y, false, 0.06, 0.0);
    }
    constexpr double headroom = 0.08;
    const double low = positionAlong(frame.y.low, style.y.hasLog);
    const double high = positionAlong(frame.y.high, style.y.hasLog);
    raise(frame, high + headroom * (high - low), style.y.hasLog);
}

PlotSpan spanZ(const PlotMap& map, const PlotAxis& axis) {
    Extent extent(axis.hasLog);
    for (const double value : map.values) {
        extent.add(value);
    }
    if (map.isCount && !axis.hasLog && extent.span.low > 0.0) {
        extent.add(0.0);
    }
    PlotSpan span = extent.span;
    open(span, axis.hasLog);
    return span;
}

/// Values that a logarithmic axis cannot show, and those that it can.
struct LogCounts {
    std::size_t below = 0;
    std::size_t above = 0;
};

LogCounts countForLog(const PlotContents& contents) {
    LogCounts counts;
    if (contents.isPlane()) {
        for (const double value : contents.plane().values) {
            if (!std::isnan(value)) {
                ++(value > 0.0 ? counts.above : counts.below);
            }
        }
        return counts;
    }
    for (const PlotSeries& series : contents.series) {
        for (const PlotPoint& point : series.points) {
            counts.below += point.y < 0.0 || (point.y == 0.0 && !series.isHistogram) ? 1 : 0;
            counts.above += point.y > 0.0 ? 1 : 0;
        }
    }
    return counts;
}

void warnOfLog(PlotContents& contents, const PlotStyle& style) {
    const bool hasLog = contents.isPlane() ? style.z.hasLog : style.y.hasLog;
    if (!hasLog) {
        return;
    }
    const LogCounts counts = countForLog(contents);
    const std::string axis = contents.isPlane() ? "logz" : "logy";
    if (counts.above == 0) {
        contents.warnings.push_back(axis + ": no value is above 0, so the picture is empty");
    } else if (counts.below > 0) {
        contents.warnings.push_back(axis + ": " + std::to_string(counts.below) +
                                    " values are not drawn because they are not above 0");
    }
}

/// Lines and regions do not extend the frame.
void warnOfGuides(PlotContents& contents, const PlotFrame& frame, const PlotStyle& style) {
    for (const PlotGuide& guide : style.guides) {
        const PlotSpan& span = guide.isVertical ? frame.x : frame.y;
        const double to = guide.to.value_or(guide.from);
        if (to < span.low || guide.from > span.high) {
            contents.warnings.push_back(std::string(guide.to ? "regions" : "lines") + ": " +
                                        (guide.isVertical ? "x " : "y ") + textOf(guide.from) +
                                        " lies outside of the picture");
        }
    }
}

}  // namespace

PlotFrame frameOf(PlotContents& contents, const PlotStyle& style) {
    PlotFrame frame;
    frame.x = spanX(contents, style);
    choose(frame.x, style.x, "x");
    sampleCurves(contents, frame, style);
    frameY(frame, contents, style);
    choose(frame.y, style.y, "y");
    if (contents.isPlane()) {
        frame.z = spanZ(contents.plane(), style.z);
        choose(frame.z, style.z, "z");
    }
    warnOfLog(contents, style);
    warnOfGuides(contents, frame, style);
    frame.ground = style.y.hasLog ? frame.y.low : std::clamp(0.0, frame.y.low, frame.y.high);
    return frame;
}

double positionAlong(double value, bool hasLog) {
    return hasLog ? elementary::log10(value) : value;
}

double valueAtPosition(double position, bool hasLog) {
    return hasLog ? std::clamp(elementary::pow(10.0, position), minLogShown, maxShown) : position;
}

void raise(PlotFrame& frame, double position, bool hasLog) {
    constexpr double maxPower = 300.0;
    frame.y.high = valueAtPosition(std::min(position, hasLog ? maxPower : maxShown), hasLog);
    // Few digits, so that the script is easy to edit.
    double few = 0.0;
    if (readNumber(roundedText(frame.y.high), few) && few > frame.y.low) {
        frame.y.high = few;
    }
}

}  // namespace velmorak
