#include "Output/plots/script/PlotLayers.h"

#include "Output/plots/text/LabelText.h"
#include "Output/plots/text/PlotText.h"

#include <velmorak/ElementaryFunctions.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace velmorak {

namespace {

using Style = PlotSeries::SeriesStyle;

/// M. Okabe and K. Ito's palette for every type of colour vision: for lines dark colours first, for areas light ones.
constexpr std::array<std::string_view, 7> lineColours = {"#0072B2", "#D55E00", "#009E73", "#CC79A7",
                                                         "#E69F00", "#56B4E9", "#000000"};
constexpr std::array<std::string_view, 7> areaColours = {"#56B4E9", "#E69F00", "#009E73", "#CC79A7",
                                                         "#F0E442", "#0072B2", "#D55E00"};
constexpr std::string_view black = "#000000";
/// Filled markers first; open ones when the colours repeat.
constexpr std::array<int, 7> fullMarks = {7, 5, 9, 11, 13, 15, 7};
constexpr std::array<int, 7> openMarks = {6, 4, 8, 10, 12, 14, 6};

/// Widths of lines in tenths of a millimetre.
constexpr double outlineWidth = 3.5;
constexpr double barWidth = 2.5;
constexpr double curveWidth = 5.0;
constexpr double edgeWidth = 1.2;

std::string number(std::size_t count) {
    return std::to_string(count);
}

/// Colour, dash, marker and width of a series.
struct DrawStyle {
    std::string colour;
    std::string dash;
    std::string mark;
    double width = 1.0;
};

std::string quotedColour(std::string_view colour) {
    return "'" + std::string(colour) + "'";
}

std::string lineWidth(double width, const DrawStyle& drawStyle) {
    return " linewidth " + roundedText(width * drawStyle.width);
}

/// Data beside curves or a stack are black.
std::vector<DrawStyle> drawStylesOf(const PlotContents& contents) {
    std::vector<DrawStyle> styles;
    std::size_t nextLine = 0;
    std::size_t nextArea = 0;
    bool hasBlack = !contents.hasCurve() && !contents.stack;
    for (const PlotSeries& series : contents.series) {
        const bool isBlack = series.style == Style::Points && !hasBlack && series.look.colour.empty();
        hasBlack = hasBlack || isBlack;
        std::size_t& next = series.isStacked() ? nextArea : nextLine;
        const auto& colours = series.isStacked() ? areaColours : lineColours;
        const std::size_t at = next % colours.size();
        const std::size_t turn = next / colours.size();
        const std::string own =
            series.look.colour.empty() ? std::string(isBlack ? black : colours[at]) : series.look.colour;
        const auto dash = series.look.dash ? static_cast<std::size_t>(*series.look.dash) : turn + 1;
        styles.push_back({.colour = quotedColour(own),
                          .dash = number(dash),
                          .mark = number(static_cast<std::size_t>(turn % 2 == 0 ? fullMarks[at] : openMarks[at])),
                          .width = series.look.width});
        next += isBlack || !series.look.colour.empty() ? 0 : 1;
    }
    return styles;
}

std::string fill(const DrawStyle& drawStyle, double opacity) {
    return " fillcolor rgb " + drawStyle.colour + " fillstyle transparent solid " + roundedText(opacity) + " noborder";
}

/// Two blocks of a series in the data file.
struct Blocks {
    std::string first;
    std::string second;
};

Blocks blocksAt(std::size_t index) {
    return {.first = "data index " + number(index), .second = "data index " + number(index + 1)};
}

std::string pointBars(const std::string& block, const DrawStyle& draw) {
    return block + " using 1:5:(0):($6-$5) with vectors nohead" + lineWidth(barWidth, draw) + " linecolor rgb " +
           draw.colour;
}

std::string pointMarks(const std::string& block, const DrawStyle& draw) {
    return block + " using 1:2 with points pointtype " + draw.mark + " pointsize marks" + lineWidth(barWidth, draw) +
           " linecolor rgb " + draw.colour;
}

constexpr double lightFill = 0.18;
constexpr double strongFill = 0.4;

/// Layers of one series in the plot command.
std::vector<std::string> layersOf(const PlotSeries& series, const Blocks& blocks, const DrawStyle& draw, bool isAlone,
                                  const PlotFrame& frame) {
    const std::string colour = " linecolor rgb " + draw.colour;
    const std::string dashed = " dashtype " + draw.dash + colour;
    std::vector<std::string> layers;
    const auto add = [&](const std::string& layer) { layers.push_back(layer + " notitle"); };
    const std::string outline = blocks.first + " using 1:2 with lines" + lineWidth(outlineWidth, draw) + dashed;
    switch (series.style) {
        case Style::Steps:
        case Style::Filled:
            if (isAlone || series.style == Style::Filled) {
                const double opacity = series.style == Style::Filled ? strongFill : lightFill;
                add(blocks.first + " using 1:2 with filledcurves closed" + fill(draw, opacity));
            }
            add(outline);
            add(blocks.second + " using 1:3:(0):($4-$3) with vectors nohead" + lineWidth(barWidth, draw) + colour);
            break;
        case Style::Stacked:
            add(blocks.first + " using 1:2 with filledcurves closed fillcolor rgb " + draw.colour +
                " fillstyle solid 1 noborder");
            add(blocks.first + " using 1:2 with lines" + lineWidth(edgeWidth, draw) + " linecolor rgb '#303030'");
            break;
        case Style::Line:
            add(outline);
            break;
        case Style::Band:
            add(blocks.first + " using 1:2:3 with filledcurves" + fill(draw, strongFill));
            add(blocks.second + " using 1:2 with lines" + lineWidth(barWidth, draw) + dashed);
            break;
        case Style::Points:
            // gnuplot's own error bars have white rings around the points in SVG and PDF.
            if (!series.isHistogram || !series.isRegular) {
                add(blocks.first + " using 3:2:($4-$3):(0) with vectors nohead" + lineWidth(barWidth, draw) + colour);
            }
            add(pointBars(blocks.first, draw));
            add(pointMarks(blocks.first, draw));
            break;
        case Style::Curve:
            if (series.look.style == ObjectStyle::Filled) {
                add(blocks.first + " using 1:2 with filledcurves y=" + textOf(frame.ground) + fill(draw, strongFill));
            }
            add(blocks.first + " using 1:2 with lines" + lineWidth(curveWidth, draw) + dashed);
            if (!series.beyond.empty()) {
                add(blocks.second + " using 1:2 with lines" + lineWidth(outlineWidth, draw) + " dashtype 3" + colour);
            }
            break;
    }
    return layers;
}

/// From back to front.
int rankOf(const PlotSeries& series) {
    switch (series.style) {
        case Style::Stacked:
            return 0;
        case Style::Filled:
            return 2;
        case Style::Band:
            return 3;
        case Style::Steps:
            return 4;
        case Style::Line:
            return 5;
        case Style::Points:
            return 6;
        default:
            return 7;
    }
}

/// The order in which the series are drawn; the highest of a stack first, so that the others cover it.
std::vector<std::size_t> drawingOrder(const PlotContents& contents) {
    std::vector<std::size_t> order;
    for (std::size_t i = contents.series.size(); i-- > 0;) {
        if (contents.series[i].isStacked()) {
            order.push_back(i);
        }
    }
    const auto stacked = static_cast<std::ptrdiff_t>(order.size());
    for (std::size_t i = 0; i < contents.series.size(); ++i) {
        if (!contents.series[i].isStacked()) {
            order.push_back(i);
        }
    }
    std::stable_sort(order.begin() + stacked, order.end(), [&](std::size_t one, std::size_t other) {
        return rankOf(contents.series[one]) < rankOf(contents.series[other]);
    });
    return order;
}

constexpr const char* stackError = " fillcolor rgb '#000000' fillstyle transparent solid 0.25 noborder";

/// The symbol of a series in the legend.
std::string sampleOf(const PlotSeries& series, const DrawStyle& draw) {
    const std::string colour = " linecolor rgb " + draw.colour;
    switch (series.style) {
        case Style::Filled:
        case Style::Band:
            return "with boxes fillcolor rgb " + draw.colour + " fillstyle transparent solid 0.4 border" +
                   lineWidth(barWidth, draw) + colour;
        case Style::Stacked:
            return "with boxes fillcolor rgb " + draw.colour + " fillstyle solid 1 border linecolor rgb '#303030'" +
                   lineWidth(edgeWidth, draw);
        case Style::Points:
            return "with yerrorbars pointtype " + draw.mark + " pointsize marks" + lineWidth(barWidth, draw) + colour;
        case Style::Curve:
            return "with lines" + lineWidth(curveWidth, draw) + " dashtype " + draw.dash + colour;
        default:
            return "with lines" + lineWidth(outlineWidth, draw) + " dashtype " + draw.dash + colour;
    }
}

std::string sampleOf(const PlotGuide& guide) {
    if (guide.to) {
        return "with boxes fillcolor rgb '" + guide.colour + "' fillstyle transparent solid 0.25 noborder";
    }
    return "with lines linewidth " + roundedText(outlineWidth * guide.width) + " dashtype " +
           std::to_string(static_cast<int>(guide.dash)) + " linecolor rgb '" + guide.colour + "'";
}

std::string contourColour(const PlotContents& contents, const PlotContour& contour) {
    if (!contour.look.colour.empty()) {
        return " linecolor rgb '" + contour.look.colour + "'";
    }
    return contents.map ? " linecolor rgb '#000000'" : " linecolor palette";
}

std::string contourLine(const PlotContents& contents, const PlotContour& contour) {
    const int dash = static_cast<int>(contour.look.dash.value_or(Dash::Solid));
    return "with lines linewidth " + roundedText(outlineWidth * contour.look.width) + " dashtype " +
           std::to_string(dash) + contourColour(contents, contour);
}

std::string keyEntry(const std::string& sample, const std::string& label) {
    return "keyentry " + sample + " title " + quotedLabel(label);
}

std::string legendSample(const LegendEntry& entry, const PlotContents& contents, const std::vector<DrawStyle>& styles) {
    if (entry.guide) {
        return sampleOf(*entry.guide);
    }
    if (entry.contour) {
        return contourLine(contents, *entry.contour);
    }
    if (contents.stack && entry.series == &*contents.stack) {
        return std::string("with boxes") + stackError;
    }
    const auto position = static_cast<std::size_t>(entry.series - contents.series.data());
    return sampleOf(*entry.series, styles[position]);
}

std::string joined(const std::vector<std::string>& layers) {
    std::string text = layers.empty() ? "plot NaN notitle" : "plot ";
    for (std::size_t i = 0; i < layers.size(); ++i) {
        text += (i > 0 ? ", \\\n     " : "") + layers[i];
    }
    return text + "\n";
}

}  // namespace

