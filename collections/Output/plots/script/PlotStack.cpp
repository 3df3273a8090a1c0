#include "Output/plots/script/PlotStack.h"

#include <velmorak/Failure.h>

#include <cmath>

namespace velmorak {

namespace {

double variance(const PlotPoint& point) {
    const double error = 0.5 * (point.yHigh - point.yLow);
    return std::isfinite(error) ? error * error : 0.0;
}

/// Adds heights; yHigh holds the sum of the variances until the end.
void add(PlotSeries& sum, PlotSeries& series) {
    for (std::size_t i = 0; i < series.points.size(); ++i) {
        PlotPoint& total = sum.points[i];
        PlotPoint& own = series.points[i];
        total.yHigh += variance(own);
        total.y += std::isfinite(own.y) ? own.y : 0.0;
        own.y = own.yLow = own.yHigh = total.y;
    }
}

void setErrors(PlotSeries& sum) {
    for (PlotPoint& point : sum.points) {
        const double error = std::sqrt(point.yHigh);
        point.yLow = point.y - error;
        point.yHigh = point.y + error;
    }
}

}  // namespace

void stackUp(PlotContents& contents) {
    std::optional<PlotSeries> sum;
    for (PlotSeries& series : contents.series) {
        if (!series.isStacked()) {
            continue;
        }
        if (!sum) {
            sum = series;
            sum->style = PlotSeries::SeriesStyle::Band;
            sum->label = "Statistical error";
            for (PlotPoint& point : sum->points) {
                point.y = point.yLow = point.yHigh = 0.0;
            }
        }
        if (series.edges != sum->edges) {
            throw Failure(series.input, "stacked histograms must have the same bins as the first of them");
        }
        sum->isCounts = sum->isCounts && series.isCounts;
        add(*sum, series);
    }
    if (sum) {
        setErrors(*sum);
    }
    contents.stack = std::move(sum);
}

}  // namespace velmorak
