#include "Output/plots/contents/PlotBoxes.h"

#include "Output/plots/text/LabelText.h"
#include "Output/plots/text/PlotText.h"

#include <algorithm>

namespace velmorak {

namespace {

std::size_t curveCount(const PlotContents& contents) {
    return static_cast<std::size_t>(std::count_if(contents.series.begin(), contents.series.end(),
                                                  [](const PlotSeries& series) { return series.function != nullptr; }));
}

/// Rows of the statistics box: those of one object and of its curve.
std::vector<StatisticsRow> boxRows(const PlotContents& contents, const PlotStyle& style) {
    std::vector<StatisticsRow> rows;
    const std::size_t curves = curveCount(contents);
    const bool isClear = contents.series.size() - curves <= 1 && curves <= 1;
    if (style.statistics == StatisticsDisplay::None || contents.isPlane() || !isClear) {
        return rows;
    }
    for (const PlotSeries& series : contents.series) {
        for (const StatisticsRow& row : series.statistics) {
            rows.push_back({row[0], numberLabel(row[1])});
        }
    }
    return rows;
}

std::string legendText(const PlotSeries& series, const PlotStyle& style, bool hasBox) {
    std::string text = series.label;
    const bool isWanted =
        style.statistics != StatisticsDisplay::None && style.statistics != StatisticsDisplay::Automatic;
    if (isWanted && !hasBox && !series.statistics.empty() && !series.function) {
        constexpr std::size_t maxNumbers = 3;
        text += "  (";
        for (std::size_t i = 0; i < std::min(series.statistics.size(), maxNumbers); ++i) {
            text += (i > 0 ? ", " : "") + series.statistics[i][0] + " " + numberLabel(series.statistics[i][1]);
        }
        text += ")";
    }
    return text;
}

/// Data first, then the stack from its top, then lines and regions.
std::vector<LegendEntry> legendEntries(const PlotContents& contents, const PlotStyle& style, bool hasBox) {
    std::vector<LegendEntry> entries;
    for (const PlotSeries& series : contents.series) {
        if (!series.isStacked()) {
            entries.push_back({.label = legendText(series, style, hasBox), .series = &series});
        }
    }
    std::for_each(contents.series.rbegin(), contents.series.rend(), [&](const PlotSeries& series) {
        if (series.isStacked()) {
            entries.push_back({.label = legendText(series, style, hasBox), .series = &series});
        }
    });
    if (contents.stack) {
        entries.push_back({.label = contents.stack->label, .series = &*contents.stack});
    }
    for (const PlotContour& contour : contents.contours) {
        entries.push_back({.label = contour.label, .contour = &contour});
    }
    const std::size_t objects = entries.size();
    for (const PlotGuide& guide : style.guides) {
        if (!guide.legend.empty()) {
            entries.push_back({.label = guide.legend, .guide = &guide});
        }
    }
    const bool isNeeded = entries.size() > 1 && (!contents.isPlane() || objects < entries.size() || objects > 1);
    const bool isShown = style.legend != LegendPlace::None && (style.legend != LegendPlace::Automatic || isNeeded);
    return isShown ? entries : std::vector<LegendEntry>();
}

/// As many rows as a frame has room for, in a smaller font if there are many.
void fitRows(PlotBoxes& boxes, PlotContents& contents, const PlotLayout& layout) {
    constexpr double maxShare = 0.85;
    constexpr double minScale = 0.6;
    const double room = maxShare * layout.frameHeight();
    const double needed = static_cast<double>(boxes.rows.size()) * lineCm(layout.boxFont());
    boxes.boxFont = layout.boxFont() * std::clamp(room / std::max(needed, 1e-3), minScale, 1.0);
    const auto fitting = static_cast<std::size_t>(std::max(2.0, room / lineCm(boxes.boxFont)));
    if (boxes.rows.size() > fitting) {
        const std::size_t left = boxes.rows.size() - fitting + 1;
        boxes.rows.resize(fitting - 1);
        boxes.rows.push_back({"and " + std::to_string(left) + " more", ""});
        contents.warnings.push_back("statistics: " + std::to_string(left) +
                                    " lines have no room in the box; choose a larger size");
    }
}

/// As far as the user chose the place. At a point, the box stays within the frame.
void placeStatistics(PlotBox& box, const PlotStyle& style) {
    const auto corner = static_cast<int>(style.statistics) - static_cast<int>(StatisticsDisplay::TopLeft);
    if (const auto& point = style.statisticsPlace.point) {
        const double left = std::max(0.0, std::min((*point)[0], 1.0 - box.width));
        const double top = std::min(1.0, std::max((*point)[1], box.height));
        box.point = {left, top};
    } else if (style.statisticsPlace.corner) {
        box.wanted = style.statisticsPlace.corner;
    } else if (corner >= 0) {
        box.wanted = static_cast<LegendPlace>(static_cast<int>(LegendPlace::TopLeft) + corner);
    }
}

void sizeStatistics(PlotBoxes& boxes, const PlotStyle& style, const PlotLayout& layout) {
    double names = 0.0;
    double values = 0.0;
    for (const StatisticsRow& row : boxes.rows) {
        names = std::max(names, labelWidth(row[0]));
        values = std::max(values, labelWidth(row[1]));
    }
    constexpr double between = 3.5;
    boxes.statistics.width = (names + values + between) * characterCm(boxes.boxFont) / layout.frameWidth();
    boxes.statistics.height =
        (static_cast<double>(boxes.rows.size()) + 0.4) * lineCm(boxes.boxFont) / layout.frameHeight();
    placeStatistics(boxes.statistics, style);
}

void sizeLegend(PlotBoxes& boxes, const PlotStyle& style, const PlotLayout& layout) {
    double longest = 0.0;
    for (const LegendEntry& entry : boxes.entries) {
        longest = std::max(longest, labelWidth(entry.label));
    }
    constexpr double sample = 5.5;
    constexpr double spacing = 1.12;
    constexpr double maxWidth = 0.96;
    constexpr double maxHeight = 0.62;
    const double width = (longest + sample) * characterCm(layout.legendFont()) / layout.frameWidth();
    const double height =
        static_cast<double>(boxes.entries.size()) * spacing * lineCm(layout.legendFont()) / layout.frameHeight();
    const double scale = std::clamp(std::min(maxWidth / width, maxHeight / height), 0.5, 1.0);
    boxes.legendFont = scale * layout.legendFont();
    boxes.legend.width = std::min(1.0, scale * width);
    boxes.legend.height = scale * height;
    if (style.legend != LegendPlace::Automatic) {
        boxes.legend.wanted = style.legend;
    }
}

}  // namespace

PlotBoxes boxesOf(PlotContents& contents, const PlotStyle& style, const PlotLayout& layout) {
    PlotBoxes boxes;
    boxes.rows = boxRows(contents, style);
    boxes.entries = legendEntries(contents, style, !boxes.rows.empty());
    if (boxes.hasStatistics()) {
        fitRows(boxes, contents, layout);
        sizeStatistics(boxes, style, layout);
    }
    if (boxes.hasLegend()) {
        sizeLegend(boxes, style, layout);
    }
    for (const PlotNote& note : style.notes) {
        if (!note.place) {
            PlotBox box;
            box.width = labelWidth(note.text) * characterCm(layout.legendFont()) / layout.frameWidth();
            box.height = lineCm(layout.legendFont()) / layout.frameHeight();
            box.wanted = note.corner;
            boxes.notes.emplace_back(&note, box);
        }
    }
    return boxes;
}

}  // namespace velmorak