std::string seriesCommand(const PlotContents& contents, const PlotData& data, const PlotBoxes& boxes,
                          const PlotFrame& frame) {
    const std::vector<DrawStyle> styles = drawStylesOf(contents);
    std::vector<std::string> layers;
    std::size_t stacked = 0;
    for (const std::size_t i : drawingOrder(contents)) {
        const PlotSeries& series = contents.series[i];
        if (contents.stack && !series.isStacked() && stacked > 0) {
            layers.push_back("data index " + number(data.stack) + " using 1:2:3 with filledcurves" + stackError +
                             " notitle");
            stacked = 0;
        }
        stacked += series.isStacked() ? 1 : 0;
        const bool isAlone = contents.series.size() == 1;
        const auto own = layersOf(series, blocksAt(data.series[i]), styles[i], isAlone, frame);
        layers.insert(layers.end(), own.begin(), own.end());
    }
    if (stacked > 0) {
        layers.push_back("data index " + number(data.stack) + " using 1:2:3 with filledcurves" + stackError +
                         " notitle");
    }
    for (const LegendEntry& entry : boxes.entries) {
        layers.push_back(keyEntry(legendSample(entry, contents, styles), entry.label));
    }
    return joined(layers);
}

std::string panelCommand(const PlotContents& contents, const PlotData& data, const PlotPanel& panel,
                         const PlotFrame& frame) {
    const std::vector<DrawStyle> styles = drawStylesOf(contents);
    std::vector<std::string> layers;
    if (!panel.band.empty()) {
        layers.push_back("data index " + number(data.panelBand) + " using 1:2:3 with filledcurves" + stackError +
                         " notitle");
    }
    layers.push_back("[" + textOf(frame.x.low) + ":" + textOf(frame.x.high) + "] " + textOf(panel.level) +
                     " with lines linewidth 2 linecolor rgb '#606060' notitle");
    // A range comes before all layers.
    std::rotate(layers.begin(), layers.end() - 1, layers.end());
    for (std::size_t i = 0; i < panel.series.size(); ++i) {
        const PlotSeries& source = *panel.series[i].source;
        const DrawStyle& draw = styles[static_cast<std::size_t>(&source - contents.series.data())];
        const std::string colour = " linecolor rgb " + draw.colour + " notitle";
        const Blocks blocks = blocksAt(data.panel[i]);
        if (panel.kind == PanelKind::Pull) {
            layers.push_back(blocks.first + " using 1:(0):3:4:(0):2 with boxxyerror" + fill(draw, 0.6) + " notitle");
        } else {
            layers.push_back(pointBars(blocks.first, draw) + " notitle");
            layers.push_back(pointMarks(blocks.first, draw) + " notitle");
        }
        for (const bool isAbove : {true, false}) {
            layers.push_back(blocks.second + " using 1:($3" + (isAbove ? ">" : "<") +
                             "0?$2:NaN) with points pointtype " + (isAbove ? "9" : "11") + " pointsize 1.3*marks" +
                             colour);
        }
    }
    return joined(layers);
}

