#include "PlotScript.h"

#include "PlotText.h"

#include <velmorak/ElementaryFunctions.h>
#include <velmorak/Utf8.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace velmorak {

namespace {

/// M. Okabe and K. Ito's palette for every type of colour vision, dark colours first.
constexpr std::array<std::string_view, 7> colours = {"#0072B2", "#D55E00", "#009E73", "#CC79A7",
                                                     "#E69F00", "#56B4E9", "#000000"};
constexpr std::string_view black = "#000000";
/// Filled markers first; open ones when the colours repeat.
constexpr std::array<int, 7> fullMarks = {7, 5, 9, 11, 13, 15, 7};
constexpr std::array<int, 7> openMarks = {6, 4, 8, 10, 12, 14, 6};

/// Nine colours of viridis, whose lightness rises uniformly for every type of colour vision (S. van der Walt and
/// N. Smith).
constexpr std::array<std::string_view, 9> viridis = {"#440154", "#472D7B", "#3B528B", "#2C728E", "#21918C",
                                                     "#28AE80", "#5EC962", "#ADDC30", "#FDE725"};

/// Sizes in fractions of the frame: line and character of the box; line, character and sample of the legend; character
/// of the line above a frame with colours.
constexpr double boxLine = 0.046;
constexpr double boxCharacter = 0.0132;
constexpr double legendLine = 0.066;
constexpr double legendCharacter = 0.0148;
constexpr double legendSample = 0.085;
constexpr double legendFont = 26.0;

std::string number(std::size_t count) {
    return std::to_string(count);
}

/// Colour, dash and marker of a series.
struct DrawStyle {
    std::string colour;
    std::string dash;
    std::string mark;
};

/// Data with curves are black, and the curves are coloured.
std::vector<DrawStyle> drawStylesOf(const PlotContents& contents) {
    std::vector<DrawStyle> styles;
    std::size_t next = 0;
    bool hasBlack = !contents.hasCurve();
    for (const PlotSeries& series : contents.series) {
        const bool isBlack = series.style == PlotSeries::SeriesStyle::Points && !hasBlack;
        hasBlack = hasBlack || isBlack;
        const std::size_t at = next % colours.size();
        const std::size_t turn = next / colours.size();
        styles.push_back({.colour = "'" + std::string(isBlack ? black : colours[at]) + "'",
                          .dash = number(turn + 1),
                          .mark = number(static_cast<std::size_t>(turn % 2 == 0 ? fullMarks[at] : openMarks[at]))});
        next += isBlack ? 0 : 1;
    }
    return styles;
}

std::size_t curveCount(const PlotContents& contents) {
    return static_cast<std::size_t>(std::count_if(contents.series.begin(), contents.series.end(),
                                                  [](const PlotSeries& series) { return series.function != nullptr; }));
}

/// Rows of the statistics box: those of one object and of its curve.
std::vector<StatisticsRow> boxRows(const PlotContents& contents, const PlotStyle& style) {
    std::vector<StatisticsRow> rows;
    const std::size_t curves = curveCount(contents);
    const bool isClear = contents.series.size() - curves <= 1 && curves <= 1;
    if (style.statistics == StatisticsDisplay::None || !isClear) {
        return rows;
    }
    for (const PlotSeries& series : contents.series) {
        rows.insert(rows.end(), series.statistics.begin(), series.statistics.end());
    }
    constexpr std::size_t maxRows = 12;
    rows.resize(std::min(rows.size(), maxRows));
    return rows;
}

/// The legend is in one corner, below the box if both are in the same.
struct Boxes {
    std::vector<StatisticsRow> rows;
    PlotCorner box;
    PlotCorner legend;
    bool hasLegend = false;
    bool isLegendBelow = false;
    double legendScale = 1.0;  ///< Below 1 for long texts.
};

std::string legendText(const PlotSeries& series, const PlotStyle& style, bool hasBox) {
    std::string text = series.label;
    if (style.statistics == StatisticsDisplay::Always && !hasBox && !series.statistics.empty() && !series.function) {
        constexpr std::size_t maxNumbers = 3;
        text += "  (";
        for (std::size_t i = 0; i < std::min(series.statistics.size(), maxNumbers); ++i) {
            text += (i > 0 ? ", " : "") + series.statistics[i][0] + " " + series.statistics[i][1];
        }
        text += ")";
    }
    return text;
}

Boxes boxesOf(const PlotContents& contents, const PlotStyle& style) {
    Boxes boxes;
    if (contents.map) {
        return boxes;
    }
    boxes.rows = boxRows(contents, style);
    std::size_t widest = 0;
    for (const StatisticsRow& row : boxes.rows) {
        widest = std::max(widest, characterCount(row[0]) + characterCount(row[1]) + 2);
    }
    boxes.box.width = boxes.rows.empty() ? 0.0 : std::max(0.2, 0.03 + boxCharacter * static_cast<double>(widest));
    boxes.box.height = boxes.rows.empty() ? 0.0 : 0.02 + boxLine * static_cast<double>(boxes.rows.size());
    boxes.hasLegend =
        style.legend != LegendPlace::None && (style.legend != LegendPlace::Automatic || contents.series.size() > 1);
    boxes.legend.isLeft = style.legend == LegendPlace::TopLeft || style.legend == LegendPlace::BottomLeft ||
                          (style.legend == LegendPlace::Automatic && !boxes.rows.empty());
    boxes.isLegendBelow = style.legend == LegendPlace::BottomLeft || style.legend == LegendPlace::BottomRight;
    if (!boxes.hasLegend) {
        return boxes;
    }
    std::size_t longest = 0;
    for (const PlotSeries& series : contents.series) {
        longest = std::max(longest, characterCount(legendText(series, style, !boxes.rows.empty())));
    }
    const double width = legendSample + legendCharacter * static_cast<double>(longest);
    boxes.legendScale = std::clamp(0.96 / width, 0.5, 1.0);
    boxes.legend.width = std::min(1.0, boxes.legendScale * width);
    boxes.legend.height = 0.01 + boxes.legendScale * legendLine * static_cast<double>(contents.series.size());
    if (!boxes.legend.isLeft && !boxes.isLegendBelow) {
        boxes.legend.height += boxes.box.height;
    }
    return boxes;
}

std::vector<PlotCorner> upperCorners(const Boxes& boxes) {
    std::vector<PlotCorner> corners;
    if (!boxes.rows.empty()) {
        corners.push_back(boxes.box);
    }
    if (boxes.hasLegend && !boxes.isLegendBelow) {
        corners.push_back(boxes.legend);
    }
    return corners;
}

/// @param alignment left or right.
std::string labelInBox(const std::string& text, double x, double y, const std::string& alignment) {
    return "set label " + quotedForGnuplot(text) + " at graph " + roundedText(x) + ", graph " + roundedText(y) + " " +
           alignment + " front font 'DejaVu Sans,22'\n";
}

std::string statisticsBox(const Boxes& boxes) {
    constexpr double right = 0.985;
    constexpr double top = 0.975;
    std::string text = "set object 1 rectangle from graph " + roundedText(right - boxes.box.width) + ", graph " +
                       roundedText(top - boxes.box.height) + " to graph " + roundedText(right) + ", graph " +
                       roundedText(top) +
                       " front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5\n";
    for (std::size_t i = 0; i < boxes.rows.size(); ++i) {
        const double y = top - 0.01 - boxLine * (static_cast<double>(i) + 0.5);
        text += labelInBox(boxes.rows[i][0], right - boxes.box.width + 0.012, y, "left");
        text += labelInBox(boxes.rows[i][1], right - 0.012, y, "right");
    }
    return text;
}

std::string legendPlace(const Boxes& boxes) {
    if (!boxes.hasLegend) {
        return "set key off\n";
    }
    const std::string side = boxes.legend.isLeft ? "left Left reverse" : "right Right noreverse";
    const bool isUnderBox = !boxes.legend.isLeft && !boxes.isLegendBelow && !boxes.rows.empty();
    const std::string place =
        isUnderBox ? "at graph 0.985, graph " + roundedText(0.955 - boxes.box.height) + " right top Right noreverse"
                   : std::string(boxes.isLegendBelow ? "bottom " : "top ") + side;
    return "set key noenhanced " + place + " samplen 2 spacing 1.15 font 'DejaVu Sans," +
           roundedText(std::floor(legendFont * boxes.legendScale)) + "'\n";
}

/// Layers of one series in the plot command.
std::vector<std::string> layersOf(const PlotSeries& series, std::size_t position, const DrawStyle& drawStyle,
                                  const std::string& title, bool isAlone) {
    const std::string colour = " linecolor rgb " + drawStyle.colour;
    const std::string first = "data index " + number(2 * position);
    const std::string second = "data index " + number(2 * position + 1);
    std::vector<std::string> layers;
    switch (series.style) {
        case PlotSeries::SeriesStyle::Steps:
            if (isAlone) {
                layers.push_back(first + " using 1:2 with filledcurves closed fillcolor rgb " + drawStyle.colour +
                                 " fillstyle transparent solid 0.18 noborder notitle");
            }
            layers.push_back(first + " using 1:2 with lines linewidth 3.5 dashtype " + drawStyle.dash + colour + title);
            layers.push_back(second + " using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5" + colour + " notitle");
            break;
        case PlotSeries::SeriesStyle::Points:
            layers.push_back(first + " using 1:2:3:4:5:6 with xyerrorbars pointtype " + drawStyle.mark +
                             " pointsize marks linewidth 2.5" + colour + title);
            break;
        case PlotSeries::SeriesStyle::Curve:
            layers.push_back(first + " using 1:2 with lines linewidth 5 dashtype " + drawStyle.dash + colour + title);
            break;
    }
    return layers;
}

std::string seriesCommand(const PlotContents& contents, const PlotStyle& style, const Boxes& boxes) {
    const std::vector<DrawStyle> styles = drawStylesOf(contents);
    std::string text = "plot";
    // Curves are drawn over data.
    for (const bool isCurve : {false, true}) {
        for (std::size_t i = 0; i < contents.series.size(); ++i) {
            const PlotSeries& series = contents.series[i];
            if ((series.function != nullptr) != isCurve) {
                continue;
            }
            const std::string title = boxes.hasLegend
                                          ? " title " + quotedForGnuplot(legendText(series, style, !boxes.rows.empty()))
                                          : std::string(" notitle");
            for (const std::string& layer : layersOf(series, i, styles[i], title, contents.series.size() == 1)) {
                text += (text.size() > 4 ? ", \\\n     " : " ") + layer;
            }
        }
    }
    return text + "\n";
}

std::string paletteText() {
    std::string text;
    for (std::size_t i = 0; i < viridis.size(); ++i) {
        text += (text.empty() ? "" : ", ") + number(i) + " '" + std::string(viridis[i]) + "'";
    }
    return "set palette defined (" + text + ")\n";
}

std::string mapSetting(const PlotContents& contents, const PlotStyle& style) {
    std::string text = "set key off\nset colorbox\n" + paletteText();
    if (style.statistics != StatisticsDisplay::None) {
        text += "set label " + quotedForGnuplot(contents.map->statistics) +
                " at screen 0.985, graph 1.04 right font 'DejaVu Sans,22' textcolor rgb '#404040'\n";
    }
    return text;
}

/// Cells slightly overlap their neighbours, so that no gaps show between them.
std::string mapCommand(const PlotFrame& frame, const PlotStyle& style) {
    const auto end = [](const std::string& column, const PlotSpan& span, bool hasLog) {
        constexpr double hair = 1.0 / 2000.0;
        return hasLog ? "($" + column + "*" + roundedText(elementary::pow(span.high / span.low, hair)) + ")"
                      : "($" + column + "+" + roundedText(hair * (span.high - span.low)) + ")";
    };
    return "plot data using 1:3:1:" + end("2", frame.x, style.x.hasLog) + ":3:" + end("4", frame.y, style.y.hasLog) +
           ":5 with boxxyerror fillcolor palette fillstyle solid 1 noborder notitle\n";
}

/// Scales fonts, markers and lines, which the terminals size differently, to look alike.
std::string terminalOf(const std::string& format) {
    const std::string font = " font 'DejaVu Sans,26' rounded";
    if (format == "png") {
        return "set terminal pngcairo noenhanced size 1600,1000" + font + "\nmarks = 1.8\n";
    }
    if (format == "svg") {
        return "set terminal svg noenhanced size 1600,1000 fontscale 1.333" + font +
               " background rgb 'white'\nmarks = 0.8\n";
    }
    return "set terminal pdfcairo noenhanced size 16in,10in fontscale 0.74" + font +
           " linewidth 1.7 background rgb 'white'\nmarks = 1.8\n";
}

constexpr double noteLine = 0.9;  ///< Height in characters.

/// Lines below the picture.
std::string notesBelow(const std::vector<std::string>& notes) {
    std::string text;
    for (std::size_t i = 0; i < notes.size(); ++i) {
        const auto fromBelow = static_cast<double>(notes.size() - i) * noteLine - 0.3;
        const double fitting = 2300.0 / std::max<double>(1.0, static_cast<double>(characterCount(notes[i])));
        text += "set label " + quotedForGnuplot(notes[i]) + " at screen 0.5, character " + roundedText(fromBelow) +
                " center textcolor rgb '#A00000' font 'DejaVu Sans," +
                roundedText(std::floor(std::clamp(fitting, 12.0, 20.0))) + "'\n";
    }
    return text;
}

std::string preamble(bool isMap, std::size_t notes) {
    return std::string(
               "# Draws the picture again: run gnuplot on this file in its folder.\n"
               "reset\n"
               "set encoding utf8\n"
               "set border 31 linewidth 2.5\n"
               "set errorbars small\n"
               "set tics ") +
           (isMap ? "out nomirror" : "in") +
           " scale 1.2,0.6\n"
           "set mxtics\nset mytics\n" +
           (isMap ? "" : "set grid xtics ytics linetype 1 linewidth 1 linecolor rgb '#E4E4E4'\n") +
           "set lmargin 11.5\nset rmargin " + (isMap ? "12" : "4") + "\nset bmargin " +
           roundedText(3.8 + noteLine * static_cast<double>(notes)) + "\n" + "set tmargin " + (isMap ? "3.6" : "2.8") +
           "\n";
}

}  // namespace

PlotFiles plotFiles(PlotContents& contents, const PlotStyle& style) {
    const Boxes boxes = boxesOf(contents, style);
    const PlotFrame frame = frameOf(contents, style, upperCorners(boxes));
    const bool isMap = contents.map.has_value();
    std::string text = preamble(isMap, contents.notes.size()) + notesBelow(contents.notes) +
                       (isMap ? mapSetting(contents, style) : legendPlace(boxes));
    text += plotAxes(contents, frame, style);
    if (!boxes.rows.empty()) {
        text += statisticsBox(boxes);
    }
    text += "data = " + quotedForGnuplot("./" + style.baseName + ".dat") + "\n";
    for (const std::string& format : style.formats) {
        text += terminalOf(format);
        text += "set output " + quotedForGnuplot("./" + style.baseName + "." + format) + "\n";
        text += isMap ? mapCommand(frame, style) : seriesCommand(contents, style, boxes);
        text += "set output\n";
    }
    return {.script = text, .data = plotData(contents, frame)};
}

}  // namespace velmorak
