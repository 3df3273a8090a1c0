#include "Output/plots/script/PlotScript.h"

#include "Output/plots/text/LabelText.h"
#include "Output/plots/text/PlotText.h"

#include <velmorak/Dates.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <cmath>

namespace velmorak {

namespace {

/// A font that lets a text fit, at least half the usual one.
std::string fitted(const std::string& text, double font, double room) {
    const double needed = labelWidth(text) * characterCm(font);
    const double scale = std::clamp(room / std::max(needed, 1e-6), 0.5, 1.0);
    return " font '," + roundedText(scale * font, 3) + "'";
}

std::string at(double x, double y, const PlotLayout& layout) {
    return " at screen " + roundedText(layout.screenX(x)) + ", screen " + roundedText(layout.screenY(y));
}

/// The title with the common power of ten of the numbers before its unit, or after the title.
std::string withExponent(const std::string& title, const std::string& exponent) {
    if (exponent.empty()) {
        return title;
    }
    const std::size_t open = title.rfind('[');
    if (open != std::string::npos && title.ends_with(']')) {
        return title.substr(0, open + 1) + exponent + " " + title.substr(open + 1);
    }
    return title.empty() ? "× " + exponent : title + " / " + exponent;
}

std::string pictureTitle(const PlotContents& contents, const PlotStyle& style) {
    const std::string& title = firstNotEmpty(style.title, contents.title);
    return !contents.isPartial ? title : title.empty() ? "(partial)" : title + " (partial)";
}

std::string setLabel(const std::string& text) {
    return "set label " + quotedLabel(text);
}

/// Above the frame: the title at its left, the statistics of a map at its right.
std::string above(const PlotContents& contents, const PlotLayout& layout, const PlotStyle& style) {
    const double line = lineCm(layout.boxFont());
    const bool hasLine = contents.isPlane() && style.statistics != StatisticsDisplay::None;
    const double edge = layout.height - layout.top;
    const std::string title = pictureTitle(contents, style);
    std::string text;
    if (!title.empty()) {
        const double y = edge + (hasLine ? 1.15 * line : 0.0) + 0.42 * layout.scale;
        text += setLabel(title) + at(layout.left, y, layout) + " left" +
                fitted(title, 1.05 * layout.titleFont(), layout.width - layout.left) + "\n";
    }
    if (hasLine) {
        const double room = layout.frameWidth() + layout.right;
        text += setLabel(numberLabel(contents.plane().statistics)) + at(layout.left, edge + 0.65 * line, layout) +
                " left textcolor rgb '#404040'" + fitted(contents.plane().statistics, layout.boxFont(), room) + "\n";
    }
    return text;
}

std::string colourTitles(const PlotContents& contents, const PlotPage& page, const PlotStyle& style) {
    const PlotLayout& layout = page.layout;
    const std::string title = withExponent(firstNotEmpty(style.z.title, contents.zTitle), page.z.exponent);
    const double x = layout.width - 0.55 * lineCm(layout.titleFont());
    return setLabel(title) + at(x, layout.height - layout.top, layout) + " right rotate by 90" +
           fitted(title, layout.titleFont(), layout.height - layout.top) + "\n";
}

}  // namespace

std::string axisCommands(const std::string& axis, const PlotSpan& span, bool hasLog, const PlotTics& tics,
                         bool hasLabels) {
    std::string text = hasLog ? "set logscale " + axis + "\n" : std::string();
    text += "set " + axis + "range [" + textOf(span.low) + ":" + textOf(span.high) + "]\n";
    std::string list;
    for (const PlotTic& tic : tics.tics) {
        list += (list.empty() ? "" : ", ") + quotedTic(hasLabels ? tic.label : "") + " " + textOf(tic.at) +
                (tic.isMinor ? " 1" : "");
    }
    const std::string tilt = tics.isTilted && hasLabels ? " rotate by 40 right" : "";
    return text + (list.empty() ? "unset " + axis + "tics\n" : "set " + axis + "tics" + tilt + " (" + list + ")\n");
}

std::string horizontalTitle(const PlotContents& contents, const PlotPage& page, const PlotStyle& style) {
    std::string title = firstNotEmpty(style.x.title, contents.xTitle);
    const std::string unit = "[" + std::string(dateUnit) + "]";
    if (title.ends_with(unit)) {
        title.resize(title.size() - unit.size());
        title.erase(title.find_last_not_of(' ') + 1);
    }
    return withExponent(title, page.x.exponent) + page.x.titleSuffix;
}

std::string sheetLabels(const SheetTitles& titles, const PlotLayout& layout) {
    const double font = layout.titleFont();
    const double top = layout.height - layout.top;
    std::string text;
    if (!titles.title.empty()) {
        text += setLabel(titles.title) + at(layout.left, top + 0.42 * layout.scale, layout) + " left" +
                fitted(titles.title, 1.05 * font, layout.width - layout.left) + "\n";
    }
    if (!titles.x.empty()) {
        text += setLabel(titles.x) + at(layout.width - layout.right, layout.bottom - 0.5 * lineCm(font), layout) +
                " right" + fitted(titles.x, font, layout.frameWidth()) + "\n";
    }
    if (!titles.y.empty()) {
        text += setLabel(titles.y) + at(0.62 * lineCm(font), top, layout) + " right rotate by 90" +
                fitted(titles.y, font, top) + "\n";
    }
    return text;
}

std::string titleLabels(const PlotContents& contents, const PlotPage& page, const PlotStyle& style,
                        const std::string& panelTitle) {
    const PlotLayout& layout = page.layout;
    const double frameTop = layout.height - layout.top;
    const double frameRight = layout.width - layout.right;
    std::string text = above(contents, layout, style);
    const std::string x = horizontalTitle(contents, page, style);
    if (!x.empty() && !style.place) {
        const double notes = static_cast<double>(contents.notes.size()) * lineCm(layout.boxFont());
        const double room = layout.frameWidth() + layout.left;
        text += setLabel(x) + at(frameRight, notes + 0.55 * lineCm(layout.titleFont()) + 0.05, layout) + " right" +
                fitted(x, layout.titleFont(), room) + "\n";
    }
    const std::string& y = firstNotEmpty(style.y.title, contents.yTitle);
    if (!y.empty() && !style.place) {
        const double room = panelTitle.empty() ? frameTop : layout.frameHeight();
        text += setLabel(y) + at(0.62 * lineCm(layout.titleFont()), frameTop, layout) + " right rotate by 90" +
                fitted(y, layout.titleFont(), room) + "\n";
    }
    if (!page.y.exponent.empty()) {
        text += setLabel("× " + page.y.exponent) + at(layout.left - 0.1, frameTop + 0.3 * layout.scale, layout) +
                " right\n";
    }
    return text + (contents.isPlane() ? colourTitles(contents, page, style) : std::string());
}

}  // namespace velmorak
