#include "Output/plots/script/SeriesStyles.h"

#include <velmorak/Failure.h>

#include <algorithm>
#include <array>

namespace velmorak {

namespace {

std::string styleName(ObjectStyle style) {
    const std::array<const char*, 9> names = {"automatic", "steps", "points",  "line",    "filled",
                                              "stacked",   "band",  "colours", "contours"};
    return names[static_cast<std::size_t>(style)];
}

PlotSeries::SeriesStyle seriesStyleOf(ObjectStyle style) {
    switch (style) {
        case ObjectStyle::Points:
            return PlotSeries::SeriesStyle::Points;
        case ObjectStyle::Line:
            return PlotSeries::SeriesStyle::Line;
        case ObjectStyle::Filled:
            return PlotSeries::SeriesStyle::Filled;
        case ObjectStyle::Stacked:
            return PlotSeries::SeriesStyle::Stacked;
        case ObjectStyle::Band:
            return PlotSeries::SeriesStyle::Band;
        default:
            return PlotSeries::SeriesStyle::Steps;
    }
}

}  // namespace

std::string lookInput(std::size_t position) {
    return position == 0 ? "look" : "look" + std::to_string(position + 1);
}

void allowStyles(const PlotSeries& series, std::size_t position, const std::vector<ObjectStyle>& styles,
                 const std::string& what) {
    const ObjectStyle asked = series.look.style;
    if (asked != ObjectStyle::Automatic && std::find(styles.begin(), styles.end(), asked) == styles.end()) {
        throw Failure(lookInput(position), what + " cannot be drawn as " + styleName(asked));
    }
}

void chooseStyles(PlotContents& contents, const PlotStyle& style) {
    const auto asked = [&](const PlotSeries& series) {
        const bool isOpen = series.look.style == ObjectStyle::Automatic && series.isHistogram;
        return isOpen ? style.histograms : series.look.style;
    };
    const bool hasStack = std::any_of(contents.series.begin(), contents.series.end(),
                                      [&](const PlotSeries& one) { return asked(one) == ObjectStyle::Stacked; });
    for (PlotSeries& series : contents.series) {
        const ObjectStyle own = asked(series);
        if (!series.function && own != ObjectStyle::Automatic) {
            series.style = seriesStyleOf(own);
        } else if (series.isHistogram && (hasStack || contents.hasCurve())) {
            series.style = PlotSeries::SeriesStyle::Points;
        }
    }
}

}  // namespace velmorak
