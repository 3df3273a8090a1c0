#include "Output/plots/script/PlotLayout.h"

#include "Output/plots/text/LabelText.h"

#include <velmorak/Dates.h>

#include <algorithm>
#include <cmath>

namespace velmorak {

namespace {

constexpr double cmPerPoint = 2.54 / 72.0;
constexpr double colourBar = 1.0;  ///< The bar and the gap before it.

bool isTime(const std::string& title) {
    return title.ends_with("[" + std::string(dateUnit) + "]");
}

bool hasTitle(const PlotContents& contents, const PlotStyle& style) {
    return contents.isPartial || !style.title.empty() || !contents.title.empty();
}

double noteLine(const PlotLayout& layout) {
    return lineCm(layout.boxFont());
}

PlotTics ticsOf(const PlotSpan& span, bool hasLog, const TicRoom& room) {
    return hasLog ? logTics(span, room) : linearTics(span, room);
}

PlotTics horizontalTics(const PlotContents& contents, const PlotFrame& frame, const PlotStyle& style,
                        const TicRoom& room) {
    if (!contents.categories.empty()) {
        return categoryTics(contents.categories, room);
    }
    if (isTime(firstNotEmpty(style.x.title, contents.xTitle))) {
        return timeTics(frame.x, room);
    }
    TicRoom own = room;
    own.hasIntegersOnly = !contents.series.empty() &&
                          std::all_of(contents.series.begin(), contents.series.end(),
                                      [](const PlotSeries& series) { return series.isIntegers || series.function; }) &&
                          std::any_of(contents.series.begin(), contents.series.end(),
                                      [](const PlotSeries& series) { return series.isIntegers; });
    return ticsOf(frame.x, style.x.hasLog, own);
}

/// All heights are numbers of entries, and few.
bool showsCounts(const PlotContents& contents) {
    return !contents.series.empty() && std::all_of(contents.series.begin(), contents.series.end(),
                                                   [](const PlotSeries& series) { return series.isCounts; });
}

/// Tilted labels lean to the left, by 40 degrees.
void fitTilted(PlotLayout& layout, const PlotTics& tics) {
    constexpr double sine = 0.64;
    constexpr double most = 0.4;
    const double depth = sine * tics.widest() * characterCm(layout.ticFont());
    layout.bottom += std::min(depth, most * layout.height) - 0.3 * layout.scale;
}

void fitLeft(PlotLayout& layout, const PlotTics& tics, const PlotTics& panel, bool hasTitle) {
    const double labels = std::max(tics.widest(), panel.widest()) * characterCm(layout.ticFont());
    constexpr double most = 0.35;
    const double title = hasTitle ? lineCm(layout.titleFont()) : 0.0;
    layout.left = std::min(labels + title + 0.55 * layout.scale, most * layout.width);
    layout.left = std::max(layout.left, layout.place.left);
}

void fitRight(PlotLayout& layout, const PlotContents& contents, const PlotPage& page) {
    if (contents.isPlane()) {
        layout.right = (colourBar + 0.3) * layout.scale + page.z.widest() * characterCm(layout.ticFont()) +
                       lineCm(layout.titleFont()) + 0.2 * layout.scale;
        return;
    }
    // The last label may extend beyond the frame.
    double half = 0.0;
    for (const PlotTic& tic : page.x.tics) {
        half = page.x.isTilted ? 0.0 : std::max(half, 0.5 * labelWidth(tic.label));
    }
    layout.right = std::max(0.45 * layout.scale, half * characterCm(layout.ticFont()) + 0.1);
}

}  // namespace

double characterCm(double points) {
    constexpr double em = 0.6;
    return em * points * cmPerPoint;
}

double lineCm(double points) {
    constexpr double em = 1.35;
    return em * points * cmPerPoint;
}

double scaleOf(double width, double height) {
    constexpr double usualArea = 160.0;
    return std::clamp(std::sqrt(width * height / usualArea), 0.45, 4.0);
}

PlotLayout firstLayout(const PlotContents& contents, const PlotStyle& style) {
    PlotLayout layout{.width = style.width, .height = style.height};
    layout.scale = scaleOf(style.width, style.height);
    layout.place = style.place.value_or(PlotPlace{.pageWidth = style.width, .pageHeight = style.height});
    layout.bottom =
        (style.place ? 0.8 : 1.55) * layout.scale + static_cast<double>(contents.notes.size()) * noteLine(layout);
    const bool isHigh = hasTitle(contents, style);
    layout.top = (isHigh ? 1.0 : 0.5) * layout.scale;
    layout.right = 0.6 * layout.scale;
    layout.left = 2.2 * layout.scale;
    if (contents.isPlane()) {
        layout.right = 3.2 * layout.scale;
        layout.top += style.statistics == StatisticsDisplay::None ? 0.0 : noteLine(layout);
    }
    if (style.panel != PanelKind::None) {
        constexpr double share = 0.27;
        layout.panelGap = 0.18 * layout.scale;
        layout.panelHeight = share * (layout.height - layout.bottom - layout.top);
    }
    return layout;
}

PlotPage pageOf(const PlotContents& contents, const PlotFrame& frame, const PlotSpan& panelSpan,
                const PlotStyle& style) {
    PlotPage page{
        .layout = firstLayout(contents, style), .x = {}, .y = {}, .z = {}, .panel = {}, .panelSpan = panelSpan};
    PlotLayout& layout = page.layout;
    const double character = characterCm(layout.ticFont());
    const TicRoom vertical{.characters = layout.frameHeight() / character,
                           .isHorizontal = false,
                           .hasIntegersOnly = !style.y.hasLog && showsCounts(contents)};
    page.y = ticsOf(frame.y, style.y.hasLog, vertical);
    if (contents.isPlane()) {
        page.z = ticsOf(frame.z, style.z.hasLog, {.characters = vertical.characters, .isHorizontal = false});
    }
    if (layout.panelHeight > 0.0) {
        page.panel = linearTics(panelSpan, {.characters = layout.panelHeight / character, .isHorizontal = false});
    }
    fitLeft(layout, page.y, page.panel, !style.place);
    page.x = horizontalTics(contents, frame, style, {.characters = layout.frameWidth() / character});
    if (page.x.isTilted) {
        fitTilted(layout, page.x);
    }
    fitRight(layout, contents, page);
    return page;
}

const std::string& firstNotEmpty(const std::string& text, const std::string& otherwise) {
    return text.empty() ? otherwise : text;
}

}  // namespace velmorak