std::string mapCommand(const PlotContents& contents, const PlotData& data, const PlotBoxes& boxes,
                       const PlotFrame& frame, const PlotStyle& style) {
    std::vector<std::string> layers;
    // Cells slightly overlap their neighbours, so that no gaps show between them.
    const auto end = [](const std::string& column, const PlotSpan& span, bool hasLog) {
        constexpr double hair = 1.0 / 2000.0;
        return hasLog ? "($" + column + "*" + roundedText(elementary::pow(span.high / span.low, hair)) + ")"
                      : "($" + column + "+" + roundedText(hair * (span.high - span.low)) + ")";
    };
    if (contents.map) {
        layers.push_back("data index 0 using 1:3:1:" + end("2", frame.x, style.x.hasLog) +
                         ":3:" + end("4", frame.y, style.y.hasLog) +
                         ":5 with boxxyerror fillcolor palette fillstyle solid 1 noborder notitle");
    }
    for (std::size_t i = 0; i < contents.contours.size(); ++i) {
        layers.push_back("data index " + number(data.contours[i]) + " using 1:2:3 " +
                         contourLine(contents, contents.contours[i]) + " notitle");
    }
    for (const LegendEntry& entry : boxes.entries) {
        layers.push_back(keyEntry(legendSample(entry, contents, {}), entry.label));
    }
    return joined(layers);
}

}  // namespace velmorak
