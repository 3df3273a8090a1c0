#include "PlotScript.h"

#include "PlotText.h"

#include <velmorak/Value.h>

#include <algorithm>
#include <cmath>

namespace velmorak {

namespace {

std::string within(double value, const PlotSpan& span) {
    return std::isnan(value) ? "NaN" : textOf(std::clamp(value, span.low, span.high));
}

std::string line(std::initializer_list<std::string> words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text + "\n";
}

std::string outline(const PlotSeries& series, const PlotFrame& frame) {
    const std::string ground = within(frame.ground, frame.y);
    std::string text = line({textOf(series.edges.front()), ground});
    for (std::size_t i = 0; i < series.points.size(); ++i) {
        const std::string height = within(series.points[i].y, frame.y);
        text += line({textOf(series.edges[i]), height});
        text += line({textOf(series.edges[i + 1]), height});
    }
    return text + line({textOf(series.edges.back()), ground});
}

/// Error bars of a histogram drawn as steps, without those outside the frame.
std::string bars(const PlotSeries& series, const PlotFrame& frame) {
    std::string text = "NaN NaN NaN NaN\n";
    for (const PlotPoint& point : series.points) {
        if (point.yHigh > point.yLow && frame.y.contains(point.y)) {
            text += line({textOf(point.x), textOf(point.y), within(point.yLow, frame.y), within(point.yHigh, frame.y)});
        }
    }
    return text;
}

/// An empty bin is not a measurement.
bool isDrawn(const PlotSeries& series, const PlotPoint& point, const PlotFrame& frame) {
    const bool isEmptyBin = series.isHistogram && point.y == 0.0 && point.yHigh == point.yLow;
    return frame.x.contains(point.x) && frame.y.contains(point.y) && !isEmptyBin;
}

std::string points(const PlotSeries& series, const PlotFrame& frame) {
    std::string text = "NaN NaN NaN NaN NaN NaN\n";
    for (const PlotPoint& point : series.points) {
        if (isDrawn(series, point, frame)) {
            text += line({textOf(point.x), textOf(point.y), within(point.xLow, frame.x), within(point.xHigh, frame.x),
                          within(std::isnan(point.yLow) ? point.y : point.yLow, frame.y),
                          within(std::isnan(point.yHigh) ? point.y : point.yHigh, frame.y)});
        }
    }
    return text;
}

/// gnuplot clips a curve at the frame; a NaN leaves a gap.
std::string curve(const PlotSeries& series) {
    std::string text = "NaN NaN\n";
    for (const PlotPoint& point : series.points) {
        text += std::isfinite(point.y) ? line({textOf(point.x), textOf(point.y)}) : std::string("\n");
    }
    return text;
}

bool isPartlyInside(double low, double high, const PlotSpan& span) {
    return high > span.low && low < span.high;
}

std::string cells(const PlotMap& map, const PlotFrame& frame) {
    std::string text;
    for (std::size_t j = 0; j + 1 < map.yEdges.size(); ++j) {
        for (std::size_t i = 0; i + 1 < map.xEdges.size(); ++i) {
            const double value = map.values[j * (map.xEdges.size() - 1) + i];
            const bool isInside = isPartlyInside(map.xEdges[i], map.xEdges[i + 1], frame.x) &&
                                  isPartlyInside(map.yEdges[j], map.yEdges[j + 1], frame.y);
            const bool hasColour =
                !std::isnan(value) && (frame.z.low > value || frame.z.contains(value) || value > frame.z.high);
            if (isInside && hasColour) {
                text += line({within(map.xEdges[i], frame.x), within(map.xEdges[i + 1], frame.x),
                              within(map.yEdges[j], frame.y), within(map.yEdges[j + 1], frame.y), textOf(value)});
            }
        }
    }
    return text.empty() ? "NaN NaN NaN NaN NaN\n" : text;
}

}  // namespace

std::string plotData(const PlotContents& contents, const PlotFrame& frame) {
    if (contents.map) {
        return "# Cells that have a colour: x from, x to, y from, y to, value.\n" + cells(*contents.map, frame);
    }
    std::string text =
        "# For each histogram that is drawn as steps: its outline as x, height; then centre, height, height - error,\n"
        "# height + error. For points: x, y, then the ends of their bars in x and in y. For a curve: x, y. Each "
        "object\n"
        "# has two blocks, of which the second may hold nothing.\n";
    for (const PlotSeries& series : contents.series) {
        const std::string nothing = "NaN NaN\n";
        switch (series.style) {
            case PlotSeries::SeriesStyle::Steps:
                text += outline(series, frame) + "\n\n" + bars(series, frame) + "\n\n";
                break;
            case PlotSeries::SeriesStyle::Points:
                text += points(series, frame) + "\n\n" + nothing + "\n\n";
                break;
            case PlotSeries::SeriesStyle::Curve:
                text += curve(series) + "\n\n" + nothing + "\n\n";
                break;
        }
    }
    return text;
}

}  // namespace velmorak
