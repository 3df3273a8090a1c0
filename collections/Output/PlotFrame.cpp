#include "PlotFrame.h"

#include "PlotScript.h"

#include <velmorak/Failure.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorak {

namespace {

constexpr double unlimited = std::numeric_limits<double>::infinity();

/// Beyond these, the room around the numbers would overflow.
constexpr double largestShown = 1e300;
constexpr double smallestLogShown = 1e-300;

/// Part of the frame's height that stays free above the highest point.
double headroom(const std::vector<HistogramPtr>& histograms, const PlotStyle& style) {
    if (!style.hasLegend)
        return style.hasStatistics ? 0.22 : 0.08;
    return std::min(0.45, 0.12 + 0.055 * static_cast<double>(histograms.size()));
}

void spanX(const Histogram1D& histogram, bool hasLog, PlotFrame& frame) {
    for (const double edge : histogram.axis().edges()) {
        if (hasLog && edge <= 0.0)
            continue;
        frame.xLow = std::min(frame.xLow, edge);
        frame.xHigh = std::max(frame.xHigh, edge);
    }
}

/// Takes in the heights with their errors; of a logarithmic axis only what is above 0.
void spanY(const Histogram1D& histogram, bool hasLog, PlotFrame& frame) {
    for (std::size_t i = 0; i < histogram.bins(); ++i) {
        const double height = histogram.height(i);
        const double error = histogram.error(i);
        if (!std::isfinite(height + error) || (hasLog && height <= 0.0))
            continue;
        frame.yLow = std::min(frame.yLow, hasLog ? height : height - error);
        frame.yHigh = std::max(frame.yHigh, height + error);
    }
}

void roomLinear(PlotFrame& frame, double free) {
    frame.yLow = std::min(frame.yLow, 0.0);
    frame.yHigh = std::max(frame.yHigh, 0.0);
    if (frame.yHigh == frame.yLow)
        frame.yHigh = frame.yLow + 1.0;
    frame.yLow = std::max(frame.yLow, -largestShown);
    frame.yHigh = std::min(frame.yHigh, largestShown);
    const double span = frame.yHigh - frame.yLow;
    frame.yHigh += span * free / (1.0 - free);
    if (frame.yLow < 0.0)
        frame.yLow -= 0.05 * span;
}

void roomLogarithmic(PlotFrame& frame, double free) {
    if (frame.yLow > frame.yHigh) {
        frame.yLow = 0.5;
        frame.yHigh = 10.0;
        return;
    }
    frame.yLow = std::max(0.5 * frame.yLow, smallestLogShown);
    const double low = std::log10(frame.yLow);
    const double high = std::log10(std::max(frame.yHigh, 2.0 * smallestLogShown));
    frame.yHigh = std::min(std::pow(10.0, high + (high - low) * free / (1.0 - free)), largestShown);
}

}  // namespace

PlotFrame frameOf(const std::vector<HistogramPtr>& histograms, const PlotStyle& style) {
    PlotFrame frame{.xLow = unlimited, .xHigh = -unlimited, .yLow = unlimited, .yHigh = -unlimited};
    for (const HistogramPtr& histogram : histograms) {
        spanX(*histogram, style.hasLogX, frame);
        spanY(*histogram, style.hasLogY, frame);
    }
    if (frame.xLow >= frame.xHigh)
        throw Failure("logx", "the histogram has no bin above 0 that a logarithmic axis could show");
    if (style.hasLogY)
        roomLogarithmic(frame, headroom(histograms, style));
    else
        roomLinear(frame, headroom(histograms, style));
    // Few digits, so that the script is pleasant to change.
    readNumber(roundedText(frame.yHigh), frame.yHigh);
    return frame;
}

}  // namespace velmorak
