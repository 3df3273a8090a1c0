#include "Output/plots/contents/PlotData.h"

#include "Output/plots/text/PlotText.h"

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

/// An empty line interrupts a line; two would begin another block.
void addGap(std::string& text) {
    if (!text.empty() && !text.ends_with("\n\n")) {
        text += "\n";
    }
}

/// gnuplot clips a curve at the frame; a NaN leaves a gap.
std::string curve(const std::vector<PlotPoint>& samples) {
    std::string text = "NaN NaN\n";
    for (const PlotPoint& point : samples) {
        if (std::isfinite(point.y)) {
            text += line({textOf(point.x), textOf(point.y)});
        } else {
            addGap(text);
        }
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

/// Heights with their errors: along the edges of a histogram's bins, or at points.
std::string band(const PlotSeries& series, const std::vector<PlotPoint>& points, const PlotSpan& y) {
    std::string text;
    for (const PlotPoint& point : points) {
        const std::string low = within(std::isnan(point.yLow) ? point.y : point.yLow, y);
        const std::string high = within(std::isnan(point.yHigh) ? point.y : point.yHigh, y);
        if (std::isnan(point.y)) {
            addGap(text);
        } else if (series.isHistogram) {
            text += line({textOf(point.xLow), low, high}) + line({textOf(point.xHigh), low, high});
        } else {
            text += line({textOf(point.x), low, high});
        }
    }
    return text.empty() ? "NaN NaN NaN\n" : text;
}

/// The line in the middle of a band, and the line through points.
std::string middle(const PlotSeries& series, bool isStepped, const PlotFrame& frame) {
    std::string text = "NaN NaN\n";
    for (const PlotPoint& point : series.points) {
        const std::string y = within(point.y, frame.y);
        if (std::isnan(point.y) || (!isStepped && !frame.x.contains(point.x))) {
            addGap(text);
        } else if (isStepped) {
            text += line({textOf(point.xLow), y}) + line({textOf(point.xHigh), y});
        } else {
            text += line({textOf(point.x), y});
        }
    }
    return text;
}

std::string contourLines(const PlotContour& contour) {
    std::string text;
    for (const ContourLine& one : contour.lines) {
        const std::string height = textOf(one.height);
        text += line({textOf(one.x1), textOf(one.y1), height}) + line({textOf(one.x2), textOf(one.y2), height});
        addGap(text);
    }
    return text.empty() ? "NaN NaN NaN\n" : text;
}

/// Comparisons inside the panel.
std::string comparisons(const PanelSeries& series, const PlotFrame& frame, const PlotSpan& y) {
    std::string text = "NaN NaN NaN NaN NaN NaN\n";
    for (const PlotPoint& point : series.points) {
        if (frame.x.contains(point.x) && y.contains(point.y)) {
            text += line({textOf(point.x), textOf(point.y), within(point.xLow, frame.x), within(point.xHigh, frame.x),
                          within(point.yLow, y), within(point.yHigh, y)});
        }
    }
    return text;
}

/// Where comparisons lie outside of the panel: x, the end of the axis, and 1 above or -1 below.
std::string outside(const PanelSeries& series, const PlotFrame& frame, const PlotSpan& y) {
    std::string text = "NaN NaN NaN\n";
    constexpr double inset = 0.06;
    for (const PlotPoint& point : series.points) {
        if (!std::isnan(point.y) && frame.x.contains(point.x) && !y.contains(point.y)) {
            const bool isAbove = point.y > y.high;
            const double at = isAbove ? y.high - inset * (y.high - y.low) : y.low + inset * (y.high - y.low);
            text += line({textOf(point.x), textOf(at), isAbove ? "1" : "-1"});
        }
    }
    return text;
}

/// Collects blocks, which two empty lines separate.
class Blocks {
public:
    /// @param first number of the first block; only the very first has the heading before it.
    explicit Blocks(std::string heading, std::size_t first = 0)
        : text(first == 0 ? std::move(heading) : std::string()), count(first) {}

    std::size_t add(const std::string& block);
    std::string take() { return std::move(text); }
    std::size_t end() const { return count; }

private:
    std::string text;
    std::size_t count;
};

std::size_t Blocks::add(const std::string& block) {
    text += block + (block.ends_with("\n\n") ? "\n" : "\n\n");
    return count++;
}

void addSeries(Blocks& blocks, PlotData& data, const PlotSeries& series, const PlotFrame& frame) {
    using Style = PlotSeries::SeriesStyle;
    const std::string nothing = "NaN NaN\n";
    switch (series.style) {
        case Style::Steps:
        case Style::Filled:
            data.series.push_back(blocks.add(outline(series, frame)));
            blocks.add(bars(series, frame));
            break;
        case Style::Stacked:
            data.series.push_back(blocks.add(outline(series, frame)));
            blocks.add(nothing);
            break;
        case Style::Points:
            data.series.push_back(blocks.add(points(series, frame)));
            blocks.add(nothing);
            break;
        case Style::Line:
            data.series.push_back(blocks.add(middle(series, false, frame)));
            blocks.add(nothing);
            break;
        case Style::Band:
            data.series.push_back(blocks.add(band(series, series.points, frame.y)));
            blocks.add(middle(series, series.isHistogram, frame));
            break;
        case Style::Curve:
            data.series.push_back(blocks.add(curve(series.points)));
            blocks.add(series.beyond.empty() ? nothing : curve(series.beyond));
            break;
    }
}

void addPanel(Blocks& blocks, PlotData& data, const PlotPanel& panel, const PlotFrame& frame) {
    if (!panel.band.empty()) {
        PlotSeries around;
        around.isHistogram = true;
        data.panelBand = blocks.add(band(around, panel.band, panel.span));
    }
    for (const PanelSeries& series : panel.series) {
        data.panel.push_back(blocks.add(comparisons(series, frame, panel.span)));
        blocks.add(outside(series, frame, panel.span));
    }
}

}  // namespace

PlotData plotData(const PlotContents& contents, const PlotFrame& frame, const PlotPanel& panel, std::size_t first) {
    PlotData data;
    if (contents.map && contents.contours.empty()) {
        data.text = "# Cells that have a colour: x from, x to, y from, y to, value.\n" + cells(*contents.map, frame);
        return data;
    }
    if (contents.isPlane()) {
        Blocks blocks("# Cells that have a colour: x from, x to, y from, y to, value. Then lines of equal height.\n");
        if (contents.map) {
            blocks.add(cells(*contents.map, frame));
        }
        for (const PlotContour& contour : contents.contours) {
            data.contours.push_back(blocks.add(contourLines(contour)));
        }
        data.text = blocks.take();
        return data;
    }
    Blocks blocks(
        "# For each histogram that is drawn as steps: its outline as x, height; then centre, height, height - error,\n"
        "# height + error. For points: x, y, then the ends of their bars in x and in y. For a curve: x, y. Each "
        "object\n"
        "# has two blocks, of which the second may hold nothing.\n",
        first);
    for (const PlotSeries& series : contents.series) {
        addSeries(blocks, data, series, frame);
    }
    if (contents.stack) {
        data.stack = blocks.add(band(*contents.stack, contents.stack->points, frame.y));
    }
    addPanel(blocks, data, panel, frame);
    data.end = blocks.end();
    data.text = blocks.take();
    return data;
}

}  // namespace velmorak
